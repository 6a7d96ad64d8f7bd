#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include "support/ZRTestAudioBuffers.h"
#include "support/ZRTestFiles.h"
#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRFile.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include <vector>

namespace {

// Lengths that reach the vector loops, their four-sample steps and the scalar tails.
const uint32_t lengths[] = { 1, 3, 4, 15, 16, 17, 35, 4099 };

}

TEST(ZRNativeAudioBuffer, countsFramesAndChannelsAndTrimsTheEnabledSetByAFixedSpan)
{
    EXPECT_EQ(ZRNativeAudioBuffer::bufferWithChannels(0, 8), nullptr);
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 5);
    EXPECT_EQ(buffer->length(), 20u);
    EXPECT_TRUE(buffer->enabledChannels().isEmpty());

    buffer->enableAllChannels();
    buffer->setEnabled(false, 0);
    buffer->setEnabled(true, 2);
    EXPECT_EQ(buffer->enabledChannels(), ZRIndexSet({ 1 }));
    buffer->setEnabledChannels(ZRIndexSet({ 1, 5, 1024, 1025, 2000 }));
    buffer->setChannels(1);
    EXPECT_EQ(buffer->enabledChannels(), ZRIndexSet({ 1025, 2000 }));
    buffer->setEnabledChannels(ZRIndexSet({ 3 }));
    buffer->setChannels(3);
    EXPECT_EQ(buffer->enabledChannels(), ZRIndexSet({ 0 }));

    buffer->setFrames(7);
    buffer->setSampleValue(0.5f, 6, 2);
    auto copy = buffer->copy();
    EXPECT_EQ(copy->sampleValueAtIndex(6, 2), 0.5f);
    EXPECT_TRUE(copy->enabledChannels().isEmpty());
}

TEST(ZRNativeAudioBuffer, writesNothingOutsideItsSamples)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 3);
    const float values[] = { 1, 2, 3, 4 };
    buffer->setSampleValues(values, 4, 1);
    buffer->setSampleValues(values, 4, 2);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 1), std::vector<float>({ 1, 2, 3 }));
    buffer->setSampleValue(9.0f, 3, 0);
    buffer->scaleSampleBy(2.0f, 2, 1);
    buffer->scaleSampleBy(2.0f, 3, 1);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 1), std::vector<float>({ 1, 2, 6 }));
    buffer->clearChannel(2, 1.0f);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), std::vector<float>({ 0, 0, 0 }));
}

TEST(ZRNativeAudioBuffer, fadesLeaveTheLastFrameShortOfTheEndLevel)
{
    auto buffer = ZRTestBufferWithChannels({ { 1, 1, 1, 1 }, { 2, 2, 2, 2 } });
    buffer->fadeIn();
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), std::vector<float>({ 0, 0.25f, 0.5f, 0.75f }));
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 1), std::vector<float>({ 0, 0.5f, 1, 1.5f }));

    for (uint32_t frames : lengths) {
        auto ramp = ZRNativeAudioBuffer::bufferWithChannels(1, frames);
        ramp->clearWithValue(1.0f);
        ramp->fadeOut();
        const float step = float(-1.0 / frames);
        for (uint32_t i = 0; i < frames; ++i)
            ASSERT_EQ(ramp->sampleValueAtIndex(i), 1.0f + float(i) * step) << frames << " frames, frame " << i;
    }
}

