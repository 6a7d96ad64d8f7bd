#include "host/audio/ZRAudioFormatService.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

AudioStreamBasicDescription format(
    AudioFormatID id, double rate, uint32_t channels, AudioFormatFlags flags = 0, uint32_t bits = 0)
{
    AudioStreamBasicDescription description {};
    description.mFormatID = id;
    description.mSampleRate = rate;
    description.mChannelsPerFrame = channels;
    description.mFormatFlags = flags;
    description.mBitsPerChannel = bits;
    return description;
}

std::string nameOf(const AudioStreamBasicDescription& description)
{
    std::string name = "untouched";
    EXPECT_EQ(ZRAudioFormatService::name(description, name), noErr);
    return name;
}

}

TEST(ZRAudioFormatService, namesDescribeTheWholeFormat)
{
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsSignedInteger, 16)),
        "Linear PCM, 16-bit little-endian signed integer, stereo, 44100 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 96000, 1,
                  kAudioFormatFlagIsFloat | kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsNonInterleaved, 64)),
        "Linear PCM, 64-bit big-endian float, non-interleaved, mono, 96000 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 22050.5, 2, kAudioFormatFlagIsBigEndian, 8)),
        "Linear PCM, 8-bit unsigned integer, stereo, 22050.5 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatMPEG4AAC, 48000, 6)), "AAC, 6 channels, 48000 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatULaw, 8000, 1)), "\xC2\xB5Law, mono, 8000 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatAppleLossless, 0, 0)), "Apple Lossless");

    std::string name = "untouched";
    EXPECT_EQ(
        ZRAudioFormatService::name(format(ZRFourCharCode("QDM2"), 44100, 2), name), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(name, "untouched");
    EXPECT_STREQ(ZRAudioFormatService::formatName(ZRFourCharCode("QDM2")), "QDesign2 music");
    EXPECT_EQ(ZRAudioFormatService::formatName(ZRFourCharCode("xxxx")), nullptr);
}

TEST(ZRAudioFormatService, knowsWhichFormatsVaryAndWhichNeedOutsideFraming)
{
    struct Facts {
        AudioFormatID format;
        uint32_t isVBR;
        uint32_t isExternallyFramed;
    };
    const Facts facts[] = {
        { kAudioFormatLinearPCM, 0, 0 },
        { kAudioFormatMPEG4AAC, 1, 1 },
        { kAudioFormatAppleLossless, 1, 1 },
        { kAudioFormatMPEGLayer3, 1, 0 },
        { kAudioFormatAC3, 0, 0 },
        { kAudioFormatULaw, 0, 0 },
        { kAudioFormatALaw, 0, 0 },
        { kAudioFormatAppleIMA4, 0, 0 },
    };
    for (const Facts& expected : facts) {
        uint32_t isVBR = 7;
        uint32_t isExternallyFramed = 7;
        EXPECT_EQ(ZRAudioFormatService::isVBR(format(expected.format, 44100, 2), isVBR), noErr);
        EXPECT_EQ(
            ZRAudioFormatService::isExternallyFramed(format(expected.format, 44100, 2), isExternallyFramed), noErr);
        EXPECT_EQ(isVBR, expected.isVBR) << expected.format;
        EXPECT_EQ(isExternallyFramed, expected.isExternallyFramed) << expected.format;
    }
    uint32_t answer = 7;
    EXPECT_EQ(
        ZRAudioFormatService::isVBR(format(ZRFourCharCode("celp"), 44100, 2), answer), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(ZRAudioFormatService::isExternallyFramed(format(0, 44100, 2), answer), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(answer, 7u);
}

TEST(ZRAudioFormatService, completesLinearPCMFromBitsOrBytes)
{
    AudioStreamBasicDescription pcm = format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsSignedInteger, 16);
    ASSERT_EQ(ZRAudioFormatService::complete(pcm), noErr);
    EXPECT_EQ(pcm.mFormatFlags, kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked);
    EXPECT_EQ(pcm.mFramesPerPacket, 1u);
    EXPECT_EQ(pcm.mBytesPerFrame, 4u);
    EXPECT_EQ(pcm.mBytesPerPacket, 4u);

    // 24 bits in 4-byte samples stay there, unpacked; without a container they get 3 packed bytes.
    AudioStreamBasicDescription wide = format(kAudioFormatLinearPCM, 48000, 2,
        kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked | kAudioFormatFlagIsAlignedHigh, 24);
    wide.mBytesPerFrame = 8;
    ASSERT_EQ(ZRAudioFormatService::complete(wide), noErr);
    EXPECT_EQ(wide.mFormatFlags, kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsAlignedHigh);
    EXPECT_EQ(wide.mBytesPerPacket, 8u);
    wide.mBytesPerFrame = 0;
    ASSERT_EQ(ZRAudioFormatService::complete(wide), noErr);
    EXPECT_EQ(wide.mBytesPerFrame, 6u);
    EXPECT_TRUE(wide.mFormatFlags & kAudioFormatFlagIsPacked);

    // The bit depth comes from the bytes of one non-interleaved sample; stale bytes for other channels are redone.
    AudioStreamBasicDescription derived
        = format(kAudioFormatLinearPCM, 44100, 4, kAudioFormatFlagIsFloat | kAudioFormatFlagIsNonInterleaved);
    derived.mBytesPerFrame = 8;
    ASSERT_EQ(ZRAudioFormatService::complete(derived), noErr);
    EXPECT_EQ(derived.mBitsPerChannel, 64u);
    AudioStreamBasicDescription stale = format(kAudioFormatLinearPCM, 44100, 6, kAudioFormatFlagIsSignedInteger, 16);
    stale.mBytesPerFrame = 4;
    ASSERT_EQ(ZRAudioFormatService::complete(stale), noErr);
    EXPECT_EQ(stale.mBytesPerFrame, 12u);

    AudioStreamBasicDescription unsupported[] = {
        format(kAudioFormatLinearPCM, 44100, 0, kAudioFormatFlagIsSignedInteger, 16),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsSignedInteger, 0),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsSignedInteger, 65),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsFloat, 24),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsFloat | kAudioFormatFlagIsSignedInteger, 32),
        format(kAudioFormatLinearPCM, 44100, 0x40000000, kAudioFormatFlagIsSignedInteger, 64),
        format(ZRFourCharCode("samr"), 8000, 1),
    };
    unsupported[1].mBytesPerFrame = 3;
    for (AudioStreamBasicDescription& description : unsupported) {
        const AudioStreamBasicDescription before = description;
        EXPECT_EQ(ZRAudioFormatService::complete(description), ZRAudioFormatUnsupportedError);
        EXPECT_EQ(std::memcmp(&before, &description, sizeof before), 0);
    }
}

