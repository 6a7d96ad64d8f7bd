#include <zrbase/formatters/ZRMIDINoteFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view noteLetters = "ABCDEFGabcdefg";
constexpr std::string_view nameCharacters = "ABCDEFGabcdefg#";

std::string_view skipWhiteSpace(std::string_view text) noexcept
{
    while (!text.empty() && std::string_view(" \t\n\v\f\r").find(text.front()) != std::string_view::npos)
        text.remove_prefix(1);
    return text;
}

// The semitone of a note letter above C; anything that is not a letter A, B, D, E, F or G counts as C.
int32_t semitoneOfLetter(char letter) noexcept
{
    switch (letter) {
    case 'A':
    case 'a':
        return 9;
    case 'B':
    case 'b':
        return 11;
    case 'D':
    case 'd':
        return 2;
    case 'E':
    case 'e':
        return 4;
    case 'F':
    case 'f':
        return 5;
    case 'G':
    case 'g':
        return 7;
    default:
        return 0;
    }
}

// The character after the first one (a character of several UTF-8 bytes counting as one), 0 when there is none.
char secondCharacter(std::string_view text) noexcept
{
    size_t index = 1;
    while (index < text.size() && (static_cast<unsigned char>(text[index]) & 0xC0) == 0x80)
        ++index;
    return index < text.size() ? text[index] : 0;
}

}

std::string ZRMIDINoteFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    static constexpr std::array<std::string_view, 12> names { "C%d", "C#%d", "D%d", "D#%d", "E%d", "F%d", "F#%d", "G%d",
        "G#%d", "A%d", "A#%d", "B%d" };
    const int32_t note = value.intValue();
    if (note < 0 || note > 127)
        return "<none>";
    return ZRStringWithFormat(names[static_cast<size_t>(note % 12)], note / 12 - 2);
}

bool ZRMIDINoteFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    if (text.find_first_of(nameCharacters) == std::string_view::npos) {
        value = ZRFormatterText::intValue(text);
        return true;
    }
    int64_t note = semitoneOfLetter(text.front());
    if (secondCharacter(text) == '#')
        ++note;
    // The octave is the integer after the run of letters and sharps, if there is one.
    std::string_view rest = skipWhiteSpace(text);
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(nameCharacters)));
    rest = skipWhiteSpace(rest);
    const size_t digits = !rest.empty() && (rest.front() == '-' || rest.front() == '+') ? 1 : 0;
    if (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9')
        note += 12 * int64_t { ZRFormatterText::intValue(rest) } + 24;
    value = static_cast<int32_t>(std::clamp<int64_t>(note, 0, 127));
    return true;
}

bool ZRMIDINoteFormatter::isPartialStringValid(std::string_view text, std::string*, std::string*) const
{
    if (text.empty() || noteLetters.find(text.front()) == std::string_view::npos)
        return false;
    const std::string_view rest = text.substr(1);
    return rest.find_first_not_of("#0123456789-") == std::string_view::npos && std::ranges::count(rest, '#') <= 1
        && std::ranges::count(rest, '-') <= 1;
}
