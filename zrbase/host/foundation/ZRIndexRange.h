#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <string>

// The "not found" position.
inline constexpr uint32_t ZRNotFound = 0x7FFFFFFF;

// A range of 32-bit positions: location and length.
struct ZRIndexRange {
    uint32_t location = 0;
    uint32_t length = 0;

    // One past the last position (32-bit arithmetic, as the host computes it).
    constexpr uint32_t max() const noexcept { return location + length; }
    constexpr bool contains(uint32_t position) const noexcept
    {
        return position >= location && position - location < length;
    }
    constexpr bool operator==(const ZRIndexRange&) const = default;
};

constexpr ZRIndexRange ZRMakeIndexRange(uint32_t location, uint32_t length) noexcept { return { location, length }; }
// The part that both ranges cover; an empty range at 0 when they do not meet.
ZR_EXPORT ZRIndexRange ZRIntersectionIndexRange(ZRIndexRange a, ZRIndexRange b) noexcept;
// The smallest range that covers both.
ZR_EXPORT ZRIndexRange ZRUnionIndexRange(ZRIndexRange a, ZRIndexRange b) noexcept;
// "{location, length}"
ZR_EXPORT std::string ZRStringFromIndexRange(ZRIndexRange range);
