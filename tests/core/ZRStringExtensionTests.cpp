#include <zrbase/core/ZRStringExtension.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace ZRExtension;

namespace {

ZRData bytes(std::string_view text) { return ZRData(text.begin(), text.end()); }

template <typename Edit> std::string edited(std::string path, Edit&& edit)
{
    edit(path);
    return path;
}

}

TEST(ZRStringExtension, incrementsTheNumberOfASeriesWithItsQuirks)
{
    EXPECT_EQ(stringByIncrementingString("Take 3"), "Take 4");
    EXPECT_EQ(stringByIncrementingString("Loop 9"), "Loop 10");
    EXPECT_EQ(stringByIncrementingString("My Loop 12b"), "My Loop 13");
    EXPECT_EQ(stringByIncrementingString("Take  3"), "Take  4");
    EXPECT_EQ(stringByIncrementingString("Take 9223372036854775807"), "Take 9223372036854775808");
    EXPECT_EQ(stringByIncrementingString("Loop"), "Loop 2");
    EXPECT_EQ(stringByIncrementingString("Loop -1"), "Loop -1 2");
    EXPECT_EQ(stringByIncrementingString("Take 0"), "Take 0 2");
    EXPECT_EQ(stringByIncrementingString("Take "), "Take  2");
    EXPECT_EQ(stringByIncrementingString(""), " 2");
}

TEST(ZRStringExtension, takesPathsApartAsTheFileOperationsNeed)
{
    EXPECT_EQ(lastPathComponent("/A/take.1.aif"), "take.1.aif");
    EXPECT_EQ(lastPathComponent("/A/B/"), "B");
    EXPECT_EQ(lastPathComponent("take"), "take");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
    EXPECT_EQ(pathExtension("/A/take.1.aif"), "aif");
    EXPECT_EQ(pathExtension("/A.x/take"), "");
    EXPECT_EQ(pathExtension("/A/.profile"), "");
    EXPECT_EQ(filename("/A/take.1.aif"), "take.1");
    EXPECT_EQ(filename("/A/.profile"), ".profile");
    EXPECT_EQ(filename("take"), "take");
}

TEST(ZRStringExtension, editsPathsInPlaceWithTheLibrarysOwnRules)
{
    EXPECT_EQ(edited("/a", [](auto& p) { appendPathComponent(p, "b"); }), "/a/b");
    EXPECT_EQ(edited("/a/", [](auto& p) { appendPathComponent(p, "b"); }), "/a/b");
    EXPECT_EQ(edited("", [](auto& p) { appendPathComponent(p, "b"); }), "b");
    EXPECT_EQ(edited("b", [](auto& p) { prependPath(p, "/a"); }), "/a/b");
    EXPECT_EQ(edited("b", [](auto& p) { prependPath(p, "/a/"); }), "/a/b");
    EXPECT_EQ(edited("/b", [](auto& p) { prependPath(p, "/a"); }), "/a/b");
    EXPECT_EQ(edited("/a/b", deleteLastPathComponent), "/a");
    EXPECT_EQ(edited("/a", deleteLastPathComponent), "");
    EXPECT_EQ(edited("a", deleteLastPathComponent), "a");
    EXPECT_EQ(edited("/a/b.aif", [](auto& p) { replaceLastPathComponent(p, "c"); }), "/a/c");
    EXPECT_EQ(edited("/a", [](auto& p) { replaceLastPathComponent(p, "c"); }), "c");
    // The extension goes from the first full stop of the last component on.
    EXPECT_EQ(edited("/x.y/take.1.aif", deletePathExtension), "/x.y/take");
    EXPECT_EQ(edited("/x.y/take", deletePathExtension), "/x.y/take");
    EXPECT_EQ(edited("/a/.profile", deletePathExtension), "/a/");
    EXPECT_EQ(edited("/a/take/", [](auto& p) { appendPathExtension(p, "aif"); }), "/a/take.aif");
    EXPECT_EQ(edited("/a/take.1.aif", [](auto& p) { setPathExtension(p, "wav"); }), "/a/take.wav");
    EXPECT_EQ(edited("/a/take.1.aif", [](auto& p) { setPathExtension(p, "aif"); }), "/a/take.1.aif");
    EXPECT_EQ(edited("/a/take", [](auto& p) { setPathExtension(p, "aif"); }), "/a/take.aif");
    EXPECT_EQ(edited("/old", [](auto& p) { setPath(p, "~/Music"); }), std::string(std::getenv("HOME")) + "/Music");
    EXPECT_EQ(edited("/old", [](auto& p) { setPath(p, "/tmp/~x"); }), "/tmp/~x");
}

