#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRBWeightedFilter.h>
#include <zrbase/dsp/ZRCWeightedFilter.h>
#include <zrbase/dsp/ZRDCFilter.h>

#include "support/ZRTestAudioBuffers.h"
#include <zrbase/core/ZRCRC.h>

#include <gtest/gtest.h>

#include <cstdio>

namespace {

// Coefficients are published to ten decimal places, which tells apart any two floats of their size.
std::string decimal(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.10f", value);
    return text;
}

}

TEST(ZRWeightedFilter, coefficientsMatchThePublishedValuesAndEveryRateChangeClearsTheHistory)
{
    ZRAWeightedFilter a;
    ZRBWeightedFilter b;
    ZRCWeightedFilter c;
    EXPECT_EQ(decimal(a.c0()), "0.0026929313");
    EXPECT_EQ(decimal(a.c1()), "0.0139968013");
    EXPECT_EQ(decimal(a.c2()), "0.0921317115");
    EXPECT_EQ(decimal(a.c3()), "0.8168665171");
    EXPECT_EQ(decimal(a.gain()), "1.3263230324");
    EXPECT_EQ(decimal(b.c1()), "0.0205423273");
    EXPECT_EQ(decimal(b.gain()), "1.0284110308");
    EXPECT_EQ(decimal(c.gain()), "1.0097208023");

    a.setActive(true);
    auto buffer = ZRTestBufferWithChannels({ { 0.5f, 0.25f, 1.0f } });
    a.filter(*buffer);
    EXPECT_NE(a.z(0, 0), 0.0f);
    a.setSampleRate(44100.0);
    EXPECT_EQ(decimal(a.c0()), "0.0029307478");
    EXPECT_EQ(decimal(a.c3()), "0.8462142348");
    EXPECT_EQ(decimal(a.gain()), "1.3334567547");
    for (uint32_t index = 0; index < 6; ++index)
        EXPECT_EQ(a.z(0, index), 0.0f);

    // Even the same rate clears it.
    a.filter(*buffer);
    a.setSampleRate(44100.0);
    EXPECT_EQ(a.z(0, 0), 0.0f);
}

TEST(ZRWeightedFilter, anInactiveFilterDoesNothingAndSilenceShowsTheOffset)
{
    ZRCWeightedFilter inactive;
    auto stereo = ZRTestBufferWithChannels({ { 0.5f, 0.25f }, { 1.0f, -1.0f } });
    inactive.filter(*stereo);
    EXPECT_EQ(ZRTestSamplesOfChannel(*stereo, 1), (std::vector<float> { 1.0f, -1.0f }));
    EXPECT_EQ(inactive.historyChannels(), 1u);
    EXPECT_EQ(inactive.z(0, 0), 0.0f);

    // Reference values from tests/dsp/ZRFilterReference.py (see ZRFilterTests): 64 frames of silence through a
    // fresh filter at 48000 Hz.
    struct Expected {
        std::unique_ptr<ZRWeightedFilter> filter;
        uint32_t crc;
        float first, last;
    };
    Expected expected[] = {
        { std::make_unique<ZRAWeightedFilter>(), 0x8376ec73, -0x1.2351f6p-23f, -0x1.6f46cp-20f },
        { std::make_unique<ZRBWeightedFilter>(), 0x3d9ad052, -0x1.868ceap-26f, -0x1.d7d99cp-21f },
        { std::make_unique<ZRCWeightedFilter>(), 0x2b19e899, -0x1.643de2p-29f, -0x1.36d74ap-22f },
    };
    for (Expected& weighting : expected) {
        weighting.filter->setActive(true);
        auto silence = ZRNativeAudioBuffer::bufferWithChannels(1, 64);
        weighting.filter->filter(*silence);
        EXPECT_EQ(silence->sampleValueAtIndex(0), weighting.first);
        EXPECT_EQ(silence->sampleValueAtIndex(63), weighting.last);
        EXPECT_EQ(ZRCRC().crcForBuffer(silence->channel(0), 64 * sizeof(float)), weighting.crc);
    }
}

TEST(ZRDCFilter, differentiatesUntilGivenARateAndABypassedFilterHoldsTheLastSample)
{
    ZRDCFilter filter;
    filter.setActive(true);
    auto ramp = ZRTestBufferWithChannels({ { 1.0f, 3.0f, 6.0f } });
    filter.filter(*ramp);
    EXPECT_EQ(ZRTestSamplesOfChannel(*ramp, 0), (std::vector<float> { 1.0f, 2.0f, 3.0f }));

    filter.setSampleRate(48000.0);
    EXPECT_EQ(decimal(filter.c0()), "0.9973750114");
    EXPECT_EQ(filter.x(0), 0.0f);
    filter.setSampleRate(44100.0);
    EXPECT_EQ(decimal(filter.c0()), "0.9971428514");

    filter.setActive(false);
    auto level = ZRTestBufferWithChannels({ { 0.25f, 0.5f, 0.75f } });
    filter.filter(*level);
    EXPECT_EQ(ZRTestSamplesOfChannel(*level, 0), (std::vector<float> { 0.25f, 0.5f, 0.75f }));
    EXPECT_EQ(filter.x(0), 0.75f);
    EXPECT_EQ(filter.y(0), 0.75f);

    // Switched on at that level, the output decays by c0 per sample; a single frame is processed too.
    filter.setActive(true);
    const float c0 = filter.c0();
    auto held = ZRTestBufferWithChannels({ { 0.75f, 0.75f } });
    filter.filter(*held);
    EXPECT_EQ(held->sampleValueAtIndex(0), c0 * 0.75f);
    EXPECT_EQ(held->sampleValueAtIndex(1), c0 * (c0 * 0.75f));
    auto single = ZRTestBufferWithChannels({ { 0.75f } });
    filter.filter(*single);
    EXPECT_EQ(single->sampleValueAtIndex(0), c0 * (c0 * (c0 * 0.75f)));

    filter.reset();
    EXPECT_EQ(filter.y(0), 0.0f);
}
