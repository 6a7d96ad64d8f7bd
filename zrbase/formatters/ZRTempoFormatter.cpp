#include <zrbase/formatters/ZRTempoFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRTempoFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float tempo = value.floatValue();
    if (tempo == 0)
        return "n/a";
    return ZRStringWithFormat("%.2f", tempo);
}

bool ZRTempoFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const float tempo = ZRFormatterText::floatValue(text);
    if (tempo == 0)
        return false;
    value = tempo;
    return true;
}

bool ZRTempoFormatter::isPartialStringValid(std::string_view text, std::string*, std::string*) const
{
    return ZRFormatterText::isPartialTextWithSeparatorValid(text, "0123456789.", '.');
}