TEST(ZRNativeAudioBuffer, editsEveryChannelOrTheOnesItIsGiven)
{
    for (uint32_t frames : lengths) {
        std::vector<float> ramp(frames);
        for (uint32_t i = 0; i < frames; ++i)
            ramp[i] = float(i);
        auto buffer = ZRTestBufferWithChannels({ ramp, ramp, ramp });
        buffer->reverse();
        EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 2), std::vector<float>(ramp.rbegin(), ramp.rend()))
            << frames << " frames";
        buffer->reverse();
        buffer->invertChannels(ZRIndexSet({ 0, 2 }));
        buffer->scaleChannels(2.0f, ZRIndexSet({ 1, 2 }));
        EXPECT_EQ(buffer->sampleValueAtIndex(frames - 1, 0), -float(frames - 1));
        EXPECT_EQ(buffer->sampleValueAtIndex(frames - 1, 1), 2.0f * float(frames - 1));
        EXPECT_EQ(buffer->sampleValueAtIndex(frames - 1, 2), -2.0f * float(frames - 1));
    }

    auto buffer = ZRTestBufferWithChannels({ { 1, 1, 1, 1, 1, 1 } });
    buffer->scale(2.0f, 0, { 4, 10 });
    buffer->scale(3.0f, 0, { 6, 2 });
    // The end of this range wraps in 32 bits; it still reaches the end of the buffer.
    buffer->scale(5.0f, 0, { 5, 0xFFFFFFFF });
    buffer->scale(7.0f, 1, { 0, 6 });
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), std::vector<float>({ 1, 1, 1, 1, 2, 10 }));
    buffer->clearWithValue(-0.0f);
    EXPECT_TRUE(std::signbit(buffer->sampleValueAtIndex(5)));
    buffer->invert();
    buffer->scale(0.5f);
    EXPECT_FALSE(std::signbit(buffer->sampleValueAtIndex(5)));
}

TEST(ZRNativeAudioBuffer, copiesAndMixesWithTheirCodes)
{
    auto source = ZRTestBufferWithChannels({ { 1, 2 }, { 3, 4 } });
    auto target = ZRNativeAudioBuffer::bufferWithChannels(2, 10);
    ZRErrorPtr error;
    const auto code = [&error](bool succeeded) { return succeeded ? 0 : error->code(); };
    EXPECT_TRUE(target->copyAudioBuffer(*source, 2, &error));
    EXPECT_EQ(ZRTestSamplesOfChannel(*target, 1), std::vector<float>({ 0, 0, 3, 4, 0, 0, 0, 0, 0, 0 }));
    // The frame position is tested as if it were bytes: 2 + 3 × 4 exceeds 10 frames.
    EXPECT_EQ(code(target->copyAudioBuffer(*source, 3, &error)), 4);
    EXPECT_EQ(error->localizedDescription(), "Copying a buffer channel failed because an undefined error occurred: 4");
    EXPECT_EQ(code(target->copyAudioBuffer(*ZRNativeAudioBuffer::bufferWithChannels(1, 2), 0, &error)), 7);

    EXPECT_TRUE(target->copyFrames({ 1, 1 }, 0, *source, 9, 0, &error));
    EXPECT_EQ(target->sampleValueAtIndex(9, 0), 2.0f);
    EXPECT_EQ(code(target->copyFrames({ 1, 2 }, 0, *source, 0, 0, &error)), 5);
    EXPECT_TRUE(target->appendFrames({ 0, 2 }, *source, &error));
    EXPECT_EQ(target->sampleValueAtIndex(11, 1), 4.0f);

    auto mixed = ZRTestBufferWithChannels({ { 1, 1 }, { 2, 2 } });
    EXPECT_TRUE(mixed->mixAudioBuffer(*source, 0.5f, &error));
    EXPECT_EQ(ZRTestSamplesOfChannel(*mixed, 1), std::vector<float>({ 3.5f, 4 }));
    EXPECT_TRUE(mixed->mixChannel(1, *source, 0, -1.0f, &error));
    EXPECT_EQ(ZRTestSamplesOfChannel(*mixed, 0), std::vector<float>({ -1.5f, -2 }));
    EXPECT_EQ(code(mixed->mixAudioBuffer(*ZRNativeAudioBuffer::bufferWithChannels(3, 2), &error)), 7);
    EXPECT_EQ(error->localizedDescription(), "Mixing buffers failed because an undefined error occurred: 7");
    EXPECT_EQ(code(mixed->mixChannel(0, *target, 0, 1.0f, &error)), 4);
    EXPECT_EQ(code(mixed->mixChannel(0, *source, 2, 1.0f, &error)), 2);
    EXPECT_EQ(code(mixed->mixChannel(2, *source, 0, 1.0f, &error)), 3);
}

