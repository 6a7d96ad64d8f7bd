#include <zrbase/host/foundation/ZRPropertyList.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>

namespace {

using namespace std::chrono;

// The host's reference date, 2001-01-01 00:00:00 UTC.
const ZRDate referenceDate { seconds(978307200) };

ZRData bytesOf(std::string_view text) { return ZRData(text.begin(), text.end()); }

}

TEST(ZRPropertyList, readersCoerceAsTheHostsNumbersAndStringsDo)
{
    for (const char* yes : { "YES", "true", "1", "  +0007", "t", "y9", "-5" })
        EXPECT_TRUE(ZRPropertyList(yes).boolValue()) << yes;
    for (const char* no : { "NO", "false", "0", "-0", "", "0.5", "  ", "x1" })
        EXPECT_FALSE(ZRPropertyList(no).boolValue()) << no;
    EXPECT_TRUE(ZRPropertyList(0.25).boolValue());
    EXPECT_FALSE(ZRPropertyList(ZRArray { 1 }).boolValue());

    EXPECT_EQ(ZRPropertyList(-3.9).intValue(), -3);
    EXPECT_EQ(ZRPropertyList(" 42abc").intValue(), 42);
    EXPECT_EQ(ZRPropertyList("\t-17.9").longLongValue(), -17);
    EXPECT_EQ(ZRPropertyList(true).intValue(), 1);
    // Reals and strings saturate, integers wrap as C converts them.
    EXPECT_EQ(ZRPropertyList(1e20).intValue(), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(ZRPropertyList(-1e20).intValue(), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(ZRPropertyList(std::nan("")).intValue(), 0);
    EXPECT_EQ(ZRPropertyList(-1.0).unsignedIntValue(), 0u);
    EXPECT_EQ(ZRPropertyList(1e300).longLongValue(), std::numeric_limits<int64_t>::max());
    EXPECT_EQ(ZRPropertyList(1e300).unsignedLongLongValue(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(ZRPropertyList("99999999999").intValue(), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(ZRPropertyList("-99999999999999999999999").longLongValue(), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(ZRPropertyList("-3").unsignedIntValue(), 0u);
    EXPECT_EQ(ZRPropertyList((1ll << 32) + 5).intValue(), 5);
    EXPECT_EQ(ZRPropertyList(-1).unsignedIntValue(), 0xFFFFFFFFu);

    EXPECT_EQ(ZRPropertyList(" 2.5e3x").doubleValue(), 2500);
    EXPECT_EQ(ZRPropertyList("-.5").doubleValue(), -0.5);
    EXPECT_EQ(ZRPropertyList("0x10").doubleValue(), 0);
    EXPECT_EQ(ZRPropertyList("inf").doubleValue(), 0);
    EXPECT_EQ(ZRPropertyList("1e999").doubleValue(), HUGE_VAL);
    EXPECT_EQ(ZRPropertyList(std::numeric_limits<uint64_t>::max()).doubleValue(), 0x1p64);
    EXPECT_EQ(ZRPropertyList(1e300).floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(ZRPropertyList(ZRData { 1 }).doubleValue(), 0);

    EXPECT_EQ(ZRPropertyList(0.1).stringValue(), "0.1");
    EXPECT_EQ(ZRPropertyList(3.0).stringValue(), "3");
    EXPECT_EQ(ZRPropertyList(true).stringValue(), "1");
    EXPECT_EQ(ZRPropertyList(std::numeric_limits<uint64_t>::max()).stringValue(), "18446744073709551615");
    EXPECT_EQ(ZRPropertyList(referenceDate).stringValue(), "");
}

TEST(ZRPropertyList, numbersAreEqualByValueAndOtherKindsByContent)
{
    EXPECT_EQ(ZRPropertyList(1), ZRPropertyList(1.0));
    EXPECT_EQ(ZRPropertyList(1), ZRPropertyList(true));
    EXPECT_EQ(ZRPropertyList(5u), ZRPropertyList(5ll));
    EXPECT_FALSE(ZRPropertyList(5u).isUnsigned());
    EXPECT_TRUE(ZRPropertyList(std::numeric_limits<uint64_t>::max()).isUnsigned());
    EXPECT_NE(ZRPropertyList(std::numeric_limits<uint64_t>::max()), ZRPropertyList(-1));
    EXPECT_EQ(ZRPropertyList(1ull << 63), ZRPropertyList(0x1p63));
    EXPECT_NE(ZRPropertyList(1ll << 62), ZRPropertyList(0x1p62 + 1024));
    EXPECT_NE(ZRPropertyList(1), ZRPropertyList(1.5));
    EXPECT_NE(ZRPropertyList(1), ZRPropertyList("1"));
    EXPECT_NE(ZRPropertyList(), ZRPropertyList(0));
    EXPECT_EQ(ZRPropertyList(ZRArray { 1, "a" }), ZRPropertyList(ZRArray { 1.0, "a" }));
    EXPECT_NE(ZRPropertyList(ZRArray { 1, "a" }), ZRPropertyList(ZRArray { 1, "b" }));

    const ZRDictionary dictionary { { "gain", -6.0 }, { "name", "Take" } };
    ASSERT_NE(ZRDictionaryObject(dictionary, "gain"), nullptr);
    EXPECT_EQ(ZRDictionaryObject(dictionary, "gain")->doubleValue(), -6.0);
    EXPECT_EQ(ZRDictionaryObject(dictionary, "Gain"), nullptr);
}

TEST(ZRPropertyList, everyKindRoundTripsThroughXMLAndBinary)
{
    const ZRDictionary values { { "negative", -5 }, { "minimum", std::numeric_limits<long long>::min() },
        { "maximum", std::numeric_limits<unsigned long long>::max() }, { "top bit", 1ull << 63 }, { "real", -0.1 },
        { "flag", true }, { "text", "Take 3 \xE2\x80\x93 caf\xC3\xA9 \xF0\x9D\x84\x9E <&>" }, { "empty", "" },
        { "bytes", ZRData { 0, 1, 2, 255 } }, { "date", referenceDate + seconds(259200000) },
        { "list", ZRArray { 1, "two", ZRArray {}, ZRDictionary {} } },
        { "nested", ZRDictionary { { "a", ZRArray { ZRDictionary { { "b", 2.5 } } } } } } };
    for (const auto format : { ZRPropertyList::Format::XML, ZRPropertyList::Format::Binary }) {
        const auto bytes = ZRPropertyList(values).dataWithFormat(format);
        ASSERT_TRUE(bytes);
        const auto read = ZRPropertyList::propertyListWithData(*bytes);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, ZRPropertyList(values));
        const ZRDictionary& dictionary = *read->dictionary();
        EXPECT_EQ(dictionary.at("negative").type(), ZRPropertyList::Type::Integer);
        EXPECT_TRUE(dictionary.at("maximum").isUnsigned());
        EXPECT_EQ(dictionary.at("flag").type(), ZRPropertyList::Type::Boolean);
        EXPECT_EQ(dictionary.at("real").type(), ZRPropertyList::Type::Real);
    }

    // Binary dates keep milliseconds, before the reference date too; XML dates hold whole seconds.
    const ZRArray dates { referenceDate + milliseconds(600000000123), referenceDate - milliseconds(100250) };
    const auto binary = ZRPropertyList(dates).dataWithFormat(ZRPropertyList::Format::Binary);
    EXPECT_EQ(ZRPropertyList::propertyListWithData(*binary), ZRPropertyList(dates));
    // libplist keeps 32-bit seconds: later dates are clamped to its last one, not wrapped.
    const auto late = ZRPropertyList(ZRArray { referenceDate + hours(24 * 365 * 100) })
                          .dataWithFormat(ZRPropertyList::Format::Binary);
    EXPECT_EQ(*ZRPropertyList::propertyListWithData(*late)->array()->at(0).date(), referenceDate + seconds(0x7FFFFFFF));

    const std::string path = ZRTestScratchFolder("ZRPropertyList.roundTrip") + "/values.plist";
    ASSERT_TRUE(ZRPropertyList(values).writeToFile(path, ZRPropertyList::Format::Binary));
    ASSERT_TRUE(ZRPropertyList(ZRArray { 7 }).writeToFile(path));
    EXPECT_EQ(ZRPropertyList::propertyListWithContentsOfFile(path), ZRPropertyList(ZRArray { 7 }));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()), {}), 1);
}

TEST(ZRPropertyList, readsFilesWrittenByOtherTools)
{
    const auto xml = ZRPropertyList::propertyListWithData(bytesOf(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>gain</key>
	<real>-6.5</real>
	<key>offset</key>
	<integer>-44100</integer>
	<key>saved</key>
	<date>2009-03-14T09:26:53Z</date>
	<key>loop</key>
	<true/>
	<key>cookie</key>
	<data>AAEC/w==</data>
</dict>
</plist>
)"));
    const ZRDictionary expected { { "gain", -6.5 }, { "offset", -44100 }, { "saved", ZRDate(seconds(1237022813)) },
        { "loop", true }, { "cookie", ZRData { 0, 1, 2, 255 } } };
    EXPECT_EQ(xml, ZRPropertyList(expected));

    // A binary list laid out by hand from the format: [date 1.5 s after the reference date, -2, "n"].
    const ZRData binary { 'b', 'p', 'l', 'i', 's', 't', '0', '0', 0xA3, 1, 2, 3, 0x33, 0x3F, 0xF8, 0, 0, 0, 0, 0, 0,
        0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x51, 'n', 0x08, 0x0C, 0x15, 0x1E, 0, 0, 0, 0, 0, 0, 1, 1,
        0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x20 };
    EXPECT_EQ(ZRPropertyList::propertyListWithData(binary),
        ZRPropertyList(ZRArray { referenceDate + milliseconds(1500), -2, "n" }));

    // The formats do not depend on the locale: a German one must not read "2.5" as 2. (The tests' own locale
    // folder is named here too, so that the test also runs outside ctest.)
    setenv("LOCPATH", ZR_TEST_BINARY_DIR "/locales", 0);
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    EXPECT_EQ(ZRPropertyList::propertyListWithData(bytesOf("<plist><real>2.5</real></plist>")), ZRPropertyList(2.5));
    EXPECT_EQ(ZRPropertyList("2.5").doubleValue(), 2.5);
    std::setlocale(LC_ALL, "C");
}

TEST(ZRPropertyList, malformedInputAndUnwritableValuesFailWithAReason)
{
    for (const std::string_view bad : { "", "not a property list", "<plist><dict><key>a</key></plist>",
             "bplist00\x33\x3f", "<plist><integer>1</real></plist>" }) {
        std::string failure;
        EXPECT_FALSE(ZRPropertyList::propertyListWithData(bytesOf(bad), &failure)) << bad;
        EXPECT_FALSE(failure.empty());
    }
    // A binary dictionary {"a\0": YES} with a UTF-16 key, which libplist cannot hand out.
    const ZRData zeroKey { 'b', 'p', 'l', 'i', 's', 't', '0', '0', 0xD1, 1, 2, 0x62, 0, 'a', 0, 0, 0x09, 0x08, 0x0B,
        0x10, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x11 };
    std::string failure;
    EXPECT_FALSE(ZRPropertyList::propertyListWithData(zeroKey, &failure));
    EXPECT_NE(failure.find("zero character"), std::string::npos) << failure;
    std::string deep;
    for (int level = 0; level < 600; ++level)
        deep += "<array>";
    for (int level = 0; level < 600; ++level)
        deep += "</array>";
    EXPECT_FALSE(ZRPropertyList::propertyListWithData(bytesOf("<plist>" + deep + "</plist>"), &failure));
    EXPECT_NE(failure.find("deeper"), std::string::npos) << failure;

    EXPECT_FALSE(ZRPropertyList().dataWithFormat(ZRPropertyList::Format::XML));
    EXPECT_FALSE(ZRPropertyList(ZRArray { 1, ZRPropertyList() }).dataWithFormat(ZRPropertyList::Format::Binary));
    EXPECT_FALSE(ZRPropertyList(std::string("a\0b", 3)).dataWithFormat(ZRPropertyList::Format::Binary, &failure));
    EXPECT_NE(failure.find("zero character"), std::string::npos) << failure;
    EXPECT_FALSE(ZRPropertyList(
        ZRDictionary { { "\xC3"
                         "ake",
            1 } }).dataWithFormat(ZRPropertyList::Format::XML, &failure));
    EXPECT_NE(failure.find("UTF-8"), std::string::npos) << failure;
    // Bytes that are not UTF-8 in a file read as U+FFFD, so that what was read can be written again.
    EXPECT_EQ(ZRPropertyList::propertyListWithData(bytesOf("<plist><string>\xC3"
                                                           "ake</string></plist>")),
        ZRPropertyList("\xEF\xBF\xBD"
                       "ake"));

    const std::string folder = ZRTestScratchFolder("ZRPropertyList.malformed");
    EXPECT_FALSE(ZRPropertyList::propertyListWithContentsOfFile(folder + "/missing.plist", &failure));
    EXPECT_NE(failure.find(folder + "/missing.plist"), std::string::npos) << failure;
    EXPECT_FALSE(
        ZRPropertyList(1).writeToFile(folder + "/no/such/folder.plist", ZRPropertyList::Format::XML, &failure));
    EXPECT_FALSE(failure.empty());
}
