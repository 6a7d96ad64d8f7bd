#include <zrbase/host/foundation/ZRUnicode.h>

namespace {

// The length of the well-formed UTF-8 sequence at the index, 0 when there is none (RFC 3629, table 3-7 of Unicode).
size_t wellFormedSequence(std::string_view text, size_t index) noexcept
{
    const auto byte = [&](size_t offset) {
        return index + offset < text.size() ? static_cast<unsigned char>(text[index + offset]) : 0u;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return 1;
    const auto continuation = [&](size_t offset) { return (byte(offset) & 0xC0) == 0x80; };
    if (lead >= 0xC2 && lead <= 0xDF)
        return continuation(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned second = byte(1);
        const bool allowed = lead == 0xE0 ? second >= 0xA0 : lead == 0xED ? second <= 0x9F : true;
        return allowed && continuation(1) && continuation(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned second = byte(1);
        const bool allowed = lead == 0xF0 ? second >= 0x90 : lead == 0xF4 ? second <= 0x8F : true;
        return allowed && continuation(1) && continuation(2) && continuation(3) ? 4 : 0;
    }
    return 0;
}

}

namespace ZRUnicode {

bool isValidUTF8(std::string_view text) noexcept
{
    for (size_t index = 0; index < text.size();) {
        const size_t length = wellFormedSequence(text, index);
        if (length == 0)
            return false;
        index += length;
    }
    return true;
}

std::string validUTF8(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (size_t index = 0; index < text.size();) {
        const size_t length = wellFormedSequence(text, index);
        if (length == 0) {
            result += "\xEF\xBF\xBD";
            ++index;
        } else {
            result.append(text.substr(index, length));
            index += length;
        }
    }
    return result;
}

void appendUTF8(std::string& text, char32_t character)
{
    if ((character >= 0xD800 && character < 0xE000) || character > 0x10FFFF)
        character = 0xFFFD;
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0 | character >> 6));
        text.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0 | character >> 12));
        text.push_back(static_cast<char>(0x80 | (character >> 6 & 0x3F)));
        text.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    } else {
        text.push_back(static_cast<char>(0xF0 | character >> 18));
        text.push_back(static_cast<char>(0x80 | (character >> 12 & 0x3F)));
        text.push_back(static_cast<char>(0x80 | (character >> 6 & 0x3F)));
        text.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    }
}

size_t utf16Length(std::string_view utf8) noexcept
{
    size_t units = 0;
    size_t index = 0;
    while (index < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[index]);
        size_t sequence = 1;
        if (lead >= 0xF0 && lead <= 0xF4)
            sequence = 4;
        else if (lead >= 0xE0 && lead < 0xF0)
            sequence = 3;
        else if (lead >= 0xC2 && lead < 0xE0)
            sequence = 2;
        // Only a complete sequence of continuation bytes counts as one character; anything else counts per byte.
        bool complete = sequence > 1 && index + sequence <= utf8.size();
        for (size_t next = 1; complete && next < sequence; ++next)
            complete = (static_cast<unsigned char>(utf8[index + next]) & 0xC0) == 0x80;
        if (!complete)
            sequence = 1;
        units += sequence == 4 ? 2 : 1;
        index += sequence;
    }
    return units;
}

}
