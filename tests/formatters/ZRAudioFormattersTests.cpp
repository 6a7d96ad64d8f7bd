#include <zrbase/formatters/ZRBooleanFormatter.h>
#include <zrbase/formatters/ZRChannelsFormatter.h>
#include <zrbase/formatters/ZRCombineTypeFormatter.h>
#include <zrbase/formatters/ZRCreatorFormatter.h>
#include <zrbase/formatters/ZRDataFormatter.h>
#include <zrbase/formatters/ZRDecibelFormatter.h>
#include <zrbase/formatters/ZRDepthFormatter.h>
#include <zrbase/formatters/ZRDifferenceFormatter.h>
#include <zrbase/formatters/ZRFileSizeFormatter.h>
#include <zrbase/formatters/ZRFrequencyFormatter.h>
#include <zrbase/formatters/ZRNumberFormatter.h>
#include <zrbase/formatters/ZRSampleRateFormatter.h>
#include <zrbase/formatters/ZRTimeRemainingFormatter.h>

#include <zrbase/core/ZRFormatterExtension.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using ZRExtension::objectValueForString;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

struct Shown {
    ZRPropertyList value;
    const char* text;
};

void expectShows(const ZRFormatter& formatter, std::initializer_list<Shown> cases)
{
    for (const Shown& shown : cases)
        EXPECT_EQ(formatter.stringForObjectValue(shown.value), shown.text) << shown.value.stringValue();
}

}

TEST(ZRAudioFormatters, timeRemainingInWords)
{
    ZRTimeRemainingFormatter formatter;
    EXPECT_EQ(formatter.time(), std::numeric_limits<float>::max());
    expectShows(formatter,
        { { 0, "calculating..." }, { std::numeric_limits<float>::max(), "calculating..." },
            { 0.5, "less than a second" }, { 1, "about a second" }, { 3, "about 5 seconds" },
            { 6.99, "about 5 seconds" }, { 7, "about 10 seconds" }, { 15, "about 20 seconds" },
            { 44.9, "about 30 seconds" }, { 45, "about a minute" }, { 89.9, "about a minute" },
            { 90, "about 2 minutes" }, { 149, "about 2 minutes" }, { 150, "about 3 minutes" },
            { -5, "about 0 minutes" }, { notANumber, "about 0 minutes" }, { infinity, "about 2147483647 minutes" } });
    formatter.stringForObjectValue(42);
    EXPECT_EQ(formatter.time(), 42);
    formatter.reset();
    EXPECT_EQ(formatter.time(), std::numeric_limits<float>::max());
    EXPECT_EQ(objectValueForString(formatter, "about a minute"), std::nullopt);
}

TEST(ZRAudioFormatters, decibels)
{
    ZRDecibelFormatter formatter;
    expectShows(formatter,
        { { 1.0, "0.0 dB" }, { 0.5, "-6.0 dB" }, { 2.0, "6.0 dB" }, { 0, "-\u221E dB" }, { -0.1, "--" },
            { notANumber, "--" }, { infinity, "inf dB" } });
    formatter.setShowUnits(false);
    EXPECT_FALSE(formatter.showUnits());
    expectShows(formatter, { { 1.0, "0.0" }, { 0, "-\u221E" } });
    EXPECT_NEAR(objectValueForString(formatter, "-6.0 dB")->floatValue(), 0.501187f, 1e-6);
    EXPECT_EQ(objectValueForString(formatter, "0"), 1.0f);
    EXPECT_EQ(objectValueForString(formatter, "loud"), 1.0f);
}

TEST(ZRAudioFormatters, frequenciesAndSampleRates)
{
    const ZRFrequencyFormatter frequency;
    expectShows(frequency,
        { { 9999.9f, "9999.9 Hz" }, { 10000, "10.000 kHz" }, { 440, "440.0 Hz" }, { -50, "-50.0 Hz" },
            { notANumber, "nan kHz" } });
    EXPECT_EQ(objectValueForString(frequency, "2.5 kHz"), 2500.0f);
    EXPECT_EQ(objectValueForString(frequency, "440 Hz"), 440.0f);
    EXPECT_EQ(objectValueForString(frequency, "high"), 0.0f);

    const ZRSampleRateFormatter sampleRate;
    expectShows(sampleRate, { { 0, "--" }, { 44100, "44.100 kHz" }, { 192000.0, "192.000 kHz" } });
    EXPECT_EQ(objectValueForString(sampleRate, "44.100 kHz"), std::nullopt);
}

