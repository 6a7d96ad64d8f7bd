#include "host/foundation/ZRUnicode.h"

namespace ZRUnicode {

size_t utf16Length(std::string_view utf8) noexcept
{
    size_t units = 0;
    size_t index = 0;
    while (index < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[index]);
        size_t sequence = 1;
        if (lead >= 0xF0 && lead <= 0xF4)
            sequence = 4;
        else if (lead >= 0xE0)
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
