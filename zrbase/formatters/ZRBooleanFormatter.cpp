#include <zrbase/formatters/ZRBooleanFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

namespace {

// The first character of a non-empty text, an ASCII letter in lower case; a character of several UTF-8 bytes as it
// is.
std::string lowercaseFirstCharacter(std::string_view text)
{
    size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        ++length;
    std::string character(text.substr(0, length));
    if (character[0] >= 'A' && character[0] <= 'Z')
        character[0] = static_cast<char>(character[0] - 'A' + 'a');
    return character;
}

}

std::string ZRBooleanFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    return value.boolValue() ? ZRLocalizedString("Yes") : ZRLocalizedString("No");
}

bool ZRBooleanFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    if (text.empty())
        return false;
    value = lowercaseFirstCharacter(text) == lowercaseFirstCharacter(ZRLocalizedString("Yes"));
    return true;
}
