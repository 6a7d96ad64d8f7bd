#include <zrbase/core/ZRDataExtension.h>
#include <zrbase/core/ZRStringExtension.h>

#include <gtest/gtest.h>

#include <string>

using namespace ZRExtension;

namespace {

ZRData bytes(std::string_view text) { return ZRData(text.begin(), text.end()); }

std::optional<ZRData> decoded(std::string_view text) { return decodeBase64(text); }

size_t decodeInto(std::string_view text, size_t capacity)
{
    ZRData destination(capacity + 1);
    return baseDecode(reinterpret_cast<const uint8_t*>(text.data()), text.size(), destination.data(), capacity);
}

}

TEST(ZRBase64, encodesAndDecodesTheVectorsOfRFC4648)
{
    const std::pair<const char*, const char*> vectors[] = { { "f", "Zg==" }, { "fo", "Zm8=" }, { "foo", "Zm9v" },
        { "foob", "Zm9vYg==" }, { "fooba", "Zm9vYmE=" }, { "foobar", "Zm9vYmFy" } };
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(encodeBase64(bytes(plain)), encoded);
        EXPECT_EQ(decoded(encoded), bytes(plain)) << encoded;
    }
    EXPECT_EQ(encodeBase64({}), "");
    // Nothing decoded counts as a failure.
    EXPECT_EQ(decoded(""), std::nullopt);
    EXPECT_EQ(decoded(" \n"), std::nullopt);
}

TEST(ZRBase64, roundTripsEveryByteAtEveryLengthAlsoWithLineBreaks)
{
    ZRData data;
    for (int length = 0; length < 300; ++length) {
        std::string text = encodeBase64(data);
        ASSERT_EQ(text.size(), (data.size() + 2) / 3 * 4);
        if (!data.empty()) {
            ASSERT_EQ(decoded(text), data) << length;
            for (size_t position = 76; position < text.size(); position += 78)
                text.insert(position, "\r\n");
            ASSERT_EQ(decoded(text), data) << length;
        }
        data.push_back(static_cast<uint8_t>(length * 37 + 11));
    }
}

TEST(ZRBase64, followsTheRulesOfTheClassicResolverDecoder)
{
    // White space anywhere, also inside the padding; a NUL ends the input.
    EXPECT_EQ(decoded(" Zm\t9v\vYg \f= \n=\r "), bytes("foob"));
    EXPECT_EQ(decoded(std::string_view("Zm9v\0***", 8)), bytes("foo"));
    // Characters outside the alphabet, and text that is not ASCII.
    EXPECT_EQ(decoded("Zm9*"), std::nullopt);
    EXPECT_EQ(decoded("Zm9v-_"), std::nullopt);
    EXPECT_EQ(decoded("Zm9v\xC3\xA9"), std::nullopt);
    // Padding must fit the quantum and end the input.
    EXPECT_EQ(decoded("="), std::nullopt);
    EXPECT_EQ(decoded("Z==="), std::nullopt);
    EXPECT_EQ(decoded("Zg="), std::nullopt);
    EXPECT_EQ(decoded("Zm8=="), std::nullopt);
    EXPECT_EQ(decoded("Zg==Zg=="), std::nullopt);
    EXPECT_EQ(decoded("Zg== x"), std::nullopt);
    // Without padding the input ends on a quantum boundary.
    EXPECT_EQ(decoded("Zm9vY"), std::nullopt);
    EXPECT_EQ(decoded("Zg"), std::nullopt);
    // The bits that padding discards must be zero.
    EXPECT_EQ(decoded("Zh=="), std::nullopt);
    EXPECT_EQ(decoded("Zm9="), std::nullopt);
}

TEST(ZRBase64, neverWritesBeyondTheCapacity)
{
    EXPECT_EQ(decodeInto("Zm9v", 3), 3u);
    EXPECT_EQ(decodeInto("Zm9vYmFy", 5), 0u);
    // A begun quantum needs room for the byte it has started, as in the classic decoder.
    EXPECT_EQ(decodeInto("Zg==", 1), 0u);
    EXPECT_EQ(decodeInto("Zg==", 2), 1u);
    EXPECT_EQ(decodeInto("Zm8=", 2), 0u);
    EXPECT_EQ(decodeInto("Zm8=", 3), 2u);

    uint8_t destination[4] = {};
    const auto* source = reinterpret_cast<const uint8_t*>("Zm9v");
    EXPECT_EQ(baseDecode(nullptr, 4, destination, 4), 0u);
    EXPECT_EQ(baseDecode(source, 0, destination, 4), 0u);
    EXPECT_EQ(baseDecode(source, 4, nullptr, 4), 0u);
    EXPECT_EQ(baseDecode(source, 4, destination, 0), 0u);
    EXPECT_EQ(baseDecode(std::span(source, 4)), bytes("foo"));
}
