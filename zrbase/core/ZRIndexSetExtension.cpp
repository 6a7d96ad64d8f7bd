#include <zrbase/core/ZRIndexSetExtension.h>

#include <algorithm>

namespace ZRExtension {

uint32_t indexAtIndex(const ZRIndexSet& set, uint32_t position) noexcept
{
    return position < set.count() ? set.indexes()[position] : ZRNotFound;
}

ZRIndexSet intersectionIndexes(const ZRIndexSet& set, const ZRIndexSet& other)
{
    ZRIndexSet intersection;
    for (uint32_t index : set) {
        if (other.containsIndex(index))
            intersection.addIndex(index);
    }
    return intersection;
}

bool intersectsIndexes(const ZRIndexSet& set, const ZRIndexSet& other) noexcept
{
    return std::ranges::any_of(set, [&](uint32_t index) { return other.containsIndex(index); });
}

}
