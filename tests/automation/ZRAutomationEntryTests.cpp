#include <zrbase/automation/ZRAutomationEntry.h>

#include "support/ZRTestAudioUnit.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr uint32_t rate = 48000;

bool isRamp(const AudioUnitParameterEvent& event) { return event.eventType == kParameterEvent_Ramped; }

}

TEST(ZRAutomationEntry, aNewEntryIsACubicSweepFromZeroToOne)
{
    ZRAutomationEntry entry;
    EXPECT_EQ(entry.controlPointCount(), 2u);
    EXPECT_EQ(entry.controlPointAtIndex(0), (ZRPoint { 1 / 3.0f, 1 / 3.0f }));
    EXPECT_EQ(entry.controlPointAtIndex(1), (ZRPoint { 2 / 3.0f, 2 / 3.0f }));
    EXPECT_EQ(entry.startValue(), 0);
    EXPECT_EQ(entry.endValue(), 1);
    EXPECT_EQ(entry.controlType(), 3);
    EXPECT_EQ(entry.lastStartValue(), -1);
    EXPECT_EQ(entry.controlPointRects().size(), 4u);

    entry.setRange(ZRRange(2, 3));
    EXPECT_DOUBLE_EQ(entry.controlPointTimeAtIndex(0), 2 + double(2 / 3.0f) * 3);
    EXPECT_FLOAT_EQ(entry.valueAtTime(3.5), 0.5f);
    EXPECT_EQ(entry.valueAtTime(1), 0);
    EXPECT_EQ(entry.valueAtTime(9), 1);
    EXPECT_FLOAT_EQ(entry.valueAtPosition(0.25), 0.25f);

    entry.setStartValue(0.4f);
    entry.setEndValue(0.2f);
    EXPECT_EQ(entry.valueMap().controlPointAtIndex(0), (ZRPoint { 0, 0.4f }));
    EXPECT_EQ(entry.valueMap().lastControlPoint(), (ZRPoint { 1, 0.2f }));
}

TEST(ZRAutomationEntry, stateRoundTripsAndReadsTheOlderCurveForm)
{
    ZRAutomationEntry entry;
    const ZRDictionary fresh = entry.state();
    EXPECT_EQ(fresh.size(), 11u);
    EXPECT_EQ(fresh.at("ControlType"), ZRPropertyList(4));
    EXPECT_EQ(fresh.at("ControlPoints"), ZRPropertyList(ZRArray { "{0.333333, 0.333333}", "{0.666667, 0.666667}" }));

    entry.setScope(1);
    entry.setElement(2);
    entry.setParameter(77);
    entry.setRange(ZRRange(1.5, 2));
    entry.setDefaultValue(0.25f);
    entry.setControlType(ZRValueMapSegmented);
    entry.setStartValue(0.75f);
    ZRAutomationEntry restored(entry.state());
    EXPECT_EQ(restored.scope(), 1);
    EXPECT_EQ(restored.element(), 2);
    EXPECT_EQ(restored.parameter(), 77);
    EXPECT_EQ(restored.range(), ZRRange(1.5, 2));
    EXPECT_EQ(restored.defaultValue(), 0.25f);
    EXPECT_EQ(restored.valueMap().controlPoints(), entry.valueMap().controlPoints());
    EXPECT_EQ(restored.controlPointRects().size(), 3u);

    ZRAutomationEntry older(ZRDictionary { { "ControlType", 1 }, { "StartValue", 0.2 }, { "EndValue", 0.8 },
        { "ControlPoints", ZRArray { "{0.4, 0.6}" } } });
    EXPECT_EQ(older.controlType(), ZRValueMapSegmented);
    EXPECT_EQ(older.valueMap().controlPoints(), (std::vector<ZRPoint> { { 0, 0.2f }, { 0.4f, 0.6f }, { 1, 0.8f } }));
    EXPECT_EQ(older.controlPointRects().size(), 3u);
    // The stored kind is one above the kind, whatever number is stored.
    ZRAutomationEntry lowest(ZRDictionary { { "ControlType", INT32_MIN }, { "ControlPoints", ZRArray {} } });
    EXPECT_EQ(lowest.valueMap().type(), 0x7FFFFFFFu);
    EXPECT_EQ(lowest.valueMap().numberOfControlPoints(), 2u);

    // The older form is ignored beside a value map, and the curve is left alone without either.
    ZRDictionary both = entry.state();
    both["ControlPoints"] = ZRArray {};
    ZRAutomationEntry fromBoth(both);
    EXPECT_EQ(fromBoth.valueMap().controlPoints(), entry.valueMap().controlPoints());
    ZRAutomationEntry untouched(ZRDictionary { { "StartValue", 0.5 } });
    EXPECT_EQ(untouched.valueMap().controlPoints(), ZRValueMap(ZRValueMapCubic).controlPoints());
}

