#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexRange.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

// A sorted set of unique unsigned 32-bit indexes.
class ZR_EXPORT ZRIndexSet {
public:
    ZRIndexSet() = default;
    explicit ZRIndexSet(uint32_t index);
    explicit ZRIndexSet(ZRIndexRange range);
    ZRIndexSet(std::initializer_list<uint32_t> indexes);

    uint32_t count() const noexcept { return static_cast<uint32_t>(_indexes.size()); }
    bool isEmpty() const noexcept { return _indexes.empty(); }
    bool containsIndex(uint32_t index) const noexcept;
    bool containsIndexes(const ZRIndexSet& other) const noexcept;
    // ZRNotFound when empty or when there is no such index.
    uint32_t firstIndex() const noexcept;
    uint32_t lastIndex() const noexcept;
    uint32_t indexGreaterThanIndex(uint32_t index) const noexcept;
    uint32_t indexLessThanIndex(uint32_t index) const noexcept;
    uint32_t countOfIndexesInRange(ZRIndexRange range) const noexcept;

    void addIndex(uint32_t index);
    void addIndexes(const ZRIndexSet& other);
    void addIndexesInRange(ZRIndexRange range);
    void removeIndex(uint32_t index);
    void removeIndexes(const ZRIndexSet& other);
    void removeIndexesInRange(ZRIndexRange range);
    void removeAllIndexes() noexcept { _indexes.clear(); }
    // Moves every index at or above `index` by `delta`, as the host's shiftIndexesStartingAtIndex:by: does: a
    // negative shift removes the indexes of the gap it closes, and indexes pushed past either end of the 32-bit
    // range are dropped.
    void shiftIndexesStartingAtIndex(uint32_t index, int64_t delta);

    const std::vector<uint32_t>& indexes() const noexcept { return _indexes; }
    auto begin() const noexcept { return _indexes.begin(); }
    auto end() const noexcept { return _indexes.end(); }
    bool operator==(const ZRIndexSet&) const = default;

private:
    std::vector<uint32_t> _indexes;
};
