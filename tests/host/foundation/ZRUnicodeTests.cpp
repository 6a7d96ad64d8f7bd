#include <zrbase/host/foundation/ZRUnicode.h>

#include <gtest/gtest.h>

TEST(ZRUnicode, countsUTF16UnitsOfUTF8Text)
{
    EXPECT_EQ(ZRUnicode::utf16Length(""), 0u);
    EXPECT_EQ(ZRUnicode::utf16Length("Take 3"), 6u);
    EXPECT_EQ(ZRUnicode::utf16Length("caf\xC3\xA9"), 4u); // é is one unit of two bytes
    EXPECT_EQ(ZRUnicode::utf16Length("\xE2\x82\xAC"), 1u); // € is one unit of three bytes
    EXPECT_EQ(ZRUnicode::utf16Length("\xF0\x9D\x84\x9E"), 2u); // 𝄞 lies above the plane: a surrogate pair
    EXPECT_EQ(ZRUnicode::utf16Length("\xC3"), 1u); // a cut sequence counts per byte
    EXPECT_EQ(ZRUnicode::utf16Length("\xE2\x82x"), 3u);
    EXPECT_EQ(ZRUnicode::utf16Length("\xF8\x80\x80"), 3u); // no character starts with F8
}

TEST(ZRUnicode, validatesAndRepairsUTF8)
{
    for (const char* valid :
        { "", "Take 3", "caf\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9D\x84\x9E", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF" })
        EXPECT_TRUE(ZRUnicode::isValidUTF8(valid)) << valid;
    // A cut sequence, a stray continuation byte, overlong forms, a surrogate, a value above U+10FFFF.
    for (const char* invalid :
        { "\xC3", "a\x80", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF" })
        EXPECT_FALSE(ZRUnicode::isValidUTF8(invalid)) << invalid;
    EXPECT_EQ(ZRUnicode::validUTF8("caf\xC3\xA9"), "caf\xC3\xA9");
    EXPECT_EQ(ZRUnicode::validUTF8("\xC3"
                                   "ake \xE2\x82"),
        "\xEF\xBF\xBD"
        "ake \xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(ZRUnicode, encodesCharactersAsUTF8)
{
    std::string text;
    for (const char32_t character : { U'A', U'\u00E9', U'\u20AC', U'\U0001D11E', U'\U0010FFFF' })
        ZRUnicode::appendUTF8(text, character);
    EXPECT_EQ(text, "A\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\xF4\x8F\xBF\xBF");
    EXPECT_TRUE(ZRUnicode::isValidUTF8(text));
    // A lone surrogate and a value beyond Unicode have no UTF-8 form.
    text.clear();
    for (const char32_t character : { char32_t(0xD800), char32_t(0xDFFF), char32_t(0x110000) })
        ZRUnicode::appendUTF8(text, character);
    EXPECT_EQ(text, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}