TEST(ZRNativeAudioBuffer, combinesChannelsBySumAverageAndDifference)
{
    auto buffer = ZRTestBufferWithChannels({ { 1, 1, 1 }, { 0.5f, 0.5f, 0.5f }, { 0.25f, 0.25f, 0.25f } });
    const float expected[] = { 1.5f, 0.75f, 0.5f, 0.25f, 0 };
    for (uint32_t method = 0; method < 5; ++method) {
        auto combined = buffer->combinedChannelsAtIndexes(ZRIndexSet({ 0, 1, 7 }), method);
        ASSERT_NE(combined, nullptr);
        EXPECT_EQ(combined->channels(), 1u);
        EXPECT_EQ(ZRTestSamplesOfChannel(*combined, 0), std::vector<float>(3, expected[method])) << "method " << method;
    }
    EXPECT_EQ(buffer->combinedChannelsWithMethod(ZRNativeAudioBuffer::CombineAveragedDifference)->sampleValueAtIndex(2),
        0.25f);
    EXPECT_EQ(buffer->combinedChannelsAtIndexes(ZRIndexSet({ 1 }), 1)->sampleValueAtIndex(0), 0.5f);
}

TEST(ZRNativeAudioBuffer, measuresEachChannelAsADirectComputationDoes)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> distribution(-0.8f, 0.6f);
    for (uint32_t frames : lengths) {
        std::vector<float> samples(frames);
        double squares = 0, magnitudes = 0;
        float largest = -1, smallest = 1, peak = 0;
        for (float& sample : samples) {
            sample = distribution(random);
            squares += double(sample) * sample;
            magnitudes += std::fabs(sample);
            largest = std::max(largest, sample);
            smallest = std::min(smallest, sample);
            peak = std::max(peak, std::fabs(sample));
        }
        auto buffer = ZRTestBufferWithChannels({ samples });
        EXPECT_EQ(buffer->maximumOfChannel(0), largest);
        EXPECT_EQ(buffer->minimumOfChannel(0), smallest);
        EXPECT_EQ(buffer->peakOfChannel(0), peak);
        EXPECT_FLOAT_EQ(buffer->energyOfChannel(0), float(squares));
        EXPECT_FLOAT_EQ(buffer->rmsOfChannel(0), float(std::sqrt(squares / frames)));
        EXPECT_FLOAT_EQ(buffer->averageOfChannel(0), float(magnitudes / frames));
        EXPECT_FLOAT_EQ(buffer->formFactorOfChannel(0), buffer->rmsOfChannel(0) / buffer->averageOfChannel(0));
        EXPECT_FLOAT_EQ(buffer->crestFactorOfChannel(0), peak / buffer->rmsOfChannel(0));
        EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(peak, 0, false),
            std::find_if(samples.begin(), samples.end(), [&](float x) { return std::fabs(x) == peak; })
                - samples.begin());
    }

    // A million samples summed one by one in float would be off by more than a percent.
    auto tenth = ZRNativeAudioBuffer::bufferWithChannels(1, 1 << 20);
    tenth->clearWithValue(0.1f);
    const double energy = double(0.1f * 0.1f) * (1 << 20);
    EXPECT_NEAR(tenth->energyOfChannel(0), energy, energy * 1e-5);
    EXPECT_EQ(tenth->aes17OfChannel(0), float(double(tenth->rmsOfChannel(0)) * std::pow(10.0, 0.15)));
    tenth->clearWithValue(1.0f);
    EXPECT_EQ(tenth->aes17OfChannel(0), 1.41253757f);
}

