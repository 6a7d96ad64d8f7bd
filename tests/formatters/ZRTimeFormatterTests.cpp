#include <zrbase/formatters/ZRTimeFormatter.h>

#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>

namespace {

ZRTimeFormatter formatter(
    int32_t format, double sampleRate = 44100, float tempo = 120, int32_t beatsPerBar = 4, bool position = false)
{
    ZRTimeFormatter result;
    result.setTimeFormat(format);
    result.setSampleRate(sampleRate);
    result.setTempo(tempo);
    result.setMeterNumerator(beatsPerBar);
    result.setPosition(position);
    return result;
}

std::optional<double> parsed(const ZRTimeFormatter& formatter, std::string_view text, std::string* message = nullptr)
{
    ZRPropertyList value;
    if (!formatter.getObjectValue(value, text, message))
        return std::nullopt;
    return value.doubleValue();
}

struct Shown {
    int32_t format;
    double seconds;
    const char* text;
};

}

TEST(ZRTimeFormatter, showsEveryFormat)
{
    const Shown cases[] = {
        { ZRTimeFormatSamples, 1.5, "66150" },
        { ZRTimeFormatSamples, -1.5, "-66150" },
        { ZRTimeFormatMilliseconds, -1.5, "-1500ms" },
        { ZRTimeFormatMilliseconds, 0.0019, "1ms" },
        { ZRTimeFormatSeconds, 1.239, "1.23" },
        { ZRTimeFormatMinutesSecondsHundredths, -1.5, "-0:01.50" },
        { ZRTimeFormatMinutesSecondsHundredths, 3661.5, "61:01.50" },
        { ZRTimeFormatSMPTE30, 1.0, "0:00:01:00" },
        { ZRTimeFormatSMPTE2997, 1.0, "0:00:00:29" },
        { ZRTimeFormatSMPTE2997, 2.0, "0:00:01:29" },
        { ZRTimeFormatSMPTE2997, 60.0, "0:01:00:00" },
        { ZRTimeFormatSMPTE2997, 3600.0, "1:00:00:00" },
        { ZRTimeFormatSMPTE25, 3725.52, "1:02:05:13" },
        { ZRTimeFormatSMPTE24, -0.5, "-0:00:00:12" },
        { ZRTimeFormatHoursMinutesSecondsHundredths, 3661.5, "1:01:01.50" },
        { ZRTimeFormatTenthMilliseconds, 1.23456, "1234.5ms" },
        { ZRTimeFormatSecondsMilliseconds, 1.2349, "1.234" },
        { ZRTimeFormatSecondsMilliseconds, -0.25, "-0.250" },
        { ZRTimeFormatMinutesSeconds, 3661.5, "61:01" },
        { ZRTimeFormatMinutesSecondsMilliseconds, 61.0015, "1:01.001" },
        { ZRTimeFormatHoursMinutesSeconds, 3661.5, "1:01:01" },
        { ZRTimeFormatHoursMinutesSeconds, 90000, "25:00:00" },
        { ZRTimeFormatHoursMinutesSecondsMilliseconds, 3661.5, "1:01:01.500" },
        { ZRTimeFormatMinutesSecondsFrames75, 2.99, "00:02.74" },
        { ZRTimeFormatMinutesSecondsFrames75, 6000, "100:00.00" },
        { ZRTimeFormatSampleBlocks28, 1.0, "1575;0" },
        { ZRTimeFormatSampleBlocks28, -0.001, "-1;16" },
        { ZRTimeFormatHoursMinutesSecondsFrames75, 3661.5, "01:01:01.37" },
        // Zero has no sign, in every form.
        { ZRTimeFormatMilliseconds, 0, "0ms" },
        { ZRTimeFormatMinutesSecondsHundredths, -0.0, "0:00.00" },
        { ZRTimeFormatSMPTE30, 0, "0:00:00:00" },
        { ZRTimeFormatHoursMinutesSecondsFrames75, 0, "00:00:00.00" },
        // Formats outside 0 ... 19 show nothing.
        { 20, 1, "" },
        { -1, 1, "" },
    };
    for (const Shown& shown : cases)
        EXPECT_EQ(formatter(shown.format).stringForObjectValue(shown.seconds), shown.text)
            << shown.format << " " << shown.seconds;
    EXPECT_EQ(formatter(ZRTimeFormatSamples, 0).stringForObjectValue(1.5), "--");
}

