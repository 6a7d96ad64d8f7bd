#include <zrbase/formatters/ZRDecibelFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cmath>

std::string ZRDecibelFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float gain = value.floatValue();
    const std::string_view units = _showUnits ? " dB" : "";
    if (gain > 0)
        return ZRStringWithFormat("%.1f%@", 20 * std::log10(gain), units);
    if (gain == 0)
        return ZRStringWithFormat("-%C%@", u'\u221E', units);
    return "--";
}

bool ZRDecibelFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    value = std::pow(10.0f, ZRFormatterText::floatValue(text) / 20);
    return true;
}
