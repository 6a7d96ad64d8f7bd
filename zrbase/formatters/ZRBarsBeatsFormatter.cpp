#include <zrbase/formatters/ZRBarsBeatsFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>

std::string ZRBarsBeatsFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    return ZRFormatterText::packedPairText(value.intValue(), "%d|%d");
}

bool ZRBarsBeatsFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const auto parts = ZRFormatterText::components(text, '|');
    if (parts.size() != 2)
        return false;
    // A 32-bit sum that wraps as the packed value does.
    const int64_t sum = int64_t { ZRFormatterText::intValue(parts[0]) } * 256 + ZRFormatterText::intValue(parts[1]);
    value = static_cast<int32_t>(static_cast<uint32_t>(sum));
    return true;
}

bool ZRBarsBeatsFormatter::isPartialStringValid(std::string_view text, std::string*, std::string*) const
{
    return ZRFormatterText::isPartialTextWithSeparatorValid(text, "0123456789|", '|');
}