TEST(ZRTimeFormatter, showsBarsAndBeatsAsDurationOrPosition)
{
    const ZRTimeFormatter duration = formatter(ZRTimeFormatBarsBeats480);
    const ZRTimeFormatter position = formatter(ZRTimeFormatBarsBeats480, 0, 120, 4, true);
    EXPECT_EQ(duration.stringForObjectValue(2.25), "1|0|240");
    EXPECT_EQ(position.stringForObjectValue(2.25), "2|1|240");
    EXPECT_EQ(position.stringForObjectValue(0), "1|1|000");
    EXPECT_EQ(duration.stringForObjectValue(-2.25), "-1|0|240");
    EXPECT_EQ(duration.stringForObjectValue(20000.0), "10000|0|000"); // bars beyond 9999
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats960).stringForObjectValue(2.25), "1|0|480");
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats960, 0, 90, 3).stringForObjectValue(2.5), "1|0|720");
    // Without a tempo everything is the origin; without a meter the beats run on and the position carries once.
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats480, 0, 0).stringForObjectValue(5), "0|0|000");
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats480, 0, 0, 4, true).stringForObjectValue(5), "1|1|000");
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats480, 0, 120, 0).stringForObjectValue(5.25), "0|10|240");
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats480, 0, 120, 0, true).stringForObjectValue(5.25), "2|1|240");
}

TEST(ZRTimeFormatter, survivesValuesThatAreNotTimes)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (int32_t format = 0; format < 20; ++format) {
        const ZRTimeFormatter plain = formatter(format);
        const std::string ofNaN = plain.stringForObjectValue(nan);
        EXPECT_FALSE(ofNaN.starts_with("-")) << format;
        EXPECT_FALSE(ofNaN.empty()) << format;
        EXPECT_FALSE(plain.stringForObjectValue(infinity).starts_with("-")) << format;
        EXPECT_TRUE(plain.stringForObjectValue(-infinity).starts_with("-")) << format;
        EXPECT_FALSE(plain.stringForObjectValue(1e300).empty()) << format;
    }
    // Clocks saturate their count rather than wrap.
    EXPECT_EQ(formatter(ZRTimeFormatMinutesSeconds).stringForObjectValue(1e300), "153722867280912930:07");
    EXPECT_EQ(formatter(ZRTimeFormatMinutesSeconds).stringForObjectValue(nan), "0:00");
    // A negative rate or tempo counts backwards, field by field.
    EXPECT_EQ(formatter(ZRTimeFormatSampleBlocks28, -44100).stringForObjectValue(1.001), "-1576;-16");
    EXPECT_EQ(formatter(ZRTimeFormatBarsBeats480, 0, -120).stringForObjectValue(2.25), "0|-4|-240");
}

TEST(ZRTimeFormatter, reportsTheLengthOfOneUnit)
{
    const double lengths[] = { 1 / 44100.0, 0.001, 0.01, 0.01, 0.03333333333333333, 0.033366700033366704, 0.04,
        0.041666666666666664, 0.01, 60.0 / 120 / 480, 0.0001, 0.001, 1.0, 0.001, 1.0, 0.001, 60.0 / 120 / 960,
        0.013333333333333334, 28 / 44100.0, 1.0 };
    for (int32_t format = 0; format < 20; ++format)
        EXPECT_DOUBLE_EQ(formatter(format).unitLength(), lengths[format]) << format;
    EXPECT_EQ(formatter(20).unitLength(), 1.0);
    EXPECT_EQ(formatter(-3).unitLength(), 1.0);
}