TEST(ZRNativeAudioBuffer, measuresTheWholeBufferAndWatchesOnlyThePositiveRail)
{
    auto buffer = ZRTestBufferWithChannels({ { -0.5f, -0.25f }, { -1, -0.5f } });
    EXPECT_EQ(buffer->maximum(), 0.0f);
    EXPECT_EQ(buffer->minimum(), -1.0f);
    EXPECT_EQ(buffer->peak(), 1.0f);
    EXPECT_FLOAT_EQ(buffer->energy(), (0.3125f + 1.25f) / 2);
    EXPECT_FLOAT_EQ(buffer->average(), (0.375f + 0.75f) / 2);
    EXPECT_FLOAT_EQ(buffer->rms(), std::sqrt((0.3125f + 1.25f) / 4));
    EXPECT_FLOAT_EQ(buffer->crestFactor(), 1.0f / buffer->rms());
    EXPECT_EQ(buffer->averageOfChannels(ZRIndexSet({ 0, 1, 2 }), 1), 0.25f);
    EXPECT_FALSE(buffer->clipped());

    auto silence = ZRNativeAudioBuffer::bufferWithChannels(2, 64);
    EXPECT_EQ(silence->formFactor(), 0.0f);
    EXPECT_EQ(silence->crestFactor(), 0.0f);

    EXPECT_TRUE(ZRTestBufferWithChannels({ { 0.5f, 1.0f, 1.0f, 0.2f } })->clippedChannel(0));
    EXPECT_FALSE(ZRTestBufferWithChannels({ { 1.0f, 0.2f, 1.0f } })->clippedChannel(0));
    for (uint32_t frames : lengths) {
        auto rail = ZRNativeAudioBuffer::bufferWithChannels(2, frames);
        rail->clearWithValue(-1.0f);
        for (uint32_t i = 0; i < frames; i += 2)
            rail->setSampleValue(1.0f, i, 1);
        EXPECT_FALSE(rail->clipped()) << frames << " frames";
        if (frames < 2)
            continue;
        rail->setSampleValue(1.5f, frames - 1, 1);
        rail->setSampleValue(1.0f, frames - 2, 1);
        EXPECT_TRUE(rail->clipped()) << frames << " frames";
    }
}

TEST(ZRNativeAudioBuffer, searchesForAMagnitudeAndReadsInterleavedPeaksInsideTheBuffer)
{
    auto buffer = ZRTestBufferWithChannels({ std::vector<float>(40, 0.1f), std::vector<float>(40, 0.1f) });
    buffer->setSampleValue(-0.5f, 3, 1);
    buffer->setSampleValue(0.5f, 30, 1);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.5f, 1, false), 3u);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.5f, 1, true), 30u);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.5f, true), 30u);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.1f, true), 39u);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.6f, 1, false), ZRNotFound);
    EXPECT_EQ(buffer->positionOfSampleGreaterThanOrEqualToMagnitude(0.1f, 2, false), ZRNotFound);

    // A host list of three interleaved channels: frames (0.1, -0.2, 0.3), (0.4, -0.5, 0.6).
    float samples[] = { 0.1f, -0.2f, 0.3f, 0.4f, -0.5f, 0.6f };
    AudioBufferList list { 1, { { 3, sizeof samples, samples } } };
    auto interleaved = std::make_unique<ZRNativeAudioBuffer>(&list);
    EXPECT_EQ(interleaved->peakOfChannel(0), 0.4f);
    EXPECT_EQ(interleaved->peakOfChannel(1), 0.5f);
    EXPECT_EQ(interleaved->peakOfChannel(2), 0.6f);
    // Channel 3 is accepted and reads the next frame's first sample; the one after the buffer is not read.
    EXPECT_EQ(interleaved->peakOfChannel(3), 0.4f);
    EXPECT_EQ(interleaved->peakOfChannel(4), 0.0f);
}

