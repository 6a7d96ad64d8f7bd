#include <zrbase/codec/ZRConverter.h>
#include <zrbase/codec/ZRCoreAudioFile.h>
#include <zrbase/core/ZRConverterError.h>

#include "support/ZRTestAudioTools.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <thread>

namespace {

ZRAudioStreamDescription pcm(double rate, uint32_t channels, uint32_t bits, AudioFormatFlags flags)
{
    const bool nonInterleaved = flags & kAudioFormatFlagIsNonInterleaved;
    const uint32_t bytes = bits / 8 * (nonInterleaved ? 1 : channels);
    return ZRAudioStreamDescription(AudioStreamBasicDescription {
        rate, kAudioFormatLinearPCM, flags | kAudioFormatFlagIsPacked, bytes, 1, bytes, channels, bits, 0 });
}

constexpr AudioFormatFlags sint = kAudioFormatFlagIsSignedInteger;

// Hands out a file's packets a run at a time, then the end.
struct PacketSource {
    ZRCoreAudioFile* file;
    static OSStatus supply(AudioConverterRef, uint32_t* packets, AudioBufferList* data,
        AudioStreamPacketDescription** descriptions, void* user)
    {
        auto& self = *static_cast<PacketSource*>(user);
        uint32_t count = std::min(*packets, 16U);
        if (!self.file->readNumberOfPackets(&count))
            return -1;
        data->mBuffers[0] = { 2, self.file->readBuffer()->length(), self.file->readBuffer()->buffer() };
        *descriptions = const_cast<AudioStreamPacketDescription*>(self.file->packetDescriptions());
        *packets = count;
        return noErr;
    }
};

// Hands out a block of native float in runs of at most `run` frames, then the end.
struct BlockSource {
    const ZRNativeAudioBuffer* block;
    uint32_t run = UINT32_MAX;
    uint32_t at = 0;
    static OSStatus supply(
        AudioConverterRef, uint32_t* packets, AudioBufferList* data, AudioStreamPacketDescription**, void* user)
    {
        auto& self = *static_cast<BlockSource*>(user);
        const uint32_t count = std::min({ *packets, self.run, self.block->frames() - self.at });
        for (uint32_t i = 0; i < self.block->channels(); ++i)
            data->mBuffers[i] = { 1, count * 4, self.block->channel(i) + self.at };
        self.at += count;
        *packets = count;
        return noErr;
    }
};

} // namespace

TEST(ZRConverter, ConvertsLinearPCMLayoutsExactly)
{
    // 16-bit interleaved little-endian to native float and on through 24-bit big-endian non-interleaved back.
    const int16_t input[] = { 0, 16384, -32768, 32767, -1, 1 };
    auto toFloat
        = ZRConverter::converterWithSourceFormat(pcm(44100, 2, 16, sint), pcm(44100, 2, 32, kAudioFormatFlagIsFloat));
    ASSERT_TRUE(toFloat);
    float floats[6];
    ASSERT_TRUE(toFloat->convertInput(input, sizeof input, floats, sizeof floats));
    const float expected[] = { 0, 0.5f, -1, 32767 / 32768.0f, -1 / 32768.0f, 1 / 32768.0f };
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(floats[i], expected[i]) << i;

    auto to24 = ZRConverter::converterWithSourceFormat(
        pcm(44100, 1, 32, kAudioFormatFlagIsFloat), pcm(44100, 1, 24, sint | kAudioFormatFlagIsBigEndian));
    uint8_t packed[18];
    ASSERT_TRUE(to24->convertInput(floats, sizeof floats, packed, sizeof packed));
    EXPECT_EQ(packed[3], 0x40); // 0.5 is 0x400000
    EXPECT_EQ(packed[4], 0x00);
    EXPECT_EQ(packed[6], 0x80); // -1 is 0x800000
    auto back = ZRConverter::converterWithSourceFormat(
        pcm(44100, 1, 24, sint | kAudioFormatFlagIsBigEndian), pcm(44100, 1, 16, sint));
    int16_t roundTrip[6];
    ASSERT_TRUE(back->convertInput(packed, sizeof packed, roundTrip, sizeof roundTrip));
    EXPECT_EQ(std::vector<int16_t>(roundTrip, roundTrip + 6), std::vector<int16_t>(input, input + 6));

    // Full scale clips instead of wrapping, and unsigned 8-bit centres on 128.
    auto toUnsigned
        = ZRConverter::converterWithSourceFormat(pcm(44100, 1, 32, kAudioFormatFlagIsFloat), pcm(44100, 1, 8, 0));
    const float loud[] = { 1.5f, -2, 0, 0.5f };
    uint8_t bytes[4];
    ASSERT_TRUE(toUnsigned->convertInput(loud, sizeof loud, bytes, sizeof bytes));
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 4), (std::vector<uint8_t> { 255, 0, 128, 192 }));
}