TEST(ZRTimeFormatter, readsTextOfEachFormat)
{
    struct Read {
        int32_t format;
        const char* text;
        std::optional<double> seconds;
    };
    const Read cases[] = {
        { ZRTimeFormatSamples, "66150", 1.5 },
        { ZRTimeFormatMilliseconds, "1500ms", 1.5 },
        { ZRTimeFormatTenthMilliseconds, "1234.5ms", 1.2345 },
        { ZRTimeFormatSeconds, " 2.5", 2.5 },
        { ZRTimeFormatMinutesSeconds, "-0:30", 30.0 }, // the leading field reads as 0
        { ZRTimeFormatMinutesSeconds, "-1:30", std::nullopt },
        { ZRTimeFormatMinutesSeconds, "1:99:30", 90.0 }, // middle fields are passed over
        { ZRTimeFormatMinutesSecondsHundredths, "61:01.50", 3661.5 },
        { ZRTimeFormatMinutesSecondsMilliseconds, "12.5", 12.5 },
        { ZRTimeFormatHoursMinutesSecondsHundredths, "1.02.03.50", 3723.5 },
        { ZRTimeFormatHoursMinutesSeconds, "25:00:00", 90000.0 },
        { ZRTimeFormatHoursMinutesSeconds, "1:2:3:4:5", 3600.0 + 4 * 60 + 5 },
        { ZRTimeFormatHoursMinutesSecondsMilliseconds, "::", 0.0 },
        { ZRTimeFormatHoursMinutesSecondsMilliseconds, "", 0.0 },
        { ZRTimeFormatHoursMinutesSecondsMilliseconds, "abc", 0.0 },
        { ZRTimeFormatSMPTE30, "1:00:01:15", 3601.5 },
        { ZRTimeFormatSMPTE25, "05:10", 5.4 },
        { ZRTimeFormatSMPTE2997, "0:01:00:00", 60.0 },
        { ZRTimeFormatMinutesSecondsFrames75, "00:02.74", 2 + 0.74 / 0.75 },
        { ZRTimeFormatHoursMinutesSecondsFrames75, "01:01:01.37", 3661 + 0.37 / 0.75 },
        { ZRTimeFormatSampleBlocks28, "1575;10", (10 + 1575 * 28) / 44100.0 },
        { ZRTimeFormatSampleBlocks28, "3", 84 / 44100.0 },
        { ZRTimeFormatBarsBeats480, "1|0|240", 2.25 },
        { ZRTimeFormatBarsBeats960, "1|0|480", 2.25 },
        { 20, "1", std::nullopt },
    };
    for (const Read& read : cases) {
        const auto seconds = parsed(formatter(read.format), read.text);
        ASSERT_EQ(seconds.has_value(), read.seconds.has_value()) << read.format << " " << read.text;
        if (seconds) {
            EXPECT_NEAR(*seconds, *read.seconds, 1e-9) << read.format << " " << read.text;
        }
    }
    // Nothing to divide by: no sample rate reads as no time at all.
    EXPECT_EQ(parsed(formatter(ZRTimeFormatSamples, 0), "100"), std::nullopt);
    EXPECT_EQ(parsed(formatter(ZRTimeFormatSampleBlocks28, 0), "0;0"), std::nullopt);
}

TEST(ZRTimeFormatter, readsBarsAndBeatsOrSaysWhyNot)
{
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480, 0, 120, 4, true), "1|1|000"), 0.0);
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480, 0, 120, 4, true), "2|1|240"), 2.25);
    std::string message;
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480), "1|1", &message), std::nullopt);
    EXPECT_EQ(message, "the bars|beats value was not formatted properly. [0|0|000]");
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats960), "1|1|1|1", &message), std::nullopt);
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats960, 0, 0), "1|1|000", &message), std::nullopt);
    EXPECT_EQ(message, "the tempo and/or time signature is not defined.");
    message.clear();
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480, 0, 120, 0), "1|1|000", &message), std::nullopt);
    EXPECT_EQ(message, "the tempo and/or time signature is not defined.");
    // A position before the first bar is a negative time, refused without a reason.
    message.clear();
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480, 0, 120, 4, true), "0|1|000", &message), std::nullopt);
    EXPECT_EQ(message, "");
    EXPECT_EQ(parsed(formatter(ZRTimeFormatBarsBeats480), "1|1"), std::nullopt); // no slot given
}

