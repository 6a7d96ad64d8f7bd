#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRBiquadFilter.h>
#include <zrbase/dsp/ZRDCFilter.h>
#include <zrbase/dsp/ZRLowpassFilter.h>

#include "support/ZRTestAudioBuffers.h"
#include <zrbase/core/ZRCRC.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

// A filter of the type, active, set up the way the reference outputs below were computed.
std::unique_ptr<ZRFilter> referenceFilter(uint32_t type)
{
    std::unique_ptr<ZRFilter> filter = ZRFilter::filterClassForType(type)->filter();
    const double rates[] = { 48000, 44100, 96000, 48000, 96000, 44100, 44100 };
    filter->setSampleRate(rates[type]);
    if (auto* biquad = dynamic_cast<ZRBiquadFilter*>(filter.get())) {
        const float frequencies[] = { 1000, 250, 3000 }, bandwidths[] = { 2, 1, 0.5 };
        biquad->setBandwidth(bandwidths[type]);
        biquad->setFrequency(frequencies[type]);
    }
    filter->setActive(true);
    return filter;
}

// 256 samples of noise in [-0.5, 0.5), 128 of silence, 128 of a square wave of 0.9 with a period of 16.
std::vector<float> referenceSignal()
{
    std::vector<float> samples;
    uint32_t state = 12345;
    for (int n = 0; n < 256; ++n) {
        state = state * 1664525u + 1013904223u;
        samples.push_back(std::ldexp(float(int32_t(state >> 8) - (1 << 23)), -24));
    }
    samples.resize(384, 0.0f);
    for (int n = 0; n < 128; ++n)
        samples.push_back((n / 8) % 2 ? -0.9f : 0.9f);
    return samples;
}

uint32_t crcOf(const std::vector<float>& samples)
{
    return ZRCRC().crcForBuffer(samples.data(), uint32_t(samples.size() * sizeof(float)));
}

// Filters `channels` in blocks of the given lengths, one filter for all of them together or one for each alone.
std::vector<std::vector<float>> filtered(
    uint32_t type, const std::vector<std::vector<float>>& channels, const std::vector<uint32_t>& blocks, bool together)
{
    std::vector<std::vector<float>> result(channels.size());
    std::vector<std::unique_ptr<ZRFilter>> filters;
    for (size_t i = 0; i < (together ? 1 : channels.size()); ++i)
        filters.push_back(referenceFilter(type));
    uint32_t start = 0;
    for (uint32_t length : blocks) {
        for (size_t i = 0; i < filters.size(); ++i) {
            std::vector<std::vector<float>> block;
            for (size_t channel = together ? 0 : i; channel < (together ? channels.size() : i + 1); ++channel)
                block.emplace_back(channels[channel].begin() + start, channels[channel].begin() + start + length);
            auto buffer = ZRTestBufferWithChannels(block);
            filters[i]->filter(*buffer);
            for (uint32_t channel = 0; channel < block.size(); ++channel) {
                const std::vector<float> samples = ZRTestSamplesOfChannel(*buffer, channel);
                auto& output = result[together ? channel : i];
                output.insert(output.end(), samples.begin(), samples.end());
            }
        }
        start += length;
    }
    return result;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

}

TEST(ZRFilter, typeTableMakesEachClassAndTheBaseFiltersNothing)
{
    const char* names[] = { "ZRLowpassFilter", "ZRHighpassFilter", "ZRBandpassFilter", "ZRAWeightedFilter",
        "ZRCWeightedFilter", "ZRBWeightedFilter", "ZRDCFilter" };
    for (uint32_t type = 0; type <= ZRFilter::DC; ++type) {
        const ZRFilterClass* filterClass = ZRFilter::filterClassForType(type);
        ASSERT_NE(filterClass, nullptr);
        EXPECT_EQ(filterClass->name, names[type]);
        std::unique_ptr<ZRFilter> filter = filterClass->filter();
        EXPECT_EQ(&filter->filterClass(), filterClass);
        EXPECT_EQ(filter->type(), type);
        EXPECT_FALSE(filter->active());
        EXPECT_EQ(filter->sampleRate(), 48000.0);
    }
    for (uint32_t type : { 7u, 0x7fffffffu, 0xffffffffu })
        EXPECT_EQ(ZRFilter::filterClassForType(type), nullptr);

    ZRFilter base;
    EXPECT_EQ(base.type(), 0x7fffffffu);
    base.setActive(true);
    auto buffer = ZRTestBufferWithChannels({ { 0.5f, -0.5f, 1.0f } });
    base.filter(*buffer);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), (std::vector<float> { 0.5f, -0.5f, 1.0f }));
    EXPECT_EQ(base.state(), (ZRDictionary { { "class", "ZRFilter" }, { "active", true } }));
    EXPECT_EQ(ZRBiquadFilter().state().at("class"), "ZRBiquadFilter");
}

