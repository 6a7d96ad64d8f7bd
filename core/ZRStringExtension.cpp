#include "core/ZRStringExtension.h"

#include "core/ZRBase64Private.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iconv.h>

namespace {

// Classes of input bytes for the decoder: 0 to 63 are alphabet values, the rest are negative so that one OR
// of four values tells whether a whole quantum is plain alphabet.
enum : int8_t { Invalid = -1, Space = -2, Pad = -3, End = -4 };

constexpr std::array<int8_t, 256> makeValues()
{
    std::array<int8_t, 256> values {};
    values.fill(Invalid);
    for (int8_t index = 0; index < 64; ++index)
        values[static_cast<uint8_t>(ZRBase64Alphabet[index])] = index;
    for (const char space : { ' ', '\t', '\n', '\v', '\f', '\r' })
        values[static_cast<uint8_t>(space)] = Space;
    values[static_cast<uint8_t>(ZRBase64Pad)] = Pad;
    values[0] = End;
    return values;
}

constexpr std::array<int8_t, 256> ZRBase64Values = makeValues();

// The values again, already shifted to their place in a quantum's 24 bits; anything outside the alphabet sets the
// top byte, so that one test on the OR of four look-ups finds it.
constexpr std::array<uint32_t, 256> makeShiftedValues(unsigned shift)
{
    std::array<uint32_t, 256> values {};
    for (size_t index = 0; index < 256; ++index)
        values[index] = ZRBase64Values[index] < 0 ? 0xFF000000 : uint32_t(ZRBase64Values[index]) << shift;
    return values;
}

constexpr std::array<uint32_t, 256> ZRBase64Shifted18 = makeShiftedValues(18);
constexpr std::array<uint32_t, 256> ZRBase64Shifted12 = makeShiftedValues(12);
constexpr std::array<uint32_t, 256> ZRBase64Shifted6 = makeShiftedValues(6);
constexpr std::array<uint32_t, 256> ZRBase64Shifted0 = makeShiftedValues(0);

// The rest of the input after the first "=": state is the position in the quantum (2 or 3 characters seen).
// Answers whether the padding is well formed; the caller then checks the discarded bits.
bool paddingIsValid(const uint8_t* next, const uint8_t* end, int state)
{
    auto skipSpace = [&] {
        while (next < end && ZRBase64Values[*next] == Space)
            ++next;
    };
    if (state == 2) {
        skipSpace();
        if (next == end || ZRBase64Values[*next] != Pad)
            return false;
        ++next;
    }
    skipSpace();
    return next == end || ZRBase64Values[*next] == End;
}

}