TEST(ZRNativeAudioBuffer, readsFramesFromOneFilePerChannel)
{
    const std::string folder = ZRTestScratchFolder("ZRNativeAudioBufferRead");
    const float samples[] = { 0.25f, 0.5f, 0.75f, 1, 1.25f, 1.5f };
    std::vector<std::unique_ptr<ZRFile>> files;
    for (const char* name : { "/left", "/right" }) {
        std::ofstream(folder + name, std::ios::binary).write(reinterpret_cast<const char*>(samples), sizeof samples);
        files.push_back(ZRFile::fileWithPath(folder + name));
    }
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 4);
    buffer->clearWithValue(9.0f);
    ZRFile* const handles[] = { files[0].get(), files[1].get() };
    EXPECT_EQ(buffer->readFromFilesFrames(handles, 2), 2);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 1), std::vector<float>({ 0.25f, 0.5f, 0, 0 }));
    // A count beyond the buffer reads what the buffer holds.
    EXPECT_EQ(buffer->readFromFilesFrames(handles, std::numeric_limits<int64_t>::max()), 4);
    EXPECT_EQ(ZRTestSamplesOfChannel(*buffer, 0), std::vector<float>({ 0.75f, 1, 1.25f, 1.5f }));
}

TEST(ZRNativeAudioBuffer, staysInsideEveryBufferWhateverTheArguments)
{
    std::vector<std::unique_ptr<ZRNativeAudioBuffer>> buffers;
    buffers.push_back(std::make_unique<ZRNativeAudioBuffer>());
    buffers.push_back(ZRNativeAudioBuffer::bufferWithChannels(2, 0));
    buffers.push_back(ZRNativeAudioBuffer::bufferWithChannels(1, 1));
    buffers.push_back(ZRNativeAudioBuffer::bufferWithChannels(2, 37));
    buffers.push_back(ZRNativeAudioBuffer::bufferWithChannels(2, 37));
    buffers.back()->resetForRenderWithFrames(37);
    const uint32_t edges[] = { 0, 1, 2, 36, 37, 0x7FFFFFFF, 0xFFFFFFFF };
    const std::vector<float> loud(40, 1.5f);
    for (const auto& buffer : buffers) {
        const uint32_t frames = buffer->frames();
        buffer->clearWithValue(1.0f);
        buffer->fadeIn();
        buffer->fadeOut();
        buffer->reverse();
        buffer->invert();
        buffer->scale(2.0f);
        for (uint32_t channel : edges) {
            for (uint32_t index : edges) {
                buffer->setSampleValue(0.5f, index, channel);
                buffer->scaleSampleBy(2.0f, index, channel);
                buffer->scale(2.0f, channel, { index, 0xFFFFFFFF });
                buffer->scale(2.0f, channel, { 0xFFFFFFFF, index });
                EXPECT_EQ(buffer->averageOfChannels(ZRIndexSet({ 0, channel }), index) != 0.0f,
                    buffer->channel(0) && index < frames);
            }
            buffer->invertChannel(channel);
            buffer->clearChannel(channel);
            buffer->clearChannel(channel, -1.0f);
            buffer->setSampleValues(loud.data(), uint32_t(loud.size()), channel);
            const bool hasSamples = buffer->channel(channel) && frames > 0;
            EXPECT_EQ(buffer->peakOfChannel(channel) != 0.0f, hasSamples);
            EXPECT_EQ(buffer->minimumOfChannel(channel) != 0.0f, hasSamples);
            EXPECT_EQ(buffer->rmsOfChannel(channel) != 0.0f, hasSamples);
            EXPECT_EQ(buffer->clippedChannel(channel), hasSamples && frames > 1);
            EXPECT_EQ(
                buffer->positionOfSampleGreaterThanOrEqualToMagnitude(1.0f, channel, true) != ZRNotFound, hasSamples);
        }
        auto combined = buffer->combinedChannelsWithMethod(1);
        ASSERT_NE(combined, nullptr);
        EXPECT_EQ(combined->frames(), frames);
    }
}