TEST(ZRStringExtension, truncatesByUTF16UnitsAndAddsAnEllipsis)
{
    EXPECT_EQ(edited("abcdefgh", [](auto& t) { truncateToLength(t, 5, true); }), "abcde...");
    EXPECT_EQ(edited("abcdefgh", [](auto& t) { truncateToLength(t, 5, false); }), "abcde");
    EXPECT_EQ(edited("abcde", [](auto& t) { truncateToLength(t, 5, true); }), "abcde");
    EXPECT_EQ(edited("\xC3\xA9\xC3\xA9\xC3\xA9", [](auto& t) { truncateToLength(t, 2, false); }), "\xC3\xA9\xC3\xA9");
    // A character of two units fits only whole.
    const std::string emoji = "ab\xF0\x9F\x8E\xB5";
    EXPECT_EQ(edited(emoji, [](auto& t) { truncateToLength(t, 4, true); }), emoji);
    EXPECT_EQ(edited(emoji, [](auto& t) { truncateToLength(t, 3, true); }), "ab...");
    EXPECT_EQ(range(emoji), ZRMakeIndexRange(0, 4));
}

TEST(ZRStringExtension, makesLossyASCIIAndPascalStrings)
{
    EXPECT_EQ(stringAsLossyASCIIString("Caf\xC3\xA9 \xE2\x84\xA2!"), "Caf? ?!");
    EXPECT_EQ(lossyASCIICString("Caf\xC3\xA9"), (ZRData { 'C', 'a', 'f', '?', 0 }));
    EXPECT_EQ(lossyASCIIPascalString("ab"), (ZRData { 2, 'a', 'b' }));
    const std::optional<ZRData> longest = lossyASCIIPascalString(std::string(255, 'x'));
    ASSERT_TRUE(longest);
    EXPECT_EQ(longest->size(), 256u);
    EXPECT_EQ(longest->front(), 0xFF);
    EXPECT_EQ(lossyASCIIPascalString(std::string(256, 'x')), std::nullopt);
}

TEST(ZRStringExtension, readsFourCharacterCodesAndBytesInTheirEncodings)
{
    EXPECT_EQ(stringWithOSType(0x57415645), "WAVE");
    EXPECT_EQ(stringWithOSType(0x8EA9DBF0), "\xC3\xA9\xC2\xA9\xE2\x82\xAC\xEF\xA3\xBF"); // é © € and the Apple logo
    EXPECT_EQ(stringWithOSType(0xC6CA20FF), "\xE2\x88\x86\xC2\xA0 \xCB\x87"); // increment, no-break space, caron
    // Every byte of Mac OS Roman is a character of its own and converts back to itself.
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string text = stringWithOSType(byte);
        EXPECT_EQ(lossyDataUsingEncoding(text, ZRStringEncoding::MacOSRoman), (ZRData { 0, 0, 0, uint8_t(byte) }));
        EXPECT_EQ(
            stringWithData(lossyDataUsingEncoding(text, ZRStringEncoding::MacOSRoman), ZRStringEncoding::MacOSRoman),
            text);
    }

    EXPECT_EQ(asciiStringWithData(bytes("A\x80")), "A\xEF\xBF\xBD");
    EXPECT_EQ(stringWithData(bytes("Take"), ZRStringEncoding::ASCII), "Take");
    EXPECT_EQ(stringWithData(bytes("Caf\xC3\xA9"), ZRStringEncoding::ASCII), std::nullopt);
    EXPECT_EQ(stringWithData(bytes("Caf\xC3\xA9"), ZRStringEncoding::UTF8), "Caf\xC3\xA9");
    EXPECT_EQ(stringWithData(bytes("Caf\xC3"), ZRStringEncoding::UTF8), std::nullopt);
    EXPECT_EQ(stringWithData(bytes("Caf\x8E"), ZRStringEncoding::MacOSRoman), "Caf\xC3\xA9");
}

TEST(ZRStringExtension, logsTheCodeOfEveryCharacter)
{
    testing::internal::CaptureStderr();
    logCharacters("A\xE2\x82\xAC\xF0\x9F\x98\x80");
    const std::string log = testing::internal::GetCapturedStderr();
    for (const char* line : { "] 0: 0x0041\n", "] 1: 0x20AC\n", "] 2: 0xD83D\n", "] 3: 0xDE00\n" })
        EXPECT_NE(log.find(line), std::string::npos) << line;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4);
}
