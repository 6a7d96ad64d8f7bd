#include <zrbase/formatters/ZRFrequencyFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRFrequencyFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float frequency = value.floatValue();
    if (frequency < 10000)
        return ZRStringWithFormat("%.1f Hz", frequency);
    return ZRStringWithFormat("%.3f kHz", frequency / 1000);
}

bool ZRFrequencyFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const float frequency = ZRFormatterText::floatValue(text);
    value = text.find("kHz") == std::string_view::npos ? frequency : frequency * 1000;
    return true;
}
