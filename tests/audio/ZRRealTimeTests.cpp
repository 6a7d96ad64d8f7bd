#include "support/ZRAllocationCounter.h"
#include <zrbase/audio/ZRCircularAudioBuffer.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRLowpassFilter.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <gtest/gtest.h>

// What an audio thread does on every block allocates nothing, also when the stream stumbles.

TEST(ZRRealTime, storingAndRetrievingWithGapsOverlapsAndUnderRunsAllocatesNothing)
{
    using enum ZRCircularAudioBufferStatus;
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(2, 1024);
    auto block = ZRNativeAudioBuffer::bufferWithChannels(2, 256);
    auto destination = ZRNativeAudioBuffer::bufferWithChannels(2, 256);
    auto narrow = ZRNativeAudioBuffer::bufferWithChannels(1, 256);
    ZRIndexSet second(1u);
    ASSERT_TRUE(ring && block && destination && narrow);

    ZRAllocationCounter counter;
    const ZRCircularAudioBufferStatus outcomes[] = {
        ring->store(*block, 1000),
        ring->store(*block, 1256),
        ring->store(*block, 2000), // a gap
        ring->store(*block, 2100), // an overlap
        ring->store(*narrow, 2356), // another channel count
        ring->retrieve(*destination, 2100),
        ring->retrieve(*destination, 2300), // the end not stored yet
        ring->retrieve(*destination, 1200), // the start overwritten
        ring->retrieve(*destination, 100), // all overwritten
        ring->retrieve(*destination, 5000), // nothing stored there
        ring->retrieve(*narrow, second, 2100),
    };
    // The forms with an error parameter build nothing when no slot is given.
    const bool warned = ring->storeBuffer(*block, 9000) && ring->retrieveBuffer(*destination, 9200);
    const size_t allocations = counter.count();

    EXPECT_EQ(allocations, 0u);
    EXPECT_TRUE(warned);
    EXPECT_EQ(std::vector<ZRCircularAudioBufferStatus>(std::begin(outcomes), std::end(outcomes)),
        (std::vector { success, success, gap, overlap, otherChannelCount, success, endNotStored, startOverwritten,
            overwritten, nothingStored, success }));
}

TEST(ZRRealTime, theStatusAgreesWithTheErrorTheSameCallMakes)
{
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(1, 64);
    auto block = ZRNativeAudioBuffer::bufferWithChannels(1, 16);
    auto destination = ZRNativeAudioBuffer::bufferWithChannels(1, 16);
    ZRErrorPtr error;
    EXPECT_TRUE(ring->storeBuffer(*block, 10, &error));
    EXPECT_FALSE(error);
    EXPECT_TRUE(ring->storeBuffer(*block, 40, &error));
    EXPECT_EQ(error->code(), int32_t(ZRCircularAudioBufferStatus::gap));
    EXPECT_FALSE(ring->retrieveBuffer(*destination, 100, &error));
    EXPECT_EQ(error->code(), int32_t(ZRCircularAudioBufferStatus::nothingStored));
    EXPECT_EQ(ring->retrieve(*destination, 100), ZRCircularAudioBufferStatus::nothingStored);
    EXPECT_FALSE(ZRCircularAudioBufferSucceeded(ZRCircularAudioBufferStatus::copyFailed));
}

TEST(ZRRealTime, filteringChannelsThatFitTheReservedRoomAllocatesNothing)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(12, 512);
    auto fewer = ZRNativeAudioBuffer::bufferWithChannels(3, 100);
    ASSERT_TRUE(buffer && fewer);
    ZRLowpassFilter lowpass;
    ZRAWeightedFilter weighting;
    weighting.reserveChannels(12);
    lowpass.filter(*buffer); // grows the history to twelve channels, beyond the eight made at construction

    ZRAllocationCounter counter;
    lowpass.filter(*buffer);
    weighting.filter(*buffer);
    lowpass.filter(*fewer);
    weighting.filter(*fewer);
    EXPECT_EQ(counter.count(), 0u);
}