TEST(ZRFilter, stateCarriesClassActivityAndBiquadParametersAndIgnoresUnusableValues)
{
    auto lowpass = referenceFilter(ZRFilter::Lowpass);
    lowpass->setActive(false);
    const ZRDictionary state = lowpass->state();
    EXPECT_EQ(state,
        (ZRDictionary {
            { "class", "ZRLowpassFilter" }, { "active", false }, { "frequency", 1000.0f }, { "bandwidth", 2.0f } }));
    ZRLowpassFilter copy;
    copy.setState(state);
    auto& original = dynamic_cast<ZRBiquadFilter&>(*lowpass);
    EXPECT_EQ(copy.c0(), original.c0());
    EXPECT_EQ(copy.c4(), original.c4());

    copy.setState({ { "active", "YES" }, { "frequency", ZRArray { 1 } }, { "bandwidth", ZRData { 1 } } });
    EXPECT_TRUE(copy.active());
    EXPECT_EQ(copy.frequency(), 1000.0f);
    EXPECT_EQ(copy.bandwidth(), 2.0f);
    copy.setState({ { "active", ZRDictionary {} }, { "frequency", "250.5" } });
    EXPECT_TRUE(copy.active());
    EXPECT_EQ(copy.frequency(), 250.5f);

    for (uint32_t type = ZRFilter::AWeighted; type <= ZRFilter::DC; ++type) {
        auto filter = ZRFilter::filterClassForType(type)->filter();
        filter->setState({ { "active", 1 }, { "frequency", 10 } });
        EXPECT_EQ(filter->state(),
            (ZRDictionary { { "class", std::string(filter->filterClass().name) }, { "active", true } }));
    }
}

// The outputs were computed once, independently of the library, by tests/dsp/ZRFilterReference.py: a plain
// evaluation of each filter's formulas, one sample at a time, with every float operation done in double and
// rounded to float (which is exact rounding for +, -, x and /) and cosf/sinf from the C library. Every channel of
// a 9-channel buffer carries the same signal, so eight go through the vector lanes and one through the one-channel
// loop; the blocks of 300 and 212 frames also carry the history across a call.
TEST(ZRFilter, everyTypeComputesItsFormulasBitForBit)
{
    struct Expected {
        uint32_t crc;
        float sample1, sample300, sample511;
    };
    const Expected expected[] = {
        { 0xf0d75a67, -0x1.26a5c4p-7f, 0x1.6cd3d4p-12f, -0x1.22c3dep-5f },
        { 0xe98c1188, -0x1.dc1374p-2f, -0x1.16eed2p-5f, -0x1.969d3cp-1f },
        { 0x5544f7b3, -0x1.795e6ep-5f, 0x1.b38ebcp-10f, -0x1.1b685p-2f },
        { 0xfc0cb5ea, -0x1.cf3ff4p-2f, 0x1.c8acbep-11f, -0x1.7764f4p-1f },
        { 0xd16cc24a, -0x1.fc7964p-3f, -0x1.2de3f6p-8f, -0x1.c987fcp-1f },
        { 0xba33576b, -0x1.abc8b4p-2f, -0x1.1c7b28p-9f, -0x1.ada944p-1f },
        { 0x4f7c1b1f, -0x1.eda6e2p-2f, -0x1.04b74ap-8f, -0x1.cd9cb6p-1f },
    };
    const std::vector<std::vector<float>> channels(9, referenceSignal());
    for (uint32_t type = 0; type <= ZRFilter::DC; ++type) {
        SCOPED_TRACE(type);
        for (const std::vector<float>& output : filtered(type, channels, { 300, 212 }, true)) {
            EXPECT_EQ(output[1], expected[type].sample1);
            EXPECT_EQ(output[300], expected[type].sample300);
            EXPECT_EQ(output[511], expected[type].sample511);
            EXPECT_EQ(crcOf(output), expected[type].crc);
        }
    }
}

