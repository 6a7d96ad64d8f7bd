#include <zrbase/formatters/ZRDepthFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cmath>

std::string ZRDepthFormatter::units() const
{
    switch (_depthFormat) {
    case Decibels:
        return " dB";
    case Percent:
        return "%";
    default:
        return {};
    }
}

std::string ZRDepthFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float level = value.floatValue();
    if (std::isnan(level))
        return "--";
    switch (_depthFormat) {
    case Decibels:
        if (level == 0)
            return _showUnits ? "\u2212\u221E dB" : "\u2212\u221E";
        return ZRStringWithFormat(_showUnits ? "%.1f dB" : "%.1f", 20 * std::log10(std::fabs(double { level })));
    case Percent:
        return ZRStringWithFormat(_showUnits ? "%.0f%%" : "%.0f", std::round(std::fabs(level) * 100));
    case Linear:
        return ZRStringWithFormat("%.2f", std::fabs(level));
    case SevenBit:
        return ZRStringWithFormat("%d", ZRFormatterText::truncatedInt(std::round(level * 127)));
    case SixteenBitHex:
        // Negative levels show their two's complement: -1.0 is 8001.
        return ZRStringWithFormat(
            "%04X", static_cast<uint32_t>(ZRFormatterText::truncated(std::round(level * 32767)) & 0xFFFF));
    case TwentyFourBitHex:
        return ZRStringWithFormat("%06X",
            static_cast<uint32_t>(ZRFormatterText::truncated(std::max(0.0f, std::round(level * 8388607))) & 0xFFFFFF));
    default:
        return {};
    }
}

bool ZRDepthFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