TEST(ZRConverter, PullsInterleavedAudioIntoANativeBuffer)
{
    auto converter
        = ZRConverter::converterWithSourceFormat(pcm(44100, 2, 16, sint), ZRAudioStreamDescription(44100, 2));
    ASSERT_TRUE(converter);
    constexpr int frames = 600;
    auto source = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4 * frames);
    auto* samples = static_cast<int16_t*>(source->buffer());
    for (int i = 0; i < frames; ++i) {
        samples[2 * i] = int16_t(i * 50);
        samples[2 * i + 1] = int16_t(-i);
    }
    source->setChannelsPerBuffer(2);
    auto destination = ZRNativeAudioBuffer::bufferWithChannels(2, frames);
    EXPECT_EQ(converter->convertBufferToNativeBuffer(*source, *destination), uint32_t(frames));
    EXPECT_EQ(destination->sampleValueAtIndex(100, 0), 5000 / 32768.0f);
    EXPECT_EQ(destination->sampleValueAtIndex(100, 1), -100 / 32768.0f);

    // The other direction asks for the source's frames and gives every sample back; a smaller destination takes
    // what fits.
    auto back = ZRConverter::converterWithSourceFormat(ZRAudioStreamDescription(44100, 2), pcm(44100, 2, 16, sint));
    auto whole = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4 * frames);
    EXPECT_EQ(back->convertNativeBuffer(*destination, *whole), uint32_t(frames));
    EXPECT_EQ(std::vector<int16_t>(samples, samples + 2 * frames),
        std::vector<int16_t>(
            static_cast<int16_t*>(whole->buffer()), static_cast<int16_t*>(whole->buffer()) + 2 * frames));
    auto small = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4 * 100);
    EXPECT_EQ(back->convertNativeBuffer(*destination, *small), 100U);
    EXPECT_EQ(static_cast<int16_t*>(small->buffer())[2 * 99], 4950);
}

TEST(ZRConverter, ChangesTheRateWithoutChangingTheSignal)
{
    // The signal-to-noise ratio of a tone taken from 44.1 to 48 kHz at a quality.
    const auto convertedSNR = [](double frequency, uint32_t quality) {
        auto converter = ZRConverter::converterWithSourceFormat(
            ZRAudioStreamDescription(44100, 1), ZRAudioStreamDescription(48000, 1));
        EXPECT_EQ(converter->quality(), kAudioConverterQuality_Max);
        EXPECT_TRUE(converter->setQuality(quality));
        EXPECT_EQ(converter->quality(), quality);
        auto block = ZRNativeAudioBuffer::bufferWithChannels(1, 44100);
        for (uint32_t i = 0; i < 44100; ++i)
            block->setSampleValue(float(0.5 * std::sin(2 * std::numbers::pi * frequency * i / 44100.0)), i);
        BlockSource source { block.get() };
        converter->setCallback(BlockSource::supply, &source);
        auto output = ZRNativeAudioBuffer::bufferWithChannels(1, 60000);
        EXPECT_EQ(converter->convertToNativeBufferUsingCallback(*output), 48000U);
        std::vector<float> expected;
        std::vector<float> actual;
        for (uint32_t i = 1000; i < 47000; ++i) {
            expected.push_back(float(0.5 * std::sin(2 * std::numbers::pi * frequency * i / 48000.0)));
            actual.push_back(output->sampleValueAtIndex(i));
        }
        return ZRTestSNR(expected, actual);
    };
    // The default and the very-high recipe keep a tone clean up to 19 kHz; the high one is less precise; the low one
    // keeps less of the band, and the quick one is only an interpolation.
    EXPECT_GT(convertedSNR(1000, kAudioConverterQuality_Max), 140);
    EXPECT_GT(convertedSNR(19000, kAudioConverterQuality_Max), 60);
    const double high = convertedSNR(1000, kAudioConverterQuality_High);
    EXPECT_GT(high, 120);
    EXPECT_LT(high, 140);
    EXPECT_GT(convertedSNR(19000, kAudioConverterQuality_Medium), 20);
    EXPECT_GT(convertedSNR(15000, kAudioConverterQuality_Low), 80);
    EXPECT_LT(convertedSNR(19000, kAudioConverterQuality_Low), 10);
    EXPECT_LT(convertedSNR(15000, kAudioConverterQuality_Min), 20);
}