TEST(ZRAudioFormatService, completesCompressedPacketLayouts)
{
    AudioStreamBasicDescription aac = format(kAudioFormatMPEG4AAC, 44100, 2, 0, 16);
    aac.mBytesPerPacket = 4;
    aac.mFramesPerPacket = 1;
    ASSERT_EQ(ZRAudioFormatService::complete(aac), noErr);
    EXPECT_EQ(aac.mFramesPerPacket, 1024u);
    EXPECT_EQ(aac.mBytesPerPacket, 0u);
    EXPECT_EQ(aac.mBitsPerChannel, 0u);
    aac.mFramesPerPacket = 960;
    ASSERT_EQ(ZRAudioFormatService::complete(aac), noErr);
    EXPECT_EQ(aac.mFramesPerPacket, 960u);

    AudioStreamBasicDescription mp3 = format(kAudioFormatMPEGLayer3, 22050, 2);
    ASSERT_EQ(ZRAudioFormatService::complete(mp3), noErr);
    EXPECT_EQ(mp3.mFramesPerPacket, 576u);
    mp3 = format(kAudioFormatMPEGLayer3, 32000, 2);
    ASSERT_EQ(ZRAudioFormatService::complete(mp3), noErr);
    EXPECT_EQ(mp3.mFramesPerPacket, 1152u);

    AudioStreamBasicDescription ima4 = format(kAudioFormatAppleIMA4, 44100, 2);
    ima4.mFramesPerPacket = 1;
    ASSERT_EQ(ZRAudioFormatService::complete(ima4), noErr);
    EXPECT_EQ(ima4.mFramesPerPacket, 64u);
    EXPECT_EQ(ima4.mBytesPerPacket, 68u);

    AudioStreamBasicDescription alaw = format(kAudioFormatALaw, 8000, 3);
    ASSERT_EQ(ZRAudioFormatService::complete(alaw), noErr);
    EXPECT_EQ(alaw.mBitsPerChannel, 8u);
    EXPECT_EQ(alaw.mBytesPerFrame, 3u);
    EXPECT_EQ(alaw.mBytesPerPacket, 3u);

    AudioStreamBasicDescription ac3 = format(kAudioFormatAC3, 48000, 6);
    ASSERT_EQ(ZRAudioFormatService::complete(ac3), noErr);
    EXPECT_EQ(ac3.mFramesPerPacket, 1536u);
    AudioStreamBasicDescription alac = format(kAudioFormatAppleLossless, 48000, 0);
    EXPECT_EQ(ZRAudioFormatService::complete(alac), ZRAudioFormatUnsupportedError);
    alac.mChannelsPerFrame = 2;
    ASSERT_EQ(ZRAudioFormatService::complete(alac), noErr);
    EXPECT_EQ(alac.mFramesPerPacket, 4096u);
    alac.mFramesPerPacket = 352;
    ASSERT_EQ(ZRAudioFormatService::complete(alac), noErr);
    EXPECT_EQ(alac.mFramesPerPacket, 352u);
}
