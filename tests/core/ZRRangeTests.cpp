#include <zrbase/core/ZRRange.h>

#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int32_t largestFrame = 2147483647;

}

TEST(ZRRange, constructorsAndSettersKeepTheDocumentedEnds)
{
    EXPECT_EQ(ZRRange::rangeWithStart(1, 3), ZRRange(1, 2));
    EXPECT_EQ(ZRRange(1, 2).midpoint(), 2);
    EXPECT_EQ(ZRRange::rangeWithRange(ZRRange(1, 2, 48000)).rate(), 48000u);

    ZRRange range(1, 2);
    range.setStart(1.5);
    EXPECT_EQ(range.end(), 3);
    range.offsetStart(-0.5);
    EXPECT_EQ(range, ZRRange(1, 2));
    range.inset(0.25);
    EXPECT_EQ(range, ZRRange(1.25, 1.5));
    range.setStart(0, 4);
    range.scaleLength(0.5, false);
    EXPECT_EQ(range, ZRRange(2, 2));
    range.scaleLength(3, true);
    EXPECT_EQ(range, ZRRange(2, 6));
    range.offsetEnd(-7);
    EXPECT_EQ(range.length(), -1);

    EXPECT_EQ(ZRRange::rangeWithSampleRange({ 44100, 22050 }, 44100), ZRRange(1, 0.5));
    EXPECT_EQ(ZRRange::rangeWithSampleStart(-22050, 44100, 44100), ZRRange(-0.5, 1.5));

    // Without a rate the sample setters change nothing.
    ZRRange noRate(1, 2);
    noRate.setSampleRange({ 5, 6 });
    noRate.setSampleStart(7);
    noRate.setSampleEnd(8);
    noRate.setSampleStart(1, 2);
    noRate.setSampleLocation(3);
    noRate.setSampleLength(4);
    noRate.chokeToSampleStart(5, 5);
    EXPECT_EQ(noRate, ZRRange(1, 2));
    EXPECT_FALSE(noRate.includesSampleLocation(1));
    EXPECT_FALSE(noRate.containsSampleLocation(2));
    EXPECT_EQ(noRate.normalizedSampleLocation(1), 1.0);

    ZRRange all = ZRRange::rangeWithAllTime();
    EXPECT_EQ(std::bit_cast<uint64_t>(all.length()), 0x7FEFFFFFFFFFFFFFu);
    EXPECT_TRUE(all.includesLocation(0));
    EXPECT_TRUE(all.includesLocation(1e300));
    all.setRate(1);
    EXPECT_EQ(all.sampleLength(), 2147483647u);
    all.reset();
    EXPECT_EQ(all, ZRRange());
    EXPECT_EQ(all.rate(), 0u);
}

TEST(ZRRange, sampleFormsRoundHalfAwayFromZeroAndSaturate)
{
    ZRRange range = ZRRange::rangeWithRate(44100);
    range.setLocation(0.5 / 44100);
    EXPECT_EQ(range.sampleStart(), 1);
    range.setLocation(-0.5 / 44100);
    EXPECT_EQ(range.sampleLocation(), -1);
    range.setLength(2.5 / 44100);
    EXPECT_EQ(range.sampleMidpoint(), 1);
    EXPECT_EQ(range.sampleEnd(), 2);
    EXPECT_EQ(range.sampleLength(), 3u);

    range.setLength(-1);
    EXPECT_EQ(range.sampleLength(), 0u);
    range.setLength(notANumber);
    EXPECT_EQ(range.sampleLength(), 2147483647u);
    EXPECT_EQ(range.sampleEnd(), largestFrame);
    range.setStart(1e9, 2e9);
    EXPECT_EQ(range.sampleEnd(), largestFrame);
    EXPECT_EQ(range.sampleLocation(), largestFrame);
    range.setLocation(-1e9);
    EXPECT_EQ(range.sampleLocation(), std::numeric_limits<int32_t>::min());
    range.setStart(-1, 1);
    EXPECT_EQ(range.sampleRange(), (ZRIndexRange { static_cast<uint32_t>(-44100), 88200 }));

    range.setSampleRange({ 4410, 44100 });
    EXPECT_EQ(range, ZRRange(0.1, 1));
    range.setSampleStart(0);
    EXPECT_EQ(range.end(), 1.1);
    range.setSampleEnd(88200);
    EXPECT_EQ(range.end(), 2);
    range.setSampleStart(-44100, 44100);
    EXPECT_EQ(range, ZRRange(-1, 2));
    EXPECT_TRUE(range.includesSampleLocation(44100));
    EXPECT_FALSE(range.containsSampleLocation(44100));
    EXPECT_EQ(range.normalizedSampleLocation(0), 0.5);
    range.chokeToSampleStart(0, 22050);
    EXPECT_EQ(range, ZRRange(0, 0.5));
}