TEST(ZRAutomationEntry, controlPointsAndRectanglesStayInStep)
{
    ZRAutomationEntry entry;
    EXPECT_EQ(entry.addControlPoint({ 0.5f, 0.5f }), ZRNotFound);
    EXPECT_EQ(entry.controlPointRects().size(), 4u);

    entry.setControlType(ZRValueMapSegmented);
    entry.setState({});
    EXPECT_EQ(entry.controlPointRects().size(), 3u);
    EXPECT_EQ(entry.addControlPoint({ 0.8f, 0.1f }), 1u);
    EXPECT_EQ(entry.controlPointAtIndex(1), (ZRPoint { 0.8f, 0.1f }));
    EXPECT_EQ(entry.controlPointRects().size(), 4u);

    const ZRRect start = ZRMakeRect(1, 2, 3, 4), end = ZRMakeRect(5, 6, 7, 8), inner = ZRMakeRect(9, 9, 9, 9);
    entry.setStartValueRect(start);
    entry.setEndValueRect(end);
    entry.setControlPointRect(inner, 1);
    entry.setControlPointRect(inner, 2); // the end value's rectangle is not a control point's
    EXPECT_EQ(entry.startValueRect(), start);
    EXPECT_EQ(entry.endValueRect(), end);
    EXPECT_EQ(entry.controlPointRectAtIndex(1), inner);
    EXPECT_EQ(entry.controlPointRectAtIndex(2), ZRRect {});
    EXPECT_EQ(entry.controlPointRects()[2], inner);

    entry.removeControlPointAtIndex(1);
    EXPECT_EQ(entry.controlPointCount(), 1u);
    EXPECT_EQ(entry.controlPointRects(), (std::vector<ZRRect> { start, {}, end }));

    entry.setRect(inner);
    entry.setStartTimeRect(inner);
    entry.setEndTimeRect(inner);
    entry.clearRects();
    EXPECT_EQ(entry.rect(), ZRRect {});
    EXPECT_EQ(entry.endTimeRect(), ZRRect {});
    EXPECT_EQ(entry.controlPointRects(), std::vector<ZRRect>(3));
}

