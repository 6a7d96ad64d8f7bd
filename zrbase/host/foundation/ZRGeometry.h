#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <string_view>

struct ZRPoint {
    float x = 0;
    float y = 0;
    constexpr bool operator==(const ZRPoint&) const = default;
};

struct ZRSize {
    float width = 0;
    float height = 0;
    constexpr bool operator==(const ZRSize&) const = default;
};

struct ZRRect {
    ZRPoint origin;
    ZRSize size;
    constexpr bool operator==(const ZRRect&) const = default;
};

constexpr ZRPoint ZRMakePoint(float x, float y) noexcept { return { x, y }; }
constexpr ZRSize ZRMakeSize(float width, float height) noexcept { return { width, height }; }
constexpr ZRRect ZRMakeRect(float x, float y, float width, float height) noexcept
{
    return { { x, y }, { width, height } };
}

// The text forms "{x, y}", "{width, height}" and "{{x, y}, {width, height}}", numbers written with "%g".
// Reading is lenient as the host's is: it takes the numbers in order, skipping anything else, and missing
// numbers are 0.
ZR_EXPORT std::string ZRStringFromPoint(ZRPoint point);
ZR_EXPORT std::string ZRStringFromSize(ZRSize size);
ZR_EXPORT std::string ZRStringFromRect(ZRRect rect);
ZR_EXPORT ZRPoint ZRPointFromString(std::string_view text) noexcept;
ZR_EXPORT ZRSize ZRSizeFromString(std::string_view text) noexcept;
ZR_EXPORT ZRRect ZRRectFromString(std::string_view text) noexcept;