TEST(ZRRange, queriesAndEquality)
{
    const ZRRange empty(2, 0);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_TRUE(empty.includesLocation(2));
    EXPECT_FALSE(empty.containsLocation(2));
    EXPECT_EQ(empty.normalizedLocation(2), 1.0);

    const ZRRange range(1, 2);
    EXPECT_EQ(range.normalizedLocation(0), 0.0);
    EXPECT_EQ(range.normalizedLocation(1.5), 0.25);
    EXPECT_EQ(range.normalizedLocation(4), 1.0);
    EXPECT_EQ(range.distanceFromStart(0.5), -0.5);
    EXPECT_TRUE(range.includesRange(ZRRange(1, 2)));
    EXPECT_FALSE(range.containsRange(ZRRange(1, 1)));
    EXPECT_TRUE(range.containsRange(ZRRange(1.5, 1)));
    EXPECT_FALSE(range.includesRange(ZRRange(0.5, 1)));

    EXPECT_EQ(ZRRange(1, 2, 44100), ZRRange(1, 2, 48000));
    EXPECT_FALSE(ZRRange(1, 2).isEqualToRange(ZRRange(1, 3)));
    const ZRRange undefined(notANumber, 1);
    EXPECT_FALSE(undefined == undefined);
}

TEST(ZRRange, intersectionHullAndChoke)
{
    const ZRRange first(0, 1, 48000);
    const auto touching = first.rangeIntersectingRange(ZRRange(1, 1));
    ASSERT_TRUE(touching);
    EXPECT_EQ(*touching, ZRRange(1, 0));
    EXPECT_EQ(touching->rate(), 48000u);
    EXPECT_FALSE(first.rangeIntersectingRange(ZRRange(2, 1)));
    EXPECT_EQ(ZRRange(0, 4).rangeIntersectingRange(ZRRange(1, 10)), ZRRange(1, 3));

    ZRRange hull(2, 1);
    hull.includeRange(ZRRange(0, 1));
    EXPECT_EQ(hull, ZRRange(0, 3));
    hull.includeRange(ZRRange(1, 5));
    EXPECT_EQ(hull, ZRRange(0, 6));

    const auto choked = [](ZRRange range, double start, double end) {
        range.chokeToStart(start, end);
        return range;
    };
    EXPECT_EQ(choked(ZRRange(1, 2), 5, 6), ZRRange(5, 0));
    EXPECT_EQ(choked(ZRRange(1, 2), -2, 0), ZRRange(0, 0));
    EXPECT_EQ(choked(ZRRange(1, -3), -5, 5), ZRRange(1, 0));
    ZRRange range(1, 2);
    range.chokeToRange(ZRRange(2, 5));
    EXPECT_EQ(range, ZRRange(2, 1));
}

TEST(ZRRange, stateArchiveAndDescription)
{
    const ZRRange range(0.5, 1, 44100);
    EXPECT_EQ(range.state(), (ZRDictionary { { "location", 0.5 }, { "length", 1.0 } }));
    EXPECT_EQ(range.state().at("length").type(), ZRPropertyList::Type::Real);
    ZRRange restored = ZRRange::rangeWithState({ { "length", 3 }, { "location", ZRData { 1 } } });
    EXPECT_EQ(restored, ZRRange(0, 3));
    restored.setState({ { "location", "2.5" } });
    EXPECT_EQ(restored, ZRRange(2.5, 3));

    ZRKeyedArchiver archiver;
    range.encodeWithCoder(archiver);
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding("ZRRange"));
    ASSERT_TRUE(unarchiver);
    EXPECT_EQ(unarchiver->decodeInt("rate"), 44100);
    const ZRRange decoded(*unarchiver);
    EXPECT_EQ(decoded, range);
    EXPECT_EQ(decoded.rate(), 44100u);

    EXPECT_EQ(range.description(), "ZRRange: (0.5000-1.5000) [22050-66150]");
    EXPECT_EQ(ZRRange(-1.23456, 1).description(), "ZRRange: (-1.2346--0.2346)");
}
