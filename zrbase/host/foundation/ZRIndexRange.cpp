#include <zrbase/host/foundation/ZRIndexRange.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>

ZRIndexRange ZRIntersectionIndexRange(ZRIndexRange a, ZRIndexRange b) noexcept
{
    if (a.max() < b.location || b.max() < a.location)
        return {};
    const uint32_t location = std::max(a.location, b.location);
    return { location, std::min(a.max(), b.max()) - location };
}

ZRIndexRange ZRUnionIndexRange(ZRIndexRange a, ZRIndexRange b) noexcept
{
    const uint32_t location = std::min(a.location, b.location);
    return { location, std::max(a.max(), b.max()) - location };
}

std::string ZRStringFromIndexRange(ZRIndexRange range)
{
    return ZRStringWithFormat("{%u, %u}", range.location, range.length);
}
