#include "support/ZRRecordingAlertPresenter.h"
#include "support/ZRTestAudioUnit.h"
#include <zrbase/audio/ZRAudioStreamDescription.h>
#include <zrbase/core/ZRError.h>

#include <gtest/gtest.h>

#include <cstring>

TEST(ZRAudioStreamDescription, defaultsAndSettersKeepTheByteSizes)
{
    ZRAudioStreamDescription description;
    const AudioStreamBasicDescription expected = { 44100.0, ZRFourCharCode("lpcm"), 41, 4, 1, 4, 1, 32, 0 };
    EXPECT_EQ(std::memcmp(description.description(), &expected, sizeof expected), 0);
    EXPECT_EQ(description.formatName(), "Linear PCM");

    description.setChannels(2);
    EXPECT_EQ(description.bytesPerPacket(), 4u);
    description.setRange(16);
    EXPECT_EQ(description.bytesPerPacket(), 2u);
    description.setFlags(kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked);
    description.setRange(16);
    EXPECT_EQ(description.description()->mBytesPerFrame, 4u);
    description.setRange(12);
    EXPECT_EQ(description.bytesPerPacket(), 2u);
    EXPECT_EQ(ZRAudioStreamDescription::descriptionWithRate(96000, 2).bytesPerPacket(), 4u);

    description.setFormat(ZRFourCharCode("aacp"));
    EXPECT_EQ(description.formatName(), "MPEG-4 High Efficiency AAC Version 2");
    description.setFormat(ZRFourCharCode("lpcM"));
    EXPECT_EQ(description.formatName(), "unknown");
}

TEST(ZRAudioStreamDescription, equalityIgnoresOnlyTheReservedMember)
{
    const ZRAudioStreamDescription plain;
    AudioStreamBasicDescription reserved = *plain.description();
    reserved.mReserved = 9;
    EXPECT_TRUE(plain.isEqualToDescription(ZRAudioStreamDescription(reserved)));
    EXPECT_FALSE(plain.isEqual(nullptr));

    ZRAudioStreamDescription other;
    other.setRate(44100.000001);
    EXPECT_FALSE(plain == other);
    for (uint32_t AudioStreamBasicDescription::*member : { &AudioStreamBasicDescription::mFormatID,
             &AudioStreamBasicDescription::mFormatFlags, &AudioStreamBasicDescription::mBytesPerPacket,
             &AudioStreamBasicDescription::mFramesPerPacket, &AudioStreamBasicDescription::mBytesPerFrame,
             &AudioStreamBasicDescription::mChannelsPerFrame, &AudioStreamBasicDescription::mBitsPerChannel }) {
        AudioStreamBasicDescription changed = *plain.description();
        changed.*member += 1;
        EXPECT_FALSE(plain == ZRAudioStreamDescription(changed));
    }

    other.clear();
    const AudioStreamBasicDescription zero {};
    EXPECT_EQ(std::memcmp(other.description(), &zero, sizeof zero), 0);
}

TEST(ZRAudioStreamDescription, printsRateAndChannelsToTheConsole)
{
    testing::internal::CaptureStderr();
    ZRAudioStreamDescription().printDescriptionToLog();
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(line.ends_with("] rate: 44100 / channels: 1\n")) << line;
}

TEST(ZRAudioStreamDescription, formatServiceAnswersAndFailures)
{
    ZRAudioStreamDescription description(22050, 2);
    description.setFlags(kAudioFormatFlagIsSignedInteger);
    description.setRange(16);
    EXPECT_EQ(description.name(), "Linear PCM, 16-bit little-endian signed integer, stereo, 22050 Hz");
    EXPECT_TRUE(description.complete());
    EXPECT_EQ(description.flags(), kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked);
    description.setFormat(kAudioFormatMPEG4AAC);
    ZRErrorPtr error;
    EXPECT_TRUE(description.isVBR(&error));
    EXPECT_TRUE(description.isExternallyFramed(&error));
    EXPECT_EQ(error, nullptr);

    description.setFormat(ZRFourCharCode("QDMC"));
    const ZRAudioStreamDescription before = description;
    EXPECT_EQ(description.name(&error), std::nullopt);
    EXPECT_EQ(error->domain(), "ZRAudioStreamDescriptionErrorDomain");
    EXPECT_EQ(error->code(), static_cast<int32_t>(ZRFourCharCode("!dat")));
    EXPECT_EQ(error->localizedDescription(),
        "Retrieving the audio description name failed because the format is not supported.");
    EXPECT_FALSE(description.complete(&error));
    EXPECT_EQ(
        error->localizedDescription(), "Completing the audio description failed because the format is not supported.");
    EXPECT_TRUE(description == before);

    ZRRecordingAlertPresenter presenter;
    EXPECT_FALSE(description.isExternallyFramed());
    EXPECT_FALSE(description.isVBR());
    ASSERT_EQ(presenter.alerts().size(), 2u);
    EXPECT_EQ(presenter.alerts()[0].messageText, "An audio stream description error occurred");
    EXPECT_EQ(presenter.alerts()[0].informativeText,
        "Retrieving the external frame details failed because the format is not supported.");
    EXPECT_EQ(presenter.alerts()[1].informativeText,
        "Retrieving the VBR details failed because the format is not supported.");
}

TEST(ZRAudioStreamDescription, readsTheStreamFormatOfAnAudioUnit)
{
    ZRTestAudioUnit unit;
    const ZRAudioStreamDescription input(48000, 2);
    ZRAudioStreamDescription output(96000, 1);
    output.description()->mReserved = 5;
    unit.setStreamFormat(kAudioUnitScope_Input, 0, *input.description());
    unit.setStreamFormat(kAudioUnitScope_Output, 3, *output.description());

    EXPECT_EQ(ZRAudioStreamDescription::descriptionWithAudioUnit(unit, kAudioUnitScope_Input), input);
    ZRErrorPtr error;
    const auto read = ZRAudioStreamDescription::descriptionWithAudioUnit(unit, kAudioUnitScope_Output, 3, &error);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->description()->mReserved, 5u);

    EXPECT_FALSE(ZRAudioStreamDescription::descriptionWithAudioUnit(unit, kAudioUnitScope_Output, 0, &error));
    EXPECT_EQ(error->localizedDescription(),
        "Getting an audio stream description failed because an undefined error occurred: -10877");

    // Only the low 16 bits of the unit's status count, sign-extended.
    unit.setMissingFormatStatus(0x00030000);
    EXPECT_TRUE(ZRAudioStreamDescription::descriptionWithAudioUnit(unit, kAudioUnitScope_Global, 0, &error));
    unit.setMissingFormatStatus(0x0001FFFE);
    EXPECT_FALSE(ZRAudioStreamDescription::descriptionWithAudioUnit(unit, kAudioUnitScope_Global, 0, &error));
    EXPECT_EQ(error->code(), -2);
}
