#include <zrbase/formatters/ZRFileSizeFormatter.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRFileSizeFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    constexpr double perUnit = 1024;
    const double bytes = value.doubleValue();
    if (bytes < perUnit)
        return ZRStringWithFormat("%.0f B", bytes);
    const double kilobytes = bytes / perUnit;
    if (kilobytes < perUnit)
        return ZRStringWithFormat("%.0f KB", kilobytes);
    const double megabytes = kilobytes / perUnit;
    if (megabytes < perUnit)
        return ZRStringWithFormat("%.1f MB", megabytes);
    return ZRStringWithFormat("%.2f GB", megabytes / perUnit);
}

bool ZRFileSizeFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
