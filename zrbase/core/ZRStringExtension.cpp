#include <zrbase/core/ZRStringExtension.h>

#include <zrbase/core/ZRBase64Private.h>
#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRPropertyList.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>
#include <array>

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

// The bytes of the character that starts at the index: 1 for a byte that starts no well-formed character.
size_t characterLength(std::string_view text, size_t index)
{
    const auto lead = static_cast<uint8_t>(text[index]);
    const size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    return length > 1 && ZRUnicode::isValidUTF8(text.substr(index, length)) ? length : 1;
}

// Calls `visit` with every character of UTF-8 text; a byte that starts no well-formed character is U+FFFD.
template <typename Visit> void forEachCharacter(std::string_view text, Visit&& visit)
{
    for (size_t index = 0; index < text.size();) {
        const size_t length = characterLength(text, index);
        const auto lead = static_cast<uint8_t>(text[index]);
        char32_t character = length == 1 ? (lead < 0x80 ? lead : U'\uFFFD') : lead & (0x7F >> length);
        for (size_t next = 1; next < length; ++next)
            character = character << 6 | (static_cast<uint8_t>(text[index + next]) & 0x3F);
        visit(character);
        index += length;
    }
}

// The characters of Mac OS Roman from 0x80 on (the bytes below are ASCII), as Apple's mapping table has them:
// 0xC6 is U+2206 INCREMENT and 0xF0 the Apple logo U+F8FF, where some converters differ.
constexpr char16_t ZRMacOSRomanUpper[128] = { 0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0,
    0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1,
    0x00F3, 0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7,
    0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264,
    0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152,
    0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039,
    0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD,
    0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC, 0x00AF,
    0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7 };

std::string macOSRomanString(std::span<const uint8_t> bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (const uint8_t byte : bytes)
        ZRUnicode::appendUTF8(text, byte < 0x80 ? byte : ZRMacOSRomanUpper[byte - 0x80]);
    return text;
}

uint8_t macOSRomanByte(char32_t character)
{
    if (character < 0x80)
        return static_cast<uint8_t>(character);
    const auto* found = std::find(std::begin(ZRMacOSRomanUpper), std::end(ZRMacOSRomanUpper), character);
    return found == std::end(ZRMacOSRomanUpper) ? '?' : static_cast<uint8_t>(0x80 + (found - ZRMacOSRomanUpper));
}

std::string_view asText(std::span<const uint8_t> data)
{
    return { reinterpret_cast<const char*>(data.data()), data.size() };
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
    ZRData data;
    data.reserve(text.size());
    forEachCharacter(text, [&](char32_t character) {
        if (encoding == ZRStringEncoding::MacOSRoman)
            data.push_back(macOSRomanByte(character));
        else
            data.push_back(character < 0x80 ? static_cast<uint8_t>(character) : '?');
    });
    return data;
}

std::string stringByIncrementingString(std::string_view text)
{
    if (const size_t blank = text.rfind(' '); blank != std::string_view::npos) {
        // The number is read from the blank on, so " 0" never equals "0": a trailing 0 counts as no number.
        const long long number = ZRPropertyList(text.substr(blank)).longLongValue();
        if (number >= 1)
            return ZRStringWithFormat("%@ %qu", text.substr(0, blank), static_cast<unsigned long long>(number) + 1);
    }
    return ZRStringWithFormat("%@ %d", text, 2);
}

ZRIndexRange range(std::string_view text) { return { 0, static_cast<uint32_t>(ZRUnicode::utf16Length(text)) }; }

std::string stringAsLossyASCIIString(std::string_view text)
{
    const ZRData bytes = lossyDataUsingEncoding(text, ZRStringEncoding::ASCII);
    return std::string(bytes.begin(), bytes.end());
}

ZRData lossyASCIICString(std::string_view text)
{
    ZRData bytes = lossyDataUsingEncoding(text, ZRStringEncoding::ASCII);
    bytes.push_back(0);
    return bytes;
}

