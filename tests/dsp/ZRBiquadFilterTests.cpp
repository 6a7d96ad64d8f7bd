#include <zrbase/dsp/ZRBandpassFilter.h>
#include <zrbase/dsp/ZRLowpassFilter.h>

#include "support/ZRTestAudioBuffers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct CountingLowpass : ZRLowpassFilter {
    int updates = 0;
    void _updateCoefficients() noexcept override
    {
        ++updates;
        ZRLowpassFilter::_updateCoefficients();
    }
};

}

TEST(ZRBiquadFilter, coefficientsWaitForAParameterAndSkipOnlyAnUnchangedRate)
{
    CountingLowpass filter;
    filter.setActive(true);
    filter.setSampleRate(48000.0);
    EXPECT_EQ(filter.updates, 0);
    auto buffer = ZRTestBufferWithChannels({ { 1.0f, 0.5f, -0.5f } });
    filter.filter(*buffer);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), std::vector<float>(3, 0.0f));

    filter.setSampleRate(44100.0);
    filter.setSampleRate(44100.0);
    EXPECT_EQ(filter.updates, 1);
    const float c0 = filter.c0();
    EXPECT_GT(c0, 0.0f);
    filter.setFrequency(filter.frequency());
    filter.setBandwidth(filter.bandwidth());
    filter.setState({});
    EXPECT_EQ(filter.updates, 4);
    EXPECT_EQ(filter.c0(), c0);
    EXPECT_EQ(filter.c2(), c0);

    // The band pass has no b1 term: its c1 is a true zero.
    ZRBandpassFilter bandpass;
    bandpass.setFrequency(500.0f);
    EXPECT_EQ(std::signbit(bandpass.c1()), false);
    EXPECT_EQ(bandpass.c1(), 0.0f);
    EXPECT_EQ(bandpass.c2(), -bandpass.c0());
}

TEST(ZRBiquadFilter, shortBlocksAreLeftAloneAndABypassedFilterFollowsTheSignal)
{
    ZRLowpassFilter filter;
    filter.setFrequency(2000.0f);
    auto block = ZRTestBufferWithChannels({ { 0.1f, 0.2f, 0.3f, 0.4f }, { -1.0f, -2.0f, -3.0f, -4.0f } });
    filter.filter(*block);
    EXPECT_EQ(ZRTestSamplesOfChannel(*block, 0), (std::vector<float> { 0.1f, 0.2f, 0.3f, 0.4f }));
    for (uint32_t channel = 0; channel < 2; ++channel) {
        const float last = channel ? -4.0f : 0.4f, before = channel ? -3.0f : 0.3f;
        EXPECT_EQ(filter.x(channel, 0), last);
        EXPECT_EQ(filter.y(channel, 0), last);
        EXPECT_EQ(filter.x(channel, 1), before);
        EXPECT_EQ(filter.y(channel, 1), before);
    }
    EXPECT_EQ(filter.x(0, 2), 0.0f);
    EXPECT_EQ(filter.x(2, 0), 0.0f);

    // One frame is too short even for an active filter, and changes neither history nor channel count.
    filter.setActive(true);
    auto single = ZRTestBufferWithChannels({ { 0.7f } });
    filter.filter(*single);
    EXPECT_EQ(single->sampleValueAtIndex(0), 0.7f);
    EXPECT_EQ(filter.historyChannels(), 2u);
    EXPECT_EQ(filter.x(1, 0), -4.0f);

    // Switched on, the filter continues from the primed history.
    auto next = ZRTestBufferWithChannels({ { 0.5f, 0.5f } });
    filter.filter(*next);
    const float expected
        = 0.5f * filter.c0() + 0.4f * filter.c1() + 0.3f * filter.c2() - 0.4f * filter.c3() - 0.3f * filter.c4();
    EXPECT_EQ(next->sampleValueAtIndex(0), expected);
    EXPECT_EQ(filter.historyChannels(), 1u);
    EXPECT_EQ(filter.y(0, 1), expected);

    const float c4 = filter.c4();
    filter.reset();
    EXPECT_EQ(filter.x(0, 0), 0.0f);
    EXPECT_EQ(filter.y(0, 0), 0.0f);
    EXPECT_EQ(filter.c4(), c4);
}