// Channel 1 carries non-finite samples, which must not reach the channels beside it in the vector lanes.
TEST(ZRFilter, channelsFilteredTogetherMatchEachFilteredAloneBitForBit)
{
    std::vector<std::vector<float>> channels(9);
    uint32_t state = 1;
    for (auto& channel : channels) {
        for (int n = 0; n < 200; ++n) {
            state = state * 1664525u + 1013904223u;
            channel.push_back(std::ldexp(float(int32_t(state)), -31));
        }
    }
    const float infinity = std::numeric_limits<float>::infinity();
    channels[1][3] = std::numeric_limits<float>::quiet_NaN();
    channels[1][9] = infinity;
    channels[1][10] = -infinity;
    channels[1][20] = std::numeric_limits<float>::max();
    // Blocks that fill whole groups of eight frames, leave tails, and hold a single frame.
    const std::vector<uint32_t> blocks = { 64, 13, 1, 8, 7, 107 };
    for (uint32_t type = 0; type <= ZRFilter::DC; ++type) {
        for (uint32_t count = 1; count <= 9; ++count) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", " << count << " channels");
            const std::vector<std::vector<float>> some(channels.begin(), channels.begin() + count);
            const auto together = filtered(type, some, blocks, true);
            const auto alone = filtered(type, some, blocks, false);
            for (uint32_t channel = 0; channel < count; ++channel) {
                if (channel == 1)
                    EXPECT_FALSE(std::isfinite(together[1].back()));
                else
                    EXPECT_TRUE(sameBits(together[channel], alone[channel])) << "channel " << channel;
            }
        }
    }
}

TEST(ZRFilter, historyFollowsAnyBufferShapeWithoutTouchingOthersMemory)
{
    for (uint32_t type = 0; type <= ZRFilter::DC; ++type) {
        SCOPED_TRACE(type);
        auto filter = referenceFilter(type);
        EXPECT_EQ(filter->historyChannels(), 1u);
        ZRNativeAudioBuffer empty;
        filter->filter(empty);
        auto noFrames = ZRNativeAudioBuffer::bufferWithChannels(3, 0);
        filter->filter(*noFrames);
        // Only the weighting filters follow the channels of a buffer without frames.
        EXPECT_EQ(filter->historyChannels(), type >= ZRFilter::AWeighted && type <= ZRFilter::BWeighted ? 3u : 1u);

        for (uint32_t channels : { 3u, 12u, 2u, 5u }) {
            auto buffer = ZRTestBufferWithChannels(std::vector<std::vector<float>>(channels, { 0.5f, -0.25f }));
            filter->filter(*buffer);
            EXPECT_EQ(filter->historyChannels(), channels);
        }

        // A list from elsewhere with a channel shorter than the others and one without data: both are skipped.
        float first[4] = { 1, 1, 1, 1 }, second[2] = { 1, 1 };
        std::vector<uint8_t> storage(ZRAudioBufferListSize(3));
        auto* list = reinterpret_cast<AudioBufferList*>(storage.data());
        list->mNumberBuffers = 3;
        list->mBuffers[0] = { 1, sizeof first, first };
        *(list->mBuffers + 1) = { 1, sizeof second, second };
        *(list->mBuffers + 2) = { 1, sizeof first, nullptr };
        ZRNativeAudioBuffer wrapped(list);
        filter->filter(wrapped);
        EXPECT_EQ(second[0], 1.0f);
        EXPECT_EQ(second[1], 1.0f);
        EXPECT_EQ(filter->historyChannels(), 3u);
    }
}
