#include <zrbase/host/foundation/ZRPropertyList.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>

TEST(ZRStringWithFormat, writesIntegersWithTheirLengthModifiers)
{
    EXPECT_EQ(ZRStringWithFormat("%d %i %u", -3, 42, 7u), "-3 42 7");
    EXPECT_EQ(ZRStringWithFormat("%x %X %o %#x", 255, 255u, 8, 255), "ff FF 10 0xff");
    EXPECT_EQ(ZRStringWithFormat("%qi %qu %lld", int64_t(-5000000000), UINT64_MAX, int64_t(1) << 40),
        "-5000000000 18446744073709551615 1099511627776");
    EXPECT_EQ(ZRStringWithFormat("%ld %lu %zu %hd", -1L, 2UL, size_t(3), 70000), "-1 2 3 4464");
    EXPECT_EQ(ZRStringWithFormat("%@%02qi:%02qi.%03qi", "-", int64_t(1), int64_t(5), int64_t(7)), "-01:05.007");
    EXPECT_EQ(ZRStringWithFormat("%04X|%06X|%5d|%-5d|%+d", 0xAB, 0xABCD, 42, 42, 42), "00AB|00ABCD|   42|42   |+42");
    // Without a length modifier the value is read as an int, as a C call would read it.
    EXPECT_EQ(ZRStringWithFormat("%u %d", -1, int64_t(1) << 32), "4294967295 0");
    EXPECT_EQ(ZRStringWithFormat("%d", true), "1");
}

TEST(ZRStringWithFormat, writesRealsIndependentlyOfTheLocale)
{
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    EXPECT_EQ(ZRStringWithFormat("%f %.1f %5.2f %e %g", 1.5, 2.25f, 3.14159, 1234.5, 0.0001),
        "1.500000 2.2  3.14 1.234500e+03 0.0001");
    EXPECT_EQ(ZRStringWithFormat("%.0f%%", 99.6), "100%");
    EXPECT_EQ(ZRStringWithFormat("%.1f dB", 3), "3.0 dB"); // integers are numbers too
    std::setlocale(LC_NUMERIC, previous.c_str());
}

TEST(ZRStringWithFormat, writesTextAndCharacters)
{
    EXPECT_EQ(ZRStringWithFormat("%@ failed because %@", std::string("Copying"), "the disk is full"),
        "Copying failed because the disk is full");
    EXPECT_EQ(ZRStringWithFormat("%s|%c|%C", "abc", 'x', char16_t(0x221E)), "abc|x|\xE2\x88\x9E");
    EXPECT_EQ(ZRStringWithFormat("-%C%@", 0x221E, " dB"), "-\xE2\x88\x9E dB");
    EXPECT_EQ(ZRStringWithFormat("%C", char16_t(0xD800)), "\xEF\xBF\xBD");
    // %s counts bytes: a two-byte character is cut in half at 12 bytes.
    EXPECT_EQ(ZRStringWithFormat(" %-12.12s|", "caf\xC3\xA9"), " caf\xC3\xA9       |");
    EXPECT_EQ(ZRStringWithFormat("%-12.12s|", "abcdefghijk\xC3\xA9"), "abcdefghijk\xC3|");
    // %@ counts characters.
    EXPECT_EQ(ZRStringWithFormat("%-6@|%3.2@|", "caf\xC3\xA9", "\xC3\xA9t\xC3\xA9"), "caf\xC3\xA9  | \xC3\xA9t|");
    EXPECT_EQ(ZRStringWithFormat("%*d|%-*d|%.*f", 4, 7, 3, 7, 2, 1.0), "   7|7  |1.00");
    EXPECT_EQ(ZRStringWithFormat("%2$@ %1$d", 5, "take"), "take 5");
    EXPECT_EQ(ZRStringWithFormat("100%% %y %"), "100% %y %");
}

TEST(ZRStringWithFormat, writesNullForMissingOrMismatchedArguments)
{
    EXPECT_EQ(ZRStringWithFormat("%d %@"), "(null) (null)");
    EXPECT_EQ(ZRStringWithFormat("%d|%f|%s|%@", "text", "text", 5, 1.5), "(null)|(null)|(null)|(null)");
    EXPECT_EQ(ZRStringWithFormat("%s %@", static_cast<const char*>(nullptr), static_cast<const char*>(nullptr)),
        "(null) (null)");
    EXPECT_EQ(ZRStringWithFormat("%3$d", 1, 2), "(null)");
    EXPECT_EQ(ZRStringWithFormat("%@ %@", 42, uint64_t(7)), "42 7");
}

TEST(ZRStringWithFormat, describesPropertyLists)
{
    EXPECT_EQ(ZRStringWithFormat("%@ %@ %@ %@", ZRPropertyList("name"), ZRPropertyList(-12), ZRPropertyList(true),
                  ZRPropertyList(0.1)),
        "name -12 1 0.1");
    EXPECT_EQ(ZRStringWithFormat("%@", ZRPropertyList(ZRData { 1, 2, 3, 4, 0xAB })), "<01020304 ab>");
    EXPECT_EQ(ZRStringWithFormat("%@", ZRPropertyList(ZRArray { 1, "a b" })), "(\n    1,\n    \"a b\"\n)");
    EXPECT_EQ(ZRStringWithFormat("%@", ZRPropertyList(ZRDictionary { { "key", ZRPropertyList(ZRArray {}) } })),
        "{\n    key = (\n    );\n}");
}
