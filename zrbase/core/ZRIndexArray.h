#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexRange.h>

#include <cstdint>
#include <string>
#include <vector>

class ZRIndexSet;
class ZRKeyedArchiver;
class ZRKeyedUnarchiver;

// An ordered list of unsigned positions that can be permuted the way a table's rows are reordered by dragging.
class ZR_EXPORT ZRIndexArray {
public:
    ZRIndexArray() = default;
    // The values location, location + 1, ... of the range.
    explicit ZRIndexArray(ZRIndexRange range);
    // Reads the values stored under "indexes", 4 bytes each in the machine's byte order; a trailing partial value
    // is dropped.
    explicit ZRIndexArray(const ZRKeyedUnarchiver& coder);

    static ZRIndexArray indexArrayWithIndexesInRange(ZRIndexRange range) { return ZRIndexArray(range); }

    uint32_t count() const noexcept { return static_cast<uint32_t>(_indexes.size()); }
    // ZRNotFound for a position at or after the end.
    uint32_t indexAtIndex(uint32_t position) const noexcept;
    const std::vector<uint32_t>& indexes() const noexcept { return _indexes; }

    // Appends the value.
    void addIndex(uint32_t value);
    // Inserts the value before the one at the position (after the last at count()); a position beyond count() is
    // rejected with false and changes nothing.
    bool addIndex(uint32_t value, uint32_t position);
    // Removes the value at the position; a position at or after the end is rejected with false.
    bool removeIndexAtIndex(uint32_t position);
    // Replaces the values by their inverse permutation (new[old[i]] = i). Values that are not a permutation of
    // 0 ... count() - 1 are left as they are.
    void invert();
    // Moves the values at the positions so that they stand together, in their old order, at the destination, as
    // dragged table rows are dropped: every moved position at or before the destination takes it one place
    // towards the start. Does nothing when a position is at or after the end or the destination is after it.
    void moveIndexesAtIndexes(const ZRIndexSet& positions, uint32_t destination);

    // The values under "indexes" as bytes.
    void encodeWithCoder(ZRKeyedArchiver& coder) const;

    // "ZRIndexArray: { 2 0 1 }"
    std::string description() const;

    bool operator==(const ZRIndexArray&) const = default;

private:
    std::vector<uint32_t> _indexes;
};