TEST(ZRAutomationEntry, aSweepInsideOneRenderRangeRampsAndReturnsToRest)
{
    ZRAutomationEntry entry;
    entry.setScope(1);
    entry.setElement(3);
    entry.setParameter(42);
    entry.setDefaultValue(0.5f);
    entry.setRange(ZRRange(1.25, 0.5));
    ZRTestAudioUnit unit;
    const ZRRange render(1, 1, rate);
    entry.automateRange(render, 0.001, unit);

    const auto& events = unit.scheduledEvents();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].scope, 1u);
    EXPECT_EQ(events[0].element, 3u);
    EXPECT_EQ(events[0].parameter, 42u);
    ASSERT_TRUE(isRamp(events[0]));
    EXPECT_EQ(events[0].eventValues.ramp.startBufferOffset, 48 + 12000);
    EXPECT_EQ(events[0].eventValues.ramp.durationInFrames, 24000u);
    EXPECT_EQ(events[0].eventValues.ramp.startValue, 0);
    EXPECT_EQ(events[0].eventValues.ramp.endValue, 1);
    ASSERT_EQ(events[1].eventType, kParameterEvent_Immediate);
    EXPECT_EQ(events[1].eventValues.immediate.bufferOffset, 48u + 36000);
    EXPECT_EQ(events[1].eventValues.immediate.value, 0.5f);
    EXPECT_EQ(entry.lastStartValue(), 0.5f);
    EXPECT_EQ(entry.lastEndValue(), 0.5f);

    // Ranges without the sweep rest at the default value: once, then no more while nothing changes.
    ZRAutomationEntry later;
    later.setRange(ZRRange(5, 1));
    ZRTestAudioUnit quiet;
    later.automateRange(ZRRange(0, 1, rate), 0, quiet);
    later.automateRange(ZRRange(1, 1, rate), 0, quiet);
    ASSERT_EQ(quiet.scheduledEvents().size(), 1u);
    EXPECT_EQ(quiet.scheduledEvents()[0].eventType, kParameterEvent_Immediate);
    EXPECT_EQ(quiet.scheduledEvents()[0].eventValues.immediate.value, 0);
}

TEST(ZRAutomationEntry, blocksOfAnySizeCoverTheSweepOnceWithItsValues)
{
    ZRAutomationEntry entry;
    entry.setRange(ZRRange::rangeWithStart(0.01234, 0.04321)); // starts and ends inside blocks
    entry.setStartValue(0.1f);
    entry.setEndValue(0.9f);
    entry.setControlPoint({ 0.2f, 0.6f }, 0);
    entry.setDefaultValue(0.05f);
    const long sweepStart = std::lround(0.01234 * rate), sweepEnd = std::lround(0.04321 * rate);

    for (uint32_t block : { 1u, 64u, 512u }) {
        SCOPED_TRACE(block);
        ZRAutomationEntry sweep(entry.state());
        ZRTestAudioUnit unit;
        std::vector<std::pair<long, AudioUnitParameterEvent>> events;
        for (uint32_t frame = 0; frame < 3000; frame += block) {
            const size_t before = unit.scheduledEvents().size();
            sweep.automateRange(ZRRange::rangeWithSampleRange({ frame, block }, rate), 0, unit);
            for (size_t i = before; i < unit.scheduledEvents().size(); ++i)
                events.push_back({ frame, unit.scheduledEvents()[i] });
        }
        long covered = sweepStart;
        float previousEnd = sweep.valueAtTime(0.01234);
        int rests = 0;
        for (const auto& [frame, event] : events) {
            if (!isRamp(event)) {
                const long at = frame + event.eventValues.immediate.bufferOffset;
                EXPECT_TRUE(at == 0 || at >= sweepEnd) << at; // resting before and after the sweep
                EXPECT_EQ(event.eventValues.immediate.value, 0.05f);
                rests += at == sweepEnd;
                continue;
            }
            const long at = frame + event.eventValues.ramp.startBufferOffset;
            ASSERT_EQ(at, covered);
            covered += event.eventValues.ramp.durationInFrames;
            EXPECT_NEAR(event.eventValues.ramp.startValue, previousEnd, 1e-6);
            EXPECT_NEAR(event.eventValues.ramp.startValue, sweep.valueAtTime(double(at) / rate), 1e-3);
            EXPECT_NEAR(event.eventValues.ramp.endValue, sweep.valueAtTime(double(covered) / rate), 1e-3);
            previousEnd = event.eventValues.ramp.endValue;
        }
        EXPECT_EQ(covered, sweepEnd);
        EXPECT_EQ(previousEnd, 0.9f);
        EXPECT_EQ(rests, 1);
    }
}
