#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <gtest/gtest.h>

TEST(ZRCoreAudioTypes, structuresHaveTheHostLayout)
{
    EXPECT_EQ(sizeof(AudioStreamBasicDescription), 40u);
    EXPECT_EQ(offsetof(AudioStreamBasicDescription, mReserved), 36u);
    EXPECT_EQ(sizeof(AudioStreamPacketDescription), 16u);
    // The natural 64-bit layout: the count is padded so that each entry's data pointer is aligned.
    EXPECT_EQ(ZRAudioBufferListSize(0), 8u);
    EXPECT_EQ(ZRAudioBufferListSize(2), 8u + 2 * 16u);
    EXPECT_EQ(ZRAudioChannelLayoutSize(2), 52u);
    EXPECT_EQ(offsetof(AudioUnitParameterEvent, eventValues), 16u);
}

TEST(ZRCoreAudioTypes, fourCharacterCodesPutTheFirstLetterHighest)
{
    EXPECT_EQ(kAudioFormatLinearPCM, 0x6C70636Du);
    EXPECT_EQ(kAudioFormatMPEG4AAC, 0x61616320u);
    EXPECT_EQ(kAudioFormatMPEGLayer3, 0x2E6D7033u);
    EXPECT_EQ(ZRFourCharCode("\xFF\x01\x02\x03"), 0xFF010203u);
    EXPECT_EQ(kAudioFormatFlagIsNonMixable, 64u);
}
