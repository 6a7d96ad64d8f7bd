#include <zrbase/formatters/ZRKeyFormatter.h>

#include <array>

std::string ZRKeyFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    static constexpr std::array<const char*, 12> names { "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#",
        "B" };
    const int32_t key = value.intValue();
    return key >= 0 && key < 12 ? names[static_cast<size_t>(key)] : "none";
}

bool ZRKeyFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    // Only capital letters name a key; everything else, a lower-case letter included, counts as C.
    // The position of a letter in this text is its semitone above C.
    static constexpr std::string_view letters = "C D EF G A B";
    const size_t semitone = text.empty() || text.front() == ' ' ? std::string_view::npos : letters.find(text.front());
    int32_t key = semitone == std::string_view::npos ? 0 : static_cast<int32_t>(semitone);
    if (text.size() > 1 && text[1] == '#')
        ++key;
    value = key;
    return true;
}