TEST(ZRAudioFormatters, depthsInEachFormat)
{
    ZRDepthFormatter formatter;
    EXPECT_EQ(formatter.depthFormat(), 10u);
    EXPECT_TRUE(formatter.showUnits());
    struct Depth {
        uint32_t format;
        bool units;
        float level;
        const char* text;
    };
    const Depth cases[] = {
        { 10, true, 0.5f, "-6.0 dB" },
        { 10, true, -0.5f, "-6.0 dB" },
        { 10, false, 1.0f, "0.0" },
        { 10, true, 0, "\u2212\u221E dB" },
        { 10, false, 0, "\u2212\u221E" },
        { 11, true, 0.506f, "51%" },
        { 11, false, -0.25f, "25" },
        { 12, true, -0.254f, "0.25" },
        { 13, true, -1.0f, "-127" },
        { 13, true, 0.5f, "64" },
        { 13, true, infinity, "2147483647" },
        { 14, true, -1.0f, "8001" },
        { 14, true, 1.0f, "7FFF" },
        { 14, true, 0.0f, "0000" },
        { 15, true, -0.5f, "000000" },
        { 15, true, 1.0f, "7FFFFF" },
        { 15, true, 0.25f, "200000" },
        { 16, true, 0.5f, "" },
        { 9, true, 0.5f, "" },
        { 14, true, notANumber, "--" },
        { 99, true, notANumber, "--" },
    };
    for (const Depth& depth : cases) {
        formatter.setDepthFormat(depth.format);
        formatter.setShowUnits(depth.units);
        EXPECT_EQ(formatter.stringForObjectValue(depth.level), depth.text) << depth.format << " " << depth.level;
    }
    const std::pair<uint32_t, const char*> units[] = { { 10, " dB" }, { 11, "%" }, { 12, "" }, { 0, "" } };
    for (const auto& [format, unit] : units) {
        formatter.setDepthFormat(format);
        EXPECT_EQ(formatter.units(), unit);
    }
    EXPECT_EQ(objectValueForString(formatter, "-6.0 dB"), std::nullopt);
}

TEST(ZRAudioFormatters, channelCounts)
{
    const ZRChannelsFormatter formatter;
    expectShows(formatter,
        { { 0, "--" }, { 1, "Mono" }, { 2, "Stereo" }, { 3, "3-ch" }, { -3, "3-ch" }, { 4, "LCRS" }, { 5, "5.0" },
            { 6, "5.1" }, { 7, "6.1" }, { 8, "7.1" }, { 9, "9-ch" }, { 12, "10.2" }, { 13, "13-ch" },
            { std::numeric_limits<int32_t>::min(), "-2147483648-ch" } });
    EXPECT_EQ(objectValueForString(formatter, "Stereo"), std::nullopt);
}

TEST(ZRAudioFormatters, fileSizes)
{
    const ZRFileSizeFormatter formatter;
    expectShows(formatter,
        { { 1023, "1023 B" }, { 1024, "1 KB" }, { 1048575, "1024 KB" }, { 1048576, "1.0 MB" },
            { 1099511627776.0, "1024.00 GB" }, { 0, "0 B" }, { -4096, "-4096 B" }, { 5e18, "4656612873.08 GB" } });
    EXPECT_EQ(objectValueForString(formatter, "1 KB"), std::nullopt);
}

TEST(ZRAudioFormatters, differences)
{
    const ZRDifferenceFormatter formatter;
    expectShows(
        formatter, { { 0, "0.0% (mono)" }, { -1, "--" }, { -2, "n/a" }, { 12.5, "12.500%" }, { -3, "-3.000%" } });
    EXPECT_EQ(objectValueForString(formatter, "--"), std::nullopt);
}

TEST(ZRAudioFormatters, dataShowsItsFirstFourBytes)
{
    const ZRDataFormatter formatter;
    const uint32_t head = 0xCAFE0001;
    ZRData data(reinterpret_cast<const uint8_t*>(&head), reinterpret_cast<const uint8_t*>(&head) + 4);
    data.push_back(0x55);
    expectShows(formatter, { { data, "cafe0001..." }, { ZRData { 0x7F }, "7f..." }, { ZRData {}, "0..." }, { 5, "" } });
    EXPECT_EQ(objectValueForString(formatter, "cafe0001..."), std::nullopt);
}

