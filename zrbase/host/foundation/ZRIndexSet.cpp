#include <zrbase/host/foundation/ZRIndexSet.h>

#include <algorithm>
#include <iterator>

namespace {

// One past the last index of a range, in 64 bits: a range may reach the top of the 32-bit indexes.
uint64_t rangeEnd(ZRIndexRange range) noexcept { return uint64_t(range.location) + range.length; }

}

ZRIndexSet::ZRIndexSet(uint32_t index)
    : _indexes { index }
{
}

ZRIndexSet::ZRIndexSet(ZRIndexRange range) { addIndexesInRange(range); }

ZRIndexSet::ZRIndexSet(std::initializer_list<uint32_t> indexes)
    : _indexes(indexes)
{
    std::sort(_indexes.begin(), _indexes.end());
    _indexes.erase(std::unique(_indexes.begin(), _indexes.end()), _indexes.end());
}

bool ZRIndexSet::containsIndex(uint32_t index) const noexcept
{
    return std::binary_search(_indexes.begin(), _indexes.end(), index);
}

bool ZRIndexSet::containsIndexes(const ZRIndexSet& other) const noexcept
{
    return std::includes(_indexes.begin(), _indexes.end(), other._indexes.begin(), other._indexes.end());
}

uint32_t ZRIndexSet::firstIndex() const noexcept { return _indexes.empty() ? ZRNotFound : _indexes.front(); }

uint32_t ZRIndexSet::lastIndex() const noexcept { return _indexes.empty() ? ZRNotFound : _indexes.back(); }

uint32_t ZRIndexSet::indexGreaterThanIndex(uint32_t index) const noexcept
{
    const auto found = std::upper_bound(_indexes.begin(), _indexes.end(), index);
    return found == _indexes.end() ? ZRNotFound : *found;
}

uint32_t ZRIndexSet::indexLessThanIndex(uint32_t index) const noexcept
{
    const auto found = std::lower_bound(_indexes.begin(), _indexes.end(), index);
    return found == _indexes.begin() ? ZRNotFound : *std::prev(found);
}

uint32_t ZRIndexSet::countOfIndexesInRange(ZRIndexRange range) const noexcept
{
    const auto first = std::lower_bound(_indexes.begin(), _indexes.end(), range.location);
    const auto last
        = std::partition_point(first, _indexes.end(), [&](uint32_t index) { return index < rangeEnd(range); });
    return static_cast<uint32_t>(last - first);
}

void ZRIndexSet::addIndex(uint32_t index)
{
    const auto position = std::lower_bound(_indexes.begin(), _indexes.end(), index);
    if (position == _indexes.end() || *position != index)
        _indexes.insert(position, index);
}

void ZRIndexSet::addIndexes(const ZRIndexSet& other)
{
    std::vector<uint32_t> merged;
    merged.reserve(_indexes.size() + other._indexes.size());
    std::set_union(
        _indexes.begin(), _indexes.end(), other._indexes.begin(), other._indexes.end(), std::back_inserter(merged));
    _indexes = std::move(merged);
}

void ZRIndexSet::addIndexesInRange(ZRIndexRange range)
{
    if (range.length == 0)
        return;
    // Whatever lies inside the range is replaced by the whole run of its indexes.
    const auto first = std::lower_bound(_indexes.begin(), _indexes.end(), range.location);
    const auto last
        = std::partition_point(first, _indexes.end(), [&](uint32_t index) { return index < rangeEnd(range); });
    const auto position = _indexes.erase(first, last) - _indexes.begin();
    std::vector<uint32_t> run(static_cast<size_t>(rangeEnd(range) - range.location));
    for (size_t offset = 0; offset < run.size(); ++offset)
        run[offset] = static_cast<uint32_t>(range.location + offset);
    _indexes.insert(_indexes.begin() + position, run.begin(), run.end());
}

void ZRIndexSet::removeIndex(uint32_t index)
{
    const auto position = std::lower_bound(_indexes.begin(), _indexes.end(), index);
    if (position != _indexes.end() && *position == index)
        _indexes.erase(position);
}

void ZRIndexSet::removeIndexes(const ZRIndexSet& other)
{
    const auto kept
        = std::remove_if(_indexes.begin(), _indexes.end(), [&](uint32_t index) { return other.containsIndex(index); });
    _indexes.erase(kept, _indexes.end());
}

void ZRIndexSet::removeIndexesInRange(ZRIndexRange range)
{
    const auto first = std::lower_bound(_indexes.begin(), _indexes.end(), range.location);
    const auto last
        = std::partition_point(first, _indexes.end(), [&](uint32_t index) { return index < rangeEnd(range); });
    _indexes.erase(first, last);
}

void ZRIndexSet::shiftIndexesStartingAtIndex(uint32_t index, int64_t delta)
{
    const auto moved = std::lower_bound(_indexes.begin(), _indexes.end(), index);
    if (delta >= 0) {
        // Indexes pushed past the last 32-bit index fall off the end.
        const auto kept = std::partition_point(
            moved, _indexes.end(), [&](uint32_t value) { return uint64_t(value) + uint64_t(delta) <= UINT32_MAX; });
        _indexes.erase(kept, _indexes.end());
        for (auto position = moved; position != _indexes.end(); ++position)
            *position = static_cast<uint32_t>(*position + delta);
        return;
    }
    // Moving left, the group overwrites the indexes in the gap it closes; indexes that would pass below zero go.
    const uint64_t distance = 0 - static_cast<uint64_t>(delta);
    const uint32_t gapStart = distance > index ? 0 : static_cast<uint32_t>(index - distance);
    std::vector<uint32_t> shifted(_indexes.begin(), std::lower_bound(_indexes.begin(), _indexes.end(), gapStart));
    for (auto position = moved; position != _indexes.end(); ++position) {
        if (*position >= distance)
            shifted.push_back(static_cast<uint32_t>(*position - distance));
    }
    _indexes = std::move(shifted);
}
