#pragma once

#include <zrbase/host/foundation/ZRIndexSet.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <type_traits>
#include <vector>

// Operations the library adds to its arrays (std::vector of any element type).
namespace ZRExtension {

// Moves the elements at the indexes so that they stand together, in their old order, where `destination` pointed
// before the move: in front of the element that was there, or at the end when it is the array's size. Dragged
// table rows are dropped this way. Nothing happens when an index or the destination lies beyond the array.
template <typename T> void moveObjects(std::vector<T>& array, const ZRIndexSet& indexes, size_t destination)
{
    if (indexes.isEmpty() || indexes.lastIndex() >= array.size() || destination > array.size())
        return;
    std::vector<T> moved;
    std::vector<T> staying;
    moved.reserve(indexes.count());
    staying.reserve(array.size() - indexes.count());
    for (size_t index = 0; index < array.size(); ++index)
        (indexes.containsIndex(static_cast<uint32_t>(index)) ? moved : staying).push_back(std::move(array[index]));
    const size_t movedBefore
        = static_cast<size_t>(std::ranges::count_if(indexes, [&](uint32_t index) { return index < destination; }));
    staying.insert(staying.begin() + static_cast<std::ptrdiff_t>(destination - movedBefore),
        std::make_move_iterator(moved.begin()), std::make_move_iterator(moved.end()));
    array = std::move(staying);
}

// Inserts the objects, in their order, at the index; an index beyond the end appends them.
template <typename T>
void insertObjects(std::vector<T>& array, std::type_identity_t<std::span<const T>> objects, size_t index)
{
    array.insert(
        array.begin() + static_cast<std::ptrdiff_t>(std::min(index, array.size())), objects.begin(), objects.end());
}

// Removes every element that does not equal one of the objects.
template <typename T>
void removeObjectsNotInArray(std::vector<T>& array, std::type_identity_t<std::span<const T>> objects)
{
    std::erase_if(array, [&](const T& element) { return std::ranges::find(objects, element) == objects.end(); });
}

}