// Every clock's text, read back, lands within one unit below the time (truncation never rounds up), checked on a
// sweep of random times over several days.
TEST(ZRTimeFormatter, readsItsOwnTextBackWithinOneUnit)
{
    std::mt19937_64 random(2026);
    std::uniform_real_distribution<double> times(0, 400000);
    for (int32_t format = 0; format < 20; ++format) {
        for (bool position : { false, true }) {
            const ZRTimeFormatter clock = formatter(format, 48000, 97.5f, 7, position);
            for (int sample = 0; sample < 2000; ++sample) {
                const double time = times(random);
                const std::string text = clock.stringForObjectValue(time);
                const auto back = parsed(clock, text);
                ASSERT_TRUE(back) << format << " " << text;
                // The 29.97 clock counts 1798 frames to the minute but reads a minute as 60 seconds, so each minute
                // adds the difference; and its frames within a second are cut from a fractional count.
                double drift = 0;
                double units = 1;
                if (format == ZRTimeFormatSMPTE2997) {
                    const int64_t frames = static_cast<int64_t>(time * 29.97) % 107892;
                    drift = static_cast<double>(frames / 1798) * (60 - 1798 / 29.97);
                    units = 2;
                }
                EXPECT_LE(*back, time + drift + 1e-6) << format << " " << time << " " << text;
                EXPECT_GT(*back, time - units * clock.unitLength() - 1e-6) << format << " " << time << " " << text;
            }
        }
    }
}

// The clock texts against the same counts split with lldiv and written by printf.
TEST(ZRTimeFormatter, splitsClocksAsPlainArithmeticDoes)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> times(-200000, 200000);
    for (int sample = 0; sample < 5000; ++sample) {
        const double time = times(random);
        const char* sign = time < 0 ? "-" : "";
        const double magnitude = std::fabs(time);
        char expected[128];

        const auto milliseconds = static_cast<long long>(magnitude * 1000);
        std::snprintf(expected, sizeof expected, "%s%lld:%02lld:%02lld.%03lld", sign, milliseconds / 3600000,
            milliseconds / 60000 % 60, milliseconds / 1000 % 60, milliseconds % 1000);
        EXPECT_EQ(formatter(ZRTimeFormatHoursMinutesSecondsMilliseconds).stringForObjectValue(time), expected);

        const auto hundredths = static_cast<long long>(magnitude * 100);
        std::snprintf(expected, sizeof expected, "%s%lld:%02lld.%02lld", sign, hundredths / 6000, hundredths / 100 % 60,
            hundredths % 100);
        EXPECT_EQ(formatter(ZRTimeFormatMinutesSecondsHundredths).stringForObjectValue(time), expected);

        const auto frames = static_cast<long long>(magnitude * 75);
        std::snprintf(expected, sizeof expected, "%s%02lld:%02lld:%02lld.%02lld", sign, frames / 270000,
            frames / 4500 % 60, frames / 75 % 60, frames % 75);
        EXPECT_EQ(formatter(ZRTimeFormatHoursMinutesSecondsFrames75).stringForObjectValue(time), expected);

        const auto timeCodeFrames = static_cast<long long>(magnitude * 25);
        std::snprintf(expected, sizeof expected, "%s%lld:%02lld:%02lld:%02lld", sign, timeCodeFrames / 90000,
            timeCodeFrames / 1500 % 60, timeCodeFrames / 25 % 60, timeCodeFrames % 25);
        EXPECT_EQ(formatter(ZRTimeFormatSMPTE25).stringForObjectValue(time), expected);

        const auto samples = static_cast<long long>(magnitude * 44100);
        std::snprintf(expected, sizeof expected, "%s%lld;%lld", sign, samples / 28, samples % 28);
        EXPECT_EQ(formatter(ZRTimeFormatSampleBlocks28).stringForObjectValue(time), expected);
    }
}
