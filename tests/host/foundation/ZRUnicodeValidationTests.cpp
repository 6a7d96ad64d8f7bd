#include "host/foundation/ZRUnicode.h"

#include <gtest/gtest.h>

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
