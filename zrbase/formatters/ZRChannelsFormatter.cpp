#include <zrbase/formatters/ZRChannelsFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cstdlib>

std::string ZRChannelsFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const int32_t channels = value.intValue();
    switch (channels) {
    case 0:
        return "--";
    case 1:
        return ZRLocalizedString("Mono");
    case 2:
        return ZRLocalizedString("Stereo");
    case 4:
        return ZRLocalizedString("LCRS");
    case 5:
        return "5.0";
    case 6:
        return "5.1";
    case 7:
        return "6.1";
    case 8:
        return "7.1";
    case 12:
        return "10.2";
    default:
        return ZRStringWithFormat(ZRLocalizedString("%d-ch"), std::abs(int64_t { channels }));
    }
}

bool ZRChannelsFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