std::optional<ZRData> lossyASCIIPascalString(std::string_view text)
{
    const ZRData bytes = lossyDataUsingEncoding(text, ZRStringEncoding::ASCII);
    if (bytes.size() > 255)
        return std::nullopt;
    ZRData pascal { static_cast<uint8_t>(bytes.size()) };
    pascal.insert(pascal.end(), bytes.begin(), bytes.end());
    return pascal;
}

std::string stringWithOSType(uint32_t code)
{
    const uint8_t bytes[4] = { static_cast<uint8_t>(code >> 24), static_cast<uint8_t>(code >> 16),
        static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code) };
    return macOSRomanString(bytes);
}

std::string asciiStringWithData(std::span<const uint8_t> data)
{
    std::string text;
    text.reserve(data.size());
    for (const uint8_t byte : data)
        ZRUnicode::appendUTF8(text, byte < 0x80 ? byte : U'\uFFFD');
    return text;
}

std::optional<std::string> stringWithData(std::span<const uint8_t> data, ZRStringEncoding encoding)
{
    switch (encoding) {
    case ZRStringEncoding::ASCII:
        if (std::ranges::any_of(data, [](uint8_t byte) { return byte >= 0x80; }))
            return std::nullopt;
        return std::string(asText(data));
    case ZRStringEncoding::UTF8:
        if (!ZRUnicode::isValidUTF8(asText(data)))
            return std::nullopt;
        return std::string(asText(data));
    case ZRStringEncoding::MacOSRoman:
        return macOSRomanString(data);
    }
    return std::nullopt;
}

void logCharacters(std::string_view text)
{
    unsigned position = 0;
    forEachCharacter(text, [&](char32_t character) {
        const auto logUnit = [&](unsigned unit) { ZRConsoleLog("%u: 0x%04X", position++, unit); };
        if (character < 0x10000) {
            logUnit(character);
        } else {
            logUnit(0xD800 + ((character - 0x10000) >> 10));
            logUnit(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
    });
}

void appendPathComponent(std::string& path, std::string_view component)
{
    if (!path.empty() && path.back() != '/')
        path.push_back('/');
    path.append(component);
}

void prependPath(std::string& path, std::string_view prefix)
{
    const bool separated = (!prefix.empty() && prefix.back() == '/') || (!path.empty() && path.front() == '/');
    path.insert(0, separated ? std::string(prefix) : std::string(prefix) + '/');
}

void deleteLastPathComponent(std::string& path)
{
    if (const size_t slash = path.rfind('/'); slash != std::string::npos)
        path.erase(slash);
}

void replaceLastPathComponent(std::string& path, std::string_view name)
{
    deleteLastPathComponent(path);
    appendPathComponent(path, name);
}

void deletePathExtension(std::string& path)
{
    const size_t slash = path.rfind('/');
    const size_t start = slash == std::string::npos ? 0 : slash + 1;
    if (const size_t dot = path.find('.', start); dot != std::string::npos)
        path.erase(dot);
}

void appendPathExtension(std::string& path, std::string_view extension)
{
    if (!path.empty() && path.back() == '/')
        path.pop_back();
    path.push_back('.');
    path.append(extension);
}

void setPathExtension(std::string& path, std::string_view extension)
{
    if (pathExtension(path) == extension)
        return;
    deletePathExtension(path);
    appendPathExtension(path, extension);
}

void setPath(std::string& path, std::string_view newPath) { path = ZRConformPath(newPath); }

void truncateToLength(std::string& text, size_t length, bool withEllipsis)
{
    size_t units = 0;
    size_t index = 0;
    while (index < text.size()) {
        const size_t characterBytes = characterLength(text, index);
        const size_t characterUnits = characterBytes == 4 ? 2 : 1;
        if (units + characterUnits > length)
            break;
        units += characterUnits;
        index += characterBytes;
    }
    if (index == text.size())
        return;
    text.resize(index);
    if (withEllipsis)
        text.append("...");
}

}
