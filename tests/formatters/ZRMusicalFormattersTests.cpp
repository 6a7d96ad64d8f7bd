#include <zrbase/formatters/ZRBarsBeatsFormatter.h>
#include <zrbase/formatters/ZRDetuneFormatter.h>
#include <zrbase/formatters/ZRKeyFormatter.h>
#include <zrbase/formatters/ZRLoopTypeFormatter.h>
#include <zrbase/formatters/ZRMIDINoteFormatter.h>
#include <zrbase/formatters/ZRPlaybackTypeFormatter.h>
#include <zrbase/formatters/ZRScaleFormatter.h>
#include <zrbase/formatters/ZRTempoFormatter.h>
#include <zrbase/formatters/ZRTimeSignatureFormatter.h>

#include <zrbase/core/ZRFormatterExtension.h>

#include <gtest/gtest.h>

#include <limits>

using ZRExtension::objectValueForString;

namespace {

struct Shown {
    ZRPropertyList value;
    const char* text;
};

struct Read {
    const char* text;
    std::optional<ZRPropertyList> value;
};

void expectShows(const ZRFormatter& formatter, std::initializer_list<Shown> cases)
{
    for (const Shown& shown : cases)
        EXPECT_EQ(formatter.stringForObjectValue(shown.value), shown.text) << shown.value.stringValue();
}

void expectReads(const ZRFormatter& formatter, std::initializer_list<Read> cases)
{
    for (const Read& read : cases) {
        const auto value = objectValueForString(formatter, read.text);
        EXPECT_EQ(value, read.value) << '"' << read.text << "\" gave " << (value ? value->stringValue() : "nothing");
    }
}

void expectPartial(
    const ZRFormatter& formatter, std::initializer_list<const char*> valid, std::initializer_list<const char*> invalid)
{
    for (const char* text : valid)
        EXPECT_TRUE(formatter.isPartialStringValid(text)) << text;
    for (const char* text : invalid)
        EXPECT_FALSE(formatter.isPartialStringValid(text)) << text;
}

}

TEST(ZRMusicalFormatters, timeSignatures)
{
    const ZRTimeSignatureFormatter formatter;
    expectShows(
        formatter, { { 0, "n/a" }, { 7 * 256 + 4, "7/4" }, { 1796, "7/4" }, { 6 * 256 + 8, "6/8" }, { -256, "-1/0" } });
    expectReads(formatter,
        { { "7/3", 1796 }, { "1/8", 2 * 256 + 8 }, { "99/64", 16 * 256 + 64 }, { "3/4/4", std::nullopt },
            { "3", std::nullopt }, { "n/a", std::nullopt }, { "/", 2 * 256 + 4 }, { "x/y", 2 * 256 + 4 } });
    expectPartial(formatter, { "", "3", "3/", "12/16" }, { "/", "3//", "3/4/", "3a", "3 /4" });
}

TEST(ZRMusicalFormatters, barsAndBeats)
{
    const ZRBarsBeatsFormatter formatter;
    expectShows(formatter, { { 0, "n/a" }, { 1029, "4|5" }, { 256, "1|0" } });
    expectReads(formatter,
        { { "4|5", 1029 }, { "0|300", 300 }, { "4", std::nullopt }, { "1|2|3", std::nullopt }, { "|", 0 },
            // The packed sum wraps as a 32-bit value does.
            { "8388608|0", std::numeric_limits<int32_t>::min() } });
    expectPartial(formatter, { "", "4", "4|", "4|12" }, { "|4", "4||", "4|5|", "4.5" });
}

TEST(ZRMusicalFormatters, tempi)
{
    const ZRTempoFormatter formatter;
    expectShows(formatter, { { 0, "n/a" }, { 120, "120.00" }, { 97.126f, "97.13" } });
    expectReads(formatter,
        { { "120", 120.0f }, { "97.5 bpm", 97.5f }, { "0", std::nullopt }, { "", std::nullopt },
            { "fast", std::nullopt } });
    expectPartial(formatter, { "", "1", "120.", "120.5" }, { ".5", "1.2.3", "120 ", "-1" });
}

TEST(ZRMusicalFormatters, midiNotes)
{
    const ZRMIDINoteFormatter formatter;
    expectShows(formatter,
        { { 0, "C-2" }, { 60, "C3" }, { 61, "C#3" }, { 82, "A#4" }, { 127, "G8" }, { 128, "<none>" },
            { -1, "<none>" } });
    expectReads(formatter,
        { { "C3", 60 }, { "a#4", 82 }, { "C-2", 0 }, { "G", 7 }, { "G8", 127 }, { "B9", 127 }, { "C-9", 0 },
            { "64", 64 }, { "300", 300 }, { "-5", -5 }, { "#", 0 }, { "Db3", 62 }, { "E 2", 52 },
            { "C99999999999", 127 } });
    expectPartial(formatter, { "C", "c#3", "A-1", "g10" }, { "", "H", "3", "C##", "C--1", "Cb", "C 3" });
}

TEST(ZRMusicalFormatters, keys)
{
    const ZRKeyFormatter formatter;
    expectShows(formatter, { { 0, "C" }, { 1, "C#" }, { 9, "A" }, { 11, "B" }, { 12, "none" }, { -1, "none" } });
    expectReads(formatter,
        { { "C", 0 }, { "F#", 6 }, { "B", 11 }, { "c#", 1 }, { "a", 0 }, { "", 0 }, { " ", 0 }, { "Hm", 0 } });
}

TEST(ZRMusicalFormatters, scales)
{
    const ZRScaleFormatter formatter;
    expectShows(
        formatter, { { 1, "Minor" }, { 2, "Major" }, { 3, "Neither" }, { 4, "Both" }, { 0, "none" }, { 5, "none" } });
    expectReads(formatter,
        { { "Minor", 1 }, { "major", 2 }, { "neither", 3 }, { "Both", 4 }, { "both", 0 }, { "Mx", 0 }, { "M", 0 },
            { "", 0 } });
}

TEST(ZRMusicalFormatters, detunes)
{
    const ZRDetuneFormatter formatter;
    expectShows(formatter, { { -12, "-12 cents" }, { 0, "0 cents" } });
    expectReads(formatter, { { "-75", -50 }, { "75 cents", 50 }, { "12", 12 }, { "flat", 0 } });
}

TEST(ZRMusicalFormatters, loopAndPlaybackTypes)
{
    const ZRLoopTypeFormatter loops;
    expectShows(loops,
        { { -1, "None" }, { 0, "Forward" }, { 1, "Forward-Backward" }, { 2, "Backward" }, { 3, "unknown" },
            { -2, "unknown" } });
    expectReads(loops,
        { { "None", -1 }, { "Forward", 0 }, { "Forward-Backward", 1 }, { "Backward", 2 }, { "forward", -1 },
            { "", -1 } });
    const ZRPlaybackTypeFormatter playback;
    expectShows(playback, { { 1, "Loop" }, { 2, "One Shot" }, { 0, "n/a" }, { 3, "n/a" } });
    expectReads(playback, { { "Loop", 1 }, { "l", 1 }, { "one shot", 2 }, { "Once", 2 }, { "x", 0 }, { "", 0 } });
}