TEST(ZRConverter, ResamplesAlikeInAnyBlocks)
{
    // Whether the input reaches the resampler straight or queued, and the output leaves it straight into the
    // caller's buffer or through the queue, every frame comes out once, in its channel and in order.
    auto input = ZRNativeAudioBuffer::bufferWithChannels(2, 44100);
    for (uint32_t channel = 0; channel < 2; ++channel) {
        for (uint32_t i = 0; i < 44100; ++i)
            input->setSampleValue(ZRTestSignal(channel, i), i, channel);
    }
    const auto convert = [&](uint32_t run, uint32_t block) {
        auto converter = ZRConverter::converterWithSourceFormat(
            ZRAudioStreamDescription(44100, 2), ZRAudioStreamDescription(48000, 2));
        BlockSource source { input.get(), run };
        converter->setCallback(BlockSource::supply, &source);
        auto part = ZRNativeAudioBuffer::bufferWithChannels(2, block);
        std::vector<std::vector<float>> frames(2);
        uint32_t made = 0;
        do {
            part->setFrames(block);
            made = converter->convertToNativeBufferUsingCallback(*part);
            for (uint32_t channel = 0; channel < 2; ++channel)
                frames[channel].insert(frames[channel].end(), part->channel(channel), part->channel(channel) + made);
        } while (made == block);
        return frames;
    };
    const auto whole = convert(UINT32_MAX, 60000);
    ASSERT_EQ(whole[0].size(), 48000U);
    for (uint32_t channel = 0; channel < 2; ++channel) {
        std::vector<float> expected;
        for (uint32_t i = 1000; i < 47000; ++i)
            expected.push_back(ZRTestSignal(channel, i, 48000));
        EXPECT_GT(ZRTestSNR(expected, { whole[channel].begin() + 1000, whole[channel].begin() + 47000 }), 80);
    }
    EXPECT_EQ(convert(333, 77), whole);
    EXPECT_EQ(convert(4096, 1000), whole);
}

TEST(ZRConverter, DecodesPacketsWithTheFileCookie)
{
    const std::string path = ZRTestScratchFolder("ConverterDecode") + "/tone.m4a";
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=f=440:d=1 -ac 2 -c:a aac '" + path + "'"));
    auto file = ZRCoreAudioFile::fileWithPath(path);
    ASSERT_TRUE(file);
    auto converter = ZRConverter::converterWithSourceFormat(file->audioFormat(), ZRAudioStreamDescription(44100, 2));
    ASSERT_TRUE(converter);
    ASSERT_TRUE(converter->setMagicCookie(*file->magicCookie()));
    PacketSource source { file.get() };
    converter->setCallback(PacketSource::supply, &source);
    auto output = ZRNativeAudioBuffer::bufferWithChannels(2, 50000);
    const uint32_t frames = converter->convertToNativeBufferUsingCallback(*output);
    // Every packet decoded, the delay included (the extended audio file drops it).
    EXPECT_EQ(frames, file->numberOfPackets() * 1024);
    const auto reference = ZRTestDecodeWithFFmpeg(path, 2);
    std::vector<float> ours(output->channel(0) + 1024, output->channel(0) + 1024 + reference[0].size());
    EXPECT_GT(ZRTestSNR(reference[0], ours), 60);
}

