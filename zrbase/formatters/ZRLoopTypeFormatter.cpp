#include <zrbase/formatters/ZRLoopTypeFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <array>

namespace {

// The loop types from -1 on, by their English names.
constexpr std::array<std::string_view, 4> loopTypeNames { "None", "Forward", "Forward-Backward", "Backward" };

}

std::string ZRLoopTypeFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const int32_t type = value.intValue();
    if (type < -1 || type > 2)
        return ZRLocalizedString("unknown");
    return ZRLocalizedString(loopTypeNames[static_cast<size_t>(type + 1)]);
}

bool ZRLoopTypeFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    int32_t type = -1;
    for (size_t index = 0; index < loopTypeNames.size(); ++index) {
        if (text == ZRLocalizedString(loopTypeNames[index]))
            type = static_cast<int32_t>(index) - 1;
    }
    value = type;
    return true;
}
