#include <zrbase/formatters/ZRTimeSignatureFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>

#include <algorithm>

std::string ZRTimeSignatureFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    return ZRFormatterText::packedPairText(value.intValue(), "%d/%d");
}

bool ZRTimeSignatureFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    if (text == "n/a")
        return false;
    const auto parts = ZRFormatterText::components(text, '/');
    if (parts.size() != 2)
        return false;
    const int32_t numerator = std::clamp(ZRFormatterText::intValue(parts[0]), 2, 16);
    int32_t denominator = ZRFormatterText::intValue(parts[1]);
    if (denominator != 2 && denominator != 4 && denominator != 8 && denominator != 16 && denominator != 32
        && denominator != 64)
        denominator = 4;
    value = numerator * 256 + denominator;
    return true;
}

bool ZRTimeSignatureFormatter::isPartialStringValid(std::string_view text, std::string*, std::string*) const
{
    return ZRFormatterText::isPartialTextWithSeparatorValid(text, "0123456789/", '/');
}
