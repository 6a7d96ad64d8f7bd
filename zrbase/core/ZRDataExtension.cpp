#include <zrbase/core/ZRDataExtension.h>

#include <zrbase/core/ZRBase64Private.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <memory>

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

ZRData digest(const EVP_MD* type, std::span<const uint8_t> data)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    ZRData result(static_cast<size_t>(EVP_MD_get_size(type)));
    unsigned int length = 0;
    // The built-in digests fail only when memory runs out; nothing then comes back.
    if (!context || !EVP_DigestInit_ex(context.get(), type, nullptr)
        || !EVP_DigestUpdate(context.get(), data.data(), data.size())
        || !EVP_DigestFinal_ex(context.get(), result.data(), &length))
        return {};
    result.resize(length);
    return result;
}

uint32_t bigEndianWord(const uint8_t* bytes)
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
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

ZRData md5Digest(std::span<const uint8_t> data) { return digest(EVP_md5(), data); }

ZRData sha1Digest(std::span<const uint8_t> data) { return digest(EVP_sha1(), data); }

std::string md5String(std::span<const uint8_t> data)
{
    const ZRData bytes = md5Digest(data);
    if (bytes.size() != 16)
        return {};
    return ZRStringWithFormat("%08x%08x%08x%08x", bigEndianWord(&bytes[0]), bigEndianWord(&bytes[4]),
        bigEndianWord(&bytes[8]), bigEndianWord(&bytes[12]));
}

void writeToFile(std::span<const uint8_t> data, const std::string& path)
{
    const std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    if (file)
        std::fwrite(data.data(), 1, data.size(), file.get());
}

}
