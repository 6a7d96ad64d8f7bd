#include <zrbase/core/ZRFormatterExtension.h>

namespace ZRExtension {

std::optional<ZRPropertyList> objectValueForString(const ZRFormatter& formatter, std::string_view text)
{
    ZRPropertyList value;
    if (!formatter.getObjectValue(value, text))
        return std::nullopt;
    return value;
}

}
