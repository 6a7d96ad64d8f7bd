#include <zrbase/formatters/ZRScaleFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRScaleFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    switch (value.intValue()) {
    case 1:
        return ZRLocalizedString("Minor");
    case 2:
        return ZRLocalizedString("Major");
    case 3:
        return ZRLocalizedString("Neither");
    case 4:
        return ZRLocalizedString("Both");
    default:
        return ZRLocalizedString("none");
    }
}

bool ZRScaleFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const char first = text.empty() ? 0 : text[0];
    const char second = text.size() < 2 ? 0 : text[1];
    int32_t scale = 0;
    if (first == 'B')
        scale = 4;
    else if (first == 'M' || first == 'm')
        scale = second == 'i' ? 1 : second == 'a' ? 2 : 0;
    else if (first == 'N' || first == 'n')
        scale = second == 'e' ? 3 : 0;
    value = scale;
    return true;
}
