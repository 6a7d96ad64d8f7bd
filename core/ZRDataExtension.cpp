#include "core/ZRDataExtension.h"

#include "core/ZRBase64Private.h"

#include <array>

namespace {

// Every 12-bit group as its two characters, so that the encoder writes two characters per look-up.
constexpr std::array<uint16_t, 4096> makePairs()
{
    std::array<uint16_t, 4096> pairs {};
    for (unsigned group = 0; group < 4096; ++group) {
        const auto first = static_cast<uint8_t>(ZRBase64Alphabet[group >> 6]);
        const auto second = static_cast<uint8_t>(ZRBase64Alphabet[group & 0x3F]);
        pairs[group] = static_cast<uint16_t>(first | second << 8);
    }
    return pairs;
}

constexpr std::array<uint16_t, 4096> ZRBase64Pairs = makePairs();

inline void storePair(char* destination, uint16_t pair)
{
    destination[0] = static_cast<char>(pair & 0xFF);
    destination[1] = static_cast<char>(pair >> 8);
}

}

namespace ZRExtension {

std::string encodeBase64(std::span<const uint8_t> data)
{
    const size_t length = data.size();
    std::string text((length + 2) / 3 * 4, '=');
    const uint8_t* source = data.data();
    char* destination = text.data();
    size_t index = 0;
    for (; index + 3 <= length; index += 3, destination += 4) {
        const uint32_t bits = uint32_t(source[index]) << 16 | uint32_t(source[index + 1]) << 8 | source[index + 2];
        storePair(destination, ZRBase64Pairs[bits >> 12]);
        storePair(destination + 2, ZRBase64Pairs[bits & 0xFFF]);
    }
    const size_t rest = length - index;
    if (rest > 0) {
        const uint32_t bits = uint32_t(source[index]) << 16 | (rest == 2 ? uint32_t(source[index + 1]) << 8 : 0);
        storePair(destination, ZRBase64Pairs[bits >> 12]);
        if (rest == 2)
            destination[2] = ZRBase64Alphabet[(bits >> 6) & 0x3F];
    }
    return text;
}

}
