#include "DurationText.h"

#include <zrbase/formatters/ZRTimeFormatter.h>

namespace zr {

std::string durationText(double seconds)
{
    ZRTimeFormatter formatter;
    formatter.setTimeFormat(ZRTimeFormatHoursMinutesSecondsMilliseconds);
    return formatter.stringForObjectValue(ZRPropertyList(seconds));
}

}
