#include <zrbase/host/audio/ZRAudioFormatService.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

AudioStreamBasicDescription format(
    AudioFormatID id, double rate, uint32_t channels, AudioFormatFlags flags = 0, uint32_t bits = 0)
{
    return { rate, id, flags, 0, 0, 0, channels, bits, 0 };
}

std::string nameOf(const AudioStreamBasicDescription& description)
{
    std::string name = "untouched";
    EXPECT_EQ(ZRAudioFormatService::name(description, name), noErr);
    return name;
}

AudioStreamBasicDescription completed(
    AudioStreamBasicDescription description, uint32_t bytesPerFrame = 0, uint32_t framesPerPacket = 0)
{
    description.mBytesPerFrame = bytesPerFrame;
    description.mFramesPerPacket = framesPerPacket;
    EXPECT_EQ(ZRAudioFormatService::complete(description), noErr);
    return description;
}

constexpr AudioFormatFlags integer = kAudioFormatFlagIsSignedInteger;

}

TEST(ZRAudioFormatService, namesAndFactsOfTheSupportedFormats)
{
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 44100, 2, integer, 16)),
        "Linear PCM, 16-bit little-endian signed integer, stereo, 44100 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 96000, 1,
                  kAudioFormatFlagIsFloat | kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsNonInterleaved, 64)),
        "Linear PCM, 64-bit big-endian float, non-interleaved, mono, 96000 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatLinearPCM, 22050.5, 2, kAudioFormatFlagIsBigEndian, 8)),
        "Linear PCM, 8-bit unsigned integer, stereo, 22050.5 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatULaw, 8000, 6)), "\xC2\xB5Law, 6 channels, 8000 Hz");
    EXPECT_EQ(nameOf(format(kAudioFormatAppleLossless, 0, 0)), "Apple Lossless");

    // Format, VBR, externally framed.
    const uint32_t facts[][3] = { { kAudioFormatLinearPCM, 0, 0 }, { kAudioFormatMPEG4AAC, 1, 1 },
        { kAudioFormatAppleLossless, 1, 1 }, { kAudioFormatMPEGLayer3, 1, 0 }, { kAudioFormatAC3, 0, 0 },
        { kAudioFormatULaw, 0, 0 }, { kAudioFormatALaw, 0, 0 }, { kAudioFormatAppleIMA4, 0, 0 } };
    for (const auto& [id, isVBR, isExternallyFramed] : facts) {
        uint32_t answers[2] = { 7, 7 };
        EXPECT_EQ(ZRAudioFormatService::isVBR(format(id, 44100, 2), answers[0]), noErr);
        EXPECT_EQ(ZRAudioFormatService::isExternallyFramed(format(id, 44100, 2), answers[1]), noErr);
        EXPECT_EQ(answers[0], isVBR) << id;
        EXPECT_EQ(answers[1], isExternallyFramed) << id;
    }

    // A format with a name but no codec is not supported, and the answers stay untouched.
    const AudioStreamBasicDescription qdesign = format(ZRFourCharCode("QDM2"), 44100, 2);
    std::string name = "untouched";
    uint32_t answer = 7;
    EXPECT_EQ(ZRAudioFormatService::name(qdesign, name), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(ZRAudioFormatService::isVBR(qdesign, answer), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(ZRAudioFormatService::isExternallyFramed(qdesign, answer), ZRAudioFormatUnsupportedError);
    EXPECT_EQ(name, "untouched");
    EXPECT_EQ(answer, 7u);
    EXPECT_STREQ(ZRAudioFormatService::formatName(qdesign.mFormatID), "QDesign2 music");
    EXPECT_EQ(ZRAudioFormatService::formatName(ZRFourCharCode("xxxx")), nullptr);
}

TEST(ZRAudioFormatService, completesLinearPCMFromBitsOrBytes)
{
    const AudioStreamBasicDescription cd = completed(format(kAudioFormatLinearPCM, 44100, 2, integer, 16));
    EXPECT_EQ(cd.mFormatFlags, integer | kAudioFormatFlagIsPacked);
    EXPECT_EQ(cd.mFramesPerPacket, 1u);
    EXPECT_EQ(cd.mBytesPerFrame, 4u);
    EXPECT_EQ(cd.mBytesPerPacket, 4u);

    // 24 bits keep a 4-byte container, unpacked; without one they get 3 packed bytes.
    const AudioStreamBasicDescription deep = format(
        kAudioFormatLinearPCM, 48000, 2, integer | kAudioFormatFlagIsPacked | kAudioFormatFlagIsAlignedHigh, 24);
    EXPECT_EQ(completed(deep, 8).mFormatFlags, integer | kAudioFormatFlagIsAlignedHigh);
    EXPECT_EQ(completed(deep, 8).mBytesPerPacket, 8u);
    EXPECT_EQ(completed(deep).mBytesPerFrame, 6u);
    EXPECT_EQ(completed(deep).mFormatFlags, deep.mFormatFlags);

    // Bits from the bytes of one non-interleaved sample; bytes that do not fit the channels are redone.
    EXPECT_EQ(
        completed(
            format(kAudioFormatLinearPCM, 44100, 4, kAudioFormatFlagIsFloat | kAudioFormatFlagIsNonInterleaved), 8)
            .mBitsPerChannel,
        64u);
    EXPECT_EQ(completed(format(kAudioFormatLinearPCM, 44100, 6, integer, 16), 4).mBytesPerFrame, 12u);

    AudioStreamBasicDescription unsupported[] = {
        format(kAudioFormatLinearPCM, 44100, 0, integer, 16),
        format(kAudioFormatLinearPCM, 44100, 2, integer, 0),
        format(kAudioFormatLinearPCM, 44100, 2, integer, 65),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsFloat, 24),
        format(kAudioFormatLinearPCM, 44100, 2, kAudioFormatFlagIsFloat | integer, 32),
        format(kAudioFormatLinearPCM, 44100, 0x40000000, integer, 64),
        format(ZRFourCharCode("samr"), 8000, 1),
        format(kAudioFormatAppleLossless, 48000, 0),
        format(kAudioFormatLinearPCM, 44100, 2, integer, 16),
    };
    unsupported[1].mBytesPerFrame = 3;
    unsupported[8].mFramesPerPacket = 2;
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
    aac = completed(aac, 4, 1);
    EXPECT_EQ(aac.mFramesPerPacket, 1024u);
    EXPECT_EQ(aac.mBytesPerPacket + aac.mBytesPerFrame + aac.mBitsPerChannel, 0u);
    EXPECT_EQ(completed(aac, 0, 960).mFramesPerPacket, 960u);

    EXPECT_EQ(completed(format(kAudioFormatMPEGLayer3, 22050, 2), 0, 1152).mFramesPerPacket, 576u);
    EXPECT_EQ(completed(format(kAudioFormatMPEGLayer3, 32000, 2)).mFramesPerPacket, 1152u);
    EXPECT_EQ(completed(format(kAudioFormatAC3, 48000, 6), 0, 1).mFramesPerPacket, 1536u);
    EXPECT_EQ(completed(format(kAudioFormatAppleLossless, 48000, 2)).mFramesPerPacket, 4096u);
    EXPECT_EQ(completed(format(kAudioFormatAppleLossless, 48000, 2), 0, 352).mFramesPerPacket, 352u);

    const AudioStreamBasicDescription ima4 = completed(format(kAudioFormatAppleIMA4, 44100, 2), 0, 1);
    EXPECT_EQ(ima4.mFramesPerPacket, 64u);
    EXPECT_EQ(ima4.mBytesPerPacket, 68u);
    const AudioStreamBasicDescription alaw = completed(format(kAudioFormatALaw, 8000, 3));
    EXPECT_EQ(alaw.mBitsPerChannel, 8u);
    EXPECT_EQ(alaw.mBytesPerFrame, 3u);
    EXPECT_EQ(alaw.mBytesPerPacket, 3u);
}
