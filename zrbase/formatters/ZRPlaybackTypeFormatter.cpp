#include <zrbase/formatters/ZRPlaybackTypeFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRPlaybackTypeFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    switch (value.intValue()) {
    case 1:
        return ZRLocalizedString("Loop");
    case 2:
        return ZRLocalizedString("One Shot");
    default:
        return ZRLocalizedString("n/a");
    }
}

bool ZRPlaybackTypeFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const char first = text.empty() ? 0 : text.front();
    value = first == 'L' || first == 'l' ? 1 : first == 'O' || first == 'o' ? 2 : 0;
    return true;
}
