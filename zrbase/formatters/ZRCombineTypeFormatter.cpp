#include <zrbase/formatters/ZRCombineTypeFormatter.h>

#include <array>

namespace {

constexpr std::array<std::string_view, 4> combineTypeNames { "Add", "Subtract", "Duck", "Ring" };

}

std::string ZRCombineTypeFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const int32_t type = value.intValue();
    if (type < 0 || type > 3)
        return "unknown";
    return std::string(combineTypeNames[static_cast<size_t>(type)]);
}

bool ZRCombineTypeFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    int32_t type = 0;
    for (size_t index = 0; index < combineTypeNames.size(); ++index) {
        if (text == combineTypeNames[index])
            type = static_cast<int32_t>(index);
    }
    value = type;
    return true;
}
