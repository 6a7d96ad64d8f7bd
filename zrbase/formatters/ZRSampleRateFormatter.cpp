#include <zrbase/formatters/ZRSampleRateFormatter.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRSampleRateFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float rate = value.floatValue();
    if (rate == 0)
        return "--";
    return ZRStringWithFormat("%.3f kHz", rate / 1000);
}

bool ZRSampleRateFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