TEST(ZRConverter, ReportsWhatItCannotDo)
{
    ZRErrorPtr error;
    ZRAudioStreamDescription mp3;
    mp3.clear();
    mp3.setFormat(ZRFourCharCode("QDM2"));
    mp3.setChannels(2);
    mp3.setRate(44100);
    EXPECT_FALSE(ZRConverter::converterWithSourceFormat(mp3, ZRAudioStreamDescription(44100, 2), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "ZRConverterErrorDomain");
    EXPECT_EQ(error->localizedDescription(), "Creating the converter failed because the format is not supported.");

    auto converter = ZRConverter::converterWithSourceFormat(
        ZRAudioStreamDescription(44100, 2), ZRAudioStreamDescription(44100, 2));
    ASSERT_TRUE(converter);
    // Different buffer counts fail without an error; an empty cookie is accepted without a call.
    error.reset();
    auto two = ZRAudioBuffer::bufferWithNumberOfBuffers(2, 16);
    auto one = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 16);
    EXPECT_FALSE(converter->convertBuffer(*two, *one, &error));
    EXPECT_FALSE(error);
    EXPECT_TRUE(converter->setMagicCookie({}, &error));
    // Linear PCM has no cookie to set, and a buffer too small for the output is refused.
    EXPECT_FALSE(converter->setMagicCookie({ 1, 2 }, &error));
    EXPECT_EQ(error->code(), int32_t(kAudioConverterErr_PropertyNotSupported));
    auto mono = ZRConverter::converterWithSourceFormat(
        ZRAudioStreamDescription(44100, 1), ZRAudioStreamDescription(44100, 1));
    float samples[8] {};
    EXPECT_FALSE(mono->convertInput(samples, 8, samples, 4, &error));
    EXPECT_EQ(error->localizedDescription(), "Converting audio failed because the output size is invalid.");
}

TEST(ZRConverter, EqualityLooksAtTheInputOnly)
{
    auto a = ZRConverter::converterWithSourceFormat(
        ZRAudioStreamDescription(44100, 2), ZRAudioStreamDescription(48000, 2));
    auto b = ZRConverter::converterWithSourceFormat(ZRAudioStreamDescription(44100, 2), pcm(44100, 2, 16, sint));
    auto c = ZRConverter::converterWithSourceFormat(ZRAudioStreamDescription(22050, 2), pcm(44100, 2, 16, sint));
    EXPECT_TRUE(a->isEqualToConverter(*b));
    EXPECT_TRUE(a->isEqual(b.get()));
    EXPECT_FALSE(a->isEqual(c.get()));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_TRUE(a->isEqual(a.get()));
}

TEST(ZRConverter, ConversionsFromSeveralThreads)
{
    // One converter driven by four threads at once, with resets and quality changes among the conversions: each
    // conversion holds the lock, so every thread gets its own input converted exactly.
    auto converter
        = ZRConverter::converterWithSourceFormat(pcm(44100, 2, 16, sint), ZRAudioStreamDescription(44100, 2));
    ASSERT_TRUE(converter);
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            auto source = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4 * 512);
            source->setChannelsPerBuffer(2);
            auto* samples = static_cast<int16_t*>(source->buffer());
            for (int i = 0; i < 1024; ++i)
                samples[i] = int16_t(t * 1000 + i);
            auto destination = ZRNativeAudioBuffer::bufferWithChannels(2, 512);
            for (int round = 0; round < 200; ++round) {
                destination->setFrames(512);
                if (converter->convertBufferToNativeBuffer(*source, *destination) != 512
                    || destination->sampleValueAtIndex(511, 1) != float(t * 1000 + 1023) / 32768.0f)
                    ++failures;
                if (round % 50 == 0 && !(converter->reset() && converter->setQuality(kAudioConverterQuality_High)))
                    ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}