TEST(ZRAudioFormatters, booleans)
{
    const ZRBooleanFormatter formatter;
    expectShows(formatter, { { true, "Yes" }, { false, "No" }, { 2, "Yes" }, { "no", "No" } });
    EXPECT_EQ(objectValueForString(formatter, "YES"), true);
    EXPECT_EQ(objectValueForString(formatter, "y"), true);
    EXPECT_EQ(objectValueForString(formatter, "No"), false);
    EXPECT_EQ(objectValueForString(formatter, "\u00FFes"), false);
    EXPECT_EQ(objectValueForString(formatter, ""), std::nullopt);
}

TEST(ZRAudioFormatters, combineTypes)
{
    const ZRCombineTypeFormatter formatter;
    expectShows(formatter,
        { { 0, "Add" }, { 1, "Subtract" }, { 2, "Duck" }, { 3, "Ring" }, { 4, "unknown" }, { -1, "unknown" } });
    const std::pair<const char*, int> read[]
        = { { "Add", 0 }, { "Subtract", 1 }, { "Duck", 2 }, { "Ring", 3 }, { "ring", 0 }, { "", 0 } };
    for (const auto& [text, type] : read)
        EXPECT_EQ(objectValueForString(formatter, text), type) << text;
}

TEST(ZRAudioFormatters, creatorsByCodeAndName)
{
    const ZRCreatorFormatter formatter;
    const std::pair<const char*, const char*> known[]
        = { { "VlmS", "Velmora Studio" }, { "VlmL", "Velmora Loop Editor" }, { "VlmB", "Velmora Batch Converter" },
              { "EMAG", "Logic Pro" }, { "MOUP", "Digital Performer" }, { "Sd2f", "Sound Designer II" },
              { "auFM", "Peak" }, { "StD+", "DSP-Quattro" }, { "AMII", "Amadeus" }, { "rKMI", "Keymap" },
              { "Fiss", "Fission" }, { "TVOD", "Quicktime" }, { "stlu", "Garage Band" } };
    const auto code = [](const char* letters) {
        return uint32_t(uint8_t(letters[0])) << 24 | uint32_t(uint8_t(letters[1])) << 16
            | uint32_t(uint8_t(letters[2])) << 8 | uint32_t(uint8_t(letters[3]));
    };
    for (const auto& [letters, name] : known) {
        EXPECT_EQ(formatter.stringForObjectValue(code(letters)), name);
        EXPECT_EQ(objectValueForString(formatter, name), code(letters)) << name;
    }
    expectShows(formatter,
        { { code("Sd2F"), "Sound Designer II" }, { 0, "<none>" }, { code("WAVE"), "WAVE" },
            { code("ab\xA5z"), "ab\u2022z" } });
    EXPECT_EQ(objectValueForString(formatter, "Quicktime Player"), code("TVOD"));
    EXPECT_EQ(objectValueForString(formatter, "peak"), std::nullopt);
    EXPECT_EQ(objectValueForString(formatter, "WAVE"), std::nullopt);
}

TEST(ZRAudioFormatters, numberEntry)
{
    const ZRNumberFormatter formatter;
    for (const char* text : { "", "1", "-", "+1.5", "-0.25", ".", "12." })
        EXPECT_TRUE(formatter.isPartialStringValid(text)) << text;
    for (const char* text : { "1-", "1+2", "1.2.3", "1e3", " 1", "--1", "1,5" })
        EXPECT_FALSE(formatter.isPartialStringValid(text)) << text;
    expectShows(formatter, { { 1.5, "1.5" }, { 42, "42" }, { "text", "" } });
    EXPECT_EQ(objectValueForString(formatter, " -2.5 "), -2.5);
    EXPECT_EQ(objectValueForString(formatter, "+7"), 7);
    for (const char* text : { "", "-", ".", "1e3", "inf", "nan", "1.2.3", "2 3", "--2", "0x10" })
        EXPECT_EQ(objectValueForString(formatter, text), std::nullopt) << text;
}
