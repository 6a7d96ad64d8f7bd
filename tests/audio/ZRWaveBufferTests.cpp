#include <zrbase/audio/ZRWaveBuffer.h>

#include "support/ZRRecordingAlertPresenter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace {

uint32_t bits(float value) { return std::bit_cast<uint32_t>(value); }

}

TEST(ZRWaveBuffer, keepsUpperAndLowerValuesPerChannelWithSymmetricSetters)
{
    auto wave = ZRWaveBuffer::bufferWithChannels(2, 4);
    // Channel c keeps its upper values in buffer channel 2c and its lower ones in 2c + 1.
    ASSERT_EQ(wave->_buffer()->channels(), 4u);
    wave->setValue(0.5f, 1, 1);
    EXPECT_EQ(wave->_buffer()->sampleValueAtIndex(1, 2), 0.5f);
    EXPECT_EQ(wave->_buffer()->sampleValueAtIndex(1, 3), -0.5f);
    wave->setValue(-0.0f, 2);
    EXPECT_EQ(bits(wave->positiveValueAtIndex(2)), bits(-0.0f));
    EXPECT_EQ(bits(wave->negativeValueAtIndex(2)), bits(0.0f));

    // Block setters copy as given, or negate the whole lower half.
    const float values[] = { 1, 2, 3, 4, 5 };
    wave->setNegativeValues(values, 5, 0);
    EXPECT_EQ(wave->negativeValueAtIndex(3), 4.0f);
    wave->setPositiveValues(values, 2, 1);
    EXPECT_EQ(wave->positiveValueAtIndex(1, 1), 2.0f);
    wave->setValues(values, 2, 0);
    EXPECT_EQ(wave->positiveValueAtIndex(1), 2.0f);
    EXPECT_EQ(wave->negativeValueAtIndex(1), -2.0f);
    EXPECT_EQ(wave->negativeValueAtIndex(3), -4.0f);

    // Out of range, including channel numbers whose double would wrap in 32 bits, reads 0 and writes nothing.
    wave->setValue(9.0f, 0, 0x8000'0000u);
    wave->setValue(9.0f, 4, 0);
    wave->setValue(9.0f, 0, 2);
    EXPECT_EQ(wave->positiveValueAtIndex(0), 1.0f);
    EXPECT_EQ(wave->positiveValueAtIndex(0, 0x8000'0000u), 0.0f);
    EXPECT_EQ(wave->negativeValueAtIndex(4), 0.0f);
}

TEST(ZRWaveBuffer, clearsToTheNotComputedMarkerAndForwardsRangeScaleAndMix)
{
    auto wave = ZRWaveBuffer::bufferWithChannels(1, 3);
    wave->clear();
    for (uint32_t point = 0; point < 3; ++point) {
        EXPECT_EQ(bits(wave->positiveValueAtIndex(point)), 0xFFFF'FFFFu);
        EXPECT_EQ(bits(wave->negativeValueAtIndex(point)), 0xFFFF'FFFFu);
    }

    wave->setRange({ 2, 5 });
    wave->incrementRangeLocation();
    wave->incrementRangeLength(3);
    EXPECT_EQ(wave->_buffer()->range(), (ZRIndexRange { 3, 8 }));
    wave->resetRange();
    EXPECT_EQ(wave->range(), ZRIndexRange {});

    wave->setValue(0.5f, 0);
    wave->scale(2.0f);
    EXPECT_EQ(wave->positiveValueAtIndex(0), 1.0f);
    auto other = ZRWaveBuffer::bufferWithChannels(1, 3);
    other->setValue(0.25f, 0);
    wave->mix(*other);
    EXPECT_EQ(wave->positiveValueAtIndex(0), 1.25f);
    EXPECT_EQ(wave->negativeValueAtIndex(0), -1.25f);
    wave->mix(*ZRWaveBuffer::bufferWithChannels(2, 3));
    EXPECT_EQ(wave->positiveValueAtIndex(0), 1.25f);
}

TEST(ZRWaveBuffer, averagesChannelsIntoOne)
{
    auto wave = ZRWaveBuffer::bufferWithChannels(3, 2);
    wave->clear();
    wave->setValue(1.0f, 1, 0);
    for (uint32_t channel = 0; channel < 3; ++channel) {
        wave->setPositiveValue(float(2 * channel + 1), 0, channel);
        wave->setNegativeValue(-float(channel), 0, channel);
    }
    wave->average();
    EXPECT_EQ(wave->channels(), 1u);
    EXPECT_EQ(wave->positiveValueAtIndex(0), 3.0f);
    EXPECT_EQ(wave->negativeValueAtIndex(0), -1.0f);
    // A point not computed everywhere stays not computed.
    EXPECT_TRUE(std::isnan(wave->positiveValueAtIndex(1)));

    auto mono = ZRWaveBuffer::bufferWithChannels(1, 1);
    mono->setValue(0.75f, 0);
    mono->average();
    EXPECT_EQ(mono->negativeValueAtIndex(0), -0.75f);
}

TEST(ZRWaveBuffer, resizesAndLivesWithoutABuffer)
{
    auto wave = ZRWaveBuffer::bufferWithChannels(1, 2);
    wave->setChannels(3);
    EXPECT_EQ(wave->_buffer()->channels(), 6u);
    wave->setFrames(5);
    wave->setValue(1.0f, 4, 2);
    EXPECT_EQ(wave->negativeValueAtIndex(4, 2), -1.0f);

    // No channels: no buffer, and everything answers 0 or does nothing.
    ZRErrorPtr error;
    ZRWaveBuffer empty(0, 10, &error);
    EXPECT_EQ(empty._buffer(), nullptr);
    ZRRecordingAlertPresenter alerts;
    empty.setChannels(2);
    empty.setFrames(2);
    empty.setValue(1.0f, 0);
    empty.clear();
    empty.average();
    empty.mix(*wave);
    wave->mix(empty);
    EXPECT_EQ(empty.positiveValueAtIndex(0), 0.0f);
    EXPECT_EQ(empty.range(), ZRIndexRange {});
    EXPECT_TRUE(alerts.alerts().empty());
}