namespace ZRExtension {

size_t baseDecode(const uint8_t* source, size_t sourceLength, uint8_t* destination, size_t capacity)
{
    if (!source || !sourceLength || !destination || !capacity)
        return 0;
    const uint8_t* next = source;
    const uint8_t* const end = source + sourceLength;
    size_t count = 0;
    int state = 0;

    // Whole quanta of plain alphabet, the bulk of any real input, go four characters at a time.
    while (true) {
        if (state == 0) {
            const size_t quanta = std::min(static_cast<size_t>(end - next) / 4, (capacity - count) / 3);
            const uint8_t* const stop = next + 4 * quanta;
            uint8_t* output = destination + count;
            while (next < stop) {
                const uint32_t bits = ZRBase64Shifted18[next[0]] | ZRBase64Shifted12[next[1]]
                    | ZRBase64Shifted6[next[2]] | ZRBase64Shifted0[next[3]];
                if (bits & 0xFF000000)
                    break;
                output[0] = static_cast<uint8_t>(bits >> 16);
                output[1] = static_cast<uint8_t>(bits >> 8);
                output[2] = static_cast<uint8_t>(bits);
                output += 3;
                next += 4;
            }
            count = static_cast<size_t>(output - destination);
        }
        if (next == end)
            break;
        const int value = ZRBase64Values[*next++];
        if (value == Space)
            continue;
        if (value == End || value == Pad) {
            if (value == End)
                break;
            // The bits after the last full byte must be zero; the decoder has already stored them at count.
            if (state < 2 || !paddingIsValid(next, end, state) || destination[count] != 0)
                return 0;
            return count;
        }
        if (value == Invalid)
            return 0;
        // Like the classic decoder, a partial quantum also needs room for the byte it has begun.
        switch (state) {
        case 0:
            if (count >= capacity)
                return 0;
            destination[count] = static_cast<uint8_t>(value << 2);
            break;
        case 1:
            if (count + 1 >= capacity)
                return 0;
            destination[count] |= static_cast<uint8_t>(value >> 4);
            destination[++count] = static_cast<uint8_t>((value & 0x0F) << 4);
            break;
        case 2:
            if (count + 1 >= capacity)
                return 0;
            destination[count] |= static_cast<uint8_t>(value >> 2);
            destination[++count] = static_cast<uint8_t>((value & 0x03) << 6);
            break;
        default:
            if (count >= capacity)
                return 0;
            destination[count++] |= static_cast<uint8_t>(value);
            break;
        }
        state = (state + 1) % 4;
    }
    return state == 0 ? count : 0;
}

std::optional<ZRData> baseDecode(std::span<const uint8_t> source)
{
    ZRData data((source.size() + 3) / 4 * 3);
    const size_t count = baseDecode(source.data(), source.size(), data.data(), data.size());
    if (count == 0)
        return std::nullopt;
    data.resize(count);
    return data;
}

std::optional<ZRData> decodeBase64(std::string_view text)
{
    // The decoder refuses every byte above 0x7F itself; only the text after a NUL, where it stops, needs a look.
    if (const size_t nul = text.find('\0'); nul != std::string_view::npos) {
        for (const char character : text.substr(nul)) {
            if (static_cast<uint8_t>(character) >= 0x80)
                return std::nullopt;
        }
    }
    return baseDecode({ reinterpret_cast<const uint8_t*>(text.data()), text.size() });
}

std::string lastPathComponent(std::string_view path)
{
    const size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos)
        return path.empty() ? std::string() : std::string("/");
    path = path.substr(0, last + 1);
    const size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string pathExtension(std::string_view path)
{
    const std::string component = lastPathComponent(path);
    const size_t dot = component.rfind('.');
    // A name that starts with its only full stop (".profile") is a hidden file without extension.
    if (dot == std::string::npos || dot == 0)
        return {};
    return component.substr(dot + 1);
}

std::string filename(std::string_view path)
{
    std::string component = lastPathComponent(path);
    const size_t dot = component.rfind('.');
    if (dot != std::string::npos && dot > 0)
        component.resize(dot);
    return component;
}

ZRData lossyDataUsingEncoding(std::string_view text, ZRStringEncoding encoding)
{
    if (encoding == ZRStringEncoding::UTF8)
        return ZRData(text.begin(), text.end());
    const char* target = encoding == ZRStringEncoding::MacOSRoman ? "MACINTOSH" : "ASCII";
    const iconv_t converter = iconv_open(target, "UTF-8");
    ZRData data;
    if (converter == reinterpret_cast<iconv_t>(-1))
        return data;
    data.resize(text.size());
    char* input = const_cast<char*>(text.data());
    size_t inputLeft = text.size();
    char* output = reinterpret_cast<char*>(data.data());
    size_t outputLeft = data.size();
    // Every character takes at most as many bytes in these one-byte encodings as in UTF-8, so the output never
    // runs out; a character the encoding lacks (or a stray byte) becomes "?" and the conversion goes on after it.
    while (inputLeft > 0 && iconv(converter, &input, &inputLeft, &output, &outputLeft) == static_cast<size_t>(-1)) {
        size_t skipped = 1;
        while (skipped < inputLeft && (static_cast<uint8_t>(input[skipped]) & 0xC0) == 0x80)
            ++skipped;
        input += skipped;
        inputLeft -= skipped;
        *output++ = '?';
        --outputLeft;
    }
    iconv_close(converter);
    data.resize(data.size() - outputLeft);
    return data;
}

}
