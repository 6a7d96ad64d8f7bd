#include "host/foundation/ZRUnicode.h"

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
