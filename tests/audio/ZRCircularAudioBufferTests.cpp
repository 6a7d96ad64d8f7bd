#include <zrbase/audio/ZRCircularAudioBuffer.h>

#include "support/ZRTestAudioBuffers.h"
#include <zrbase/core/ZRError.h>

#include <gtest/gtest.h>

#include <random>

namespace {

// A block of `channels` channels whose frame j of channel c holds first + j + c / 4.
std::unique_ptr<ZRNativeAudioBuffer> block(uint32_t channels, uint32_t frames, float first)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, frames);
    for (uint32_t c = 0; c < channels; ++c) {
        for (uint32_t j = 0; j < frames; ++j)
            buffer->setSampleValue(first + float(j) + float(c) / 4, j, c);
    }
    return buffer;
}

int32_t code(const ZRErrorPtr& error) { return error ? error->code() : 0; }

constexpr float untouched = -99.0f;

std::unique_ptr<ZRNativeAudioBuffer> destination(uint32_t channels, uint32_t frames)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, frames);
    buffer->clearWithValue(untouched);
    return buffer;
}

}

TEST(ZRCircularAudioBuffer, storesAcrossTheEndOfTheRingAndReportsWithExactTexts)
{
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(2, 8);
    ZRErrorPtr error;
    ASSERT_TRUE(ring->storeBuffer(*block(2, 6, 100), 100, &error));
    ASSERT_TRUE(ring->storeBuffer(*block(2, 6, 106), 106, &error));
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(ring->cursorPosition(), 4u);
    // Ring frames 6, 7, 0 … 3 hold the second block.
    EXPECT_EQ(ZRTestSamplesOfChannel(*ring, 1),
        (std::vector<float> { 108.25f, 109.25f, 110.25f, 111.25f, 104.25f, 105.25f, 106.25f, 107.25f }));

    // The available span is [104, 112). The exact texts, and the log line with the frames available and asked for.
    EXPECT_TRUE(ring->retrieveBuffer(*destination(2, 4), 100, &error));
    EXPECT_EQ(error->domain(), "ZRCircularAudioBufferError");
    EXPECT_EQ(error->localizedDescription(),
        "Retrieving from the circular buffer failed because the sample range requested has partially been removed "
        "from the circular buffer.");
    EXPECT_FALSE(ring->retrieveBuffer(*destination(2, 4), 113, &error));
    testing::internal::CaptureStderr();
    error->log();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("**Error: [104-112] available, asked for [113-117]"),
        std::string::npos);
    EXPECT_TRUE(ring->storeBuffer(*block(2, 2, 120), 120, &error));
    EXPECT_EQ(error->localizedDescription(),
        "The continuity of the circular buffer failed because the sample time for the given buffer was later than "
        "the sample end of the circular buffer.");

    // A channel set reaching beyond the destination fails in the frame copy.
    EXPECT_FALSE(ring->retrieveBuffer(*destination(1, 2), ZRIndexSet { 0, 1 }, 121, &error));
    EXPECT_EQ(error->domain(), "ZRErrorDomain");
    EXPECT_EQ(code(error), 2);
}

TEST(ZRCircularAudioBuffer, distanceComparesTheLow32BitsAndACopyIsARing)
{
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(1, 4);
    ring->storeBuffer(*block(1, 4, 1), 0);
    ASSERT_TRUE(ring->retrieveBuffer(*destination(1, 2), 1));
    ring->reset();
    ring->storeBuffer(*block(1, 2, 0), 0x1'0000'0005);
    EXPECT_EQ(ring->distance(), 4);

    std::unique_ptr<ZRNativeAudioBuffer> copy = ring->copy();
    ASSERT_NE(dynamic_cast<ZRCircularAudioBuffer*>(copy.get()), nullptr);
    EXPECT_EQ(ZRTestSamplesOfChannel(*copy, 0), ZRTestSamplesOfChannel(*ring, 0));
}

TEST(ZRCircularAudioBuffer, degenerateRingsNeitherHangNorTouchMemoryOutside)
{
    // No frames: nothing fits, and a retrieval of frames the ring cannot hold fails in the frame copy.
    auto empty = ZRCircularAudioBuffer::bufferWithChannels(1, 0);
    ZRErrorPtr error;
    EXPECT_FALSE(empty->storeBuffer(*block(1, 1, 0), 10, &error));
    EXPECT_TRUE(empty->storeBuffer(*block(1, 0, 0), 10, &error));
    EXPECT_FALSE(empty->retrieveBuffer(*destination(1, 2), 9, &error));

    // A ring made smaller under its cursor refuses to store at the stale cursor.
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(1, 8);
    ring->storeBuffer(*block(1, 6, 1), 1);
    ring->setFrames(6);
    EXPECT_FALSE(ring->storeBuffer(*block(1, 2, 7), 7, &error));
    ring->setFrames(4);
    EXPECT_FALSE(ring->storeBuffer(*block(1, 2, 7), 7, &error));

    // An unbuilt ring stores and retrieves nothing.
    ZRCircularAudioBuffer unbuilt;
    auto none = std::make_unique<ZRNativeAudioBuffer>();
    EXPECT_TRUE(unbuilt.storeBuffer(*none, 5));
    EXPECT_FALSE(unbuilt.retrieveBuffer(*destination(1, 1), 5));
}

// Long random sequences of stores, retrieves and resets against a model that keeps every stored frame in one
// stream: the ring always holds the last frames() frames of that stream, the newest at the stored end; a reset
// keeps the retrieved time, and a first store stamped 0 does not count as one.
TEST(ZRCircularAudioBuffer, matchesAStreamModelOverRandomSequences)
{
    std::mt19937 random(4);
    const auto pick
        = [&random](int64_t low, int64_t high) { return std::uniform_int_distribution<int64_t>(low, high)(random); };
    for (int round = 0; round < 40; ++round) {
        const auto capacity = uint32_t(pick(1, 24));
        const auto channels = uint32_t(pick(1, 3));
        auto ring = ZRCircularAudioBuffer::bufferWithChannels(channels, capacity);
        std::vector<float> stream; // frame values of channel 0; channel c adds c / 4
        uint64_t end = 0, first = 0, retrieved = 0;
        float serial = 1;

        for (int step = 0; step < 600; ++step) {
            SCOPED_TRACE(testing::Message() << "round " << round << " step " << step);
            ZRErrorPtr error;
            const int64_t kind = pick(0, 99);
            if (kind < 2) {
                ring->reset();
                stream.clear();
                end = first = 0;
            } else if (kind < 50) {
                const auto frames = uint32_t(pick(0, capacity + (kind < 4 ? 3 : 0)));
                const uint32_t blockChannels = kind == 4 ? channels + 1 : channels;
                int64_t shift = 0;
                if (kind % 7 == 0)
                    shift = pick(1, 30);
                else if (kind % 11 == 0)
                    shift = -pick(0, std::min(int64_t(frames), int64_t(end)));
                const uint64_t time = end == 0 ? uint64_t(pick(0, 3) * 1000) : end + shift;
                auto stored = block(blockChannels, frames, serial);
                const bool result = ring->storeBuffer(*stored, time, &error);
                const int32_t expected = blockChannels != channels ? 1
                    : frames > capacity                            ? 2
                    : end == 0 || end == time                      ? 0
                    : end < time                                   ? 3
                                                                   : 4;
                EXPECT_EQ(code(error), expected);
                EXPECT_EQ(result, expected == 0 || expected > 2);
                if (result) {
                    for (uint32_t j = 0; j < frames; ++j)
                        stream.push_back(serial + float(j));
                    serial += float(frames);
                    end = time + frames;
                    if (first == 0)
                        first = time;
                }
            } else {
                const auto frames = uint32_t(pick(0, capacity + 4));
                const auto count = uint32_t(pick(1, channels));
                ZRIndexSet set;
                while (set.count() < count)
                    set.addIndex(uint32_t(pick(0, channels - 1)));
                const uint64_t time = end + uint64_t(pick(-int64_t(capacity) - 8, 6));
                auto out = destination(count, frames);
                const bool result = ring->retrieveBuffer(*out, set, time, &error);

                const uint64_t available = end - first > capacity ? end - capacity : first;
                const int32_t expected = available > time + frames ? 5
                    : available > time                             ? 6
                    : end < time                                   ? 7
                    : end < time + frames                          ? 8
                                                                   : 0;
                EXPECT_EQ(code(error), expected);
                EXPECT_EQ(result, expected != 5 && expected != 7);
                const uint64_t from = std::max(time, available);
                const uint64_t to = expected == 8 ? end : time + frames;
                for (uint32_t k = 0; k < count; ++k) {
                    const float offset = float(set.indexes()[k]) / 4;
                    for (uint32_t j = 0; j < frames; ++j) {
                        const uint64_t sampleTime = time + j;
                        float value = untouched;
                        if (result && sampleTime >= from && sampleTime < to) {
                            // The stream frame the ring keeps at this time's place: the newest of those a whole
                            // number of capacities apart, or silence where nothing was stored since the reset.
                            const int64_t back = (int64_t(end - sampleTime) - 1) % int64_t(capacity);
                            const int64_t index
                                = int64_t(stream.size()) - 1 - (back < 0 ? back + int64_t(capacity) : back);
                            value = index < 0 ? 0.0f : stream[size_t(index)] + offset;
                        }
                        ASSERT_EQ(out->sampleValueAtIndex(j, k), value) << "frame " << j << " channel " << k;
                    }
                }
                if (result)
                    retrieved = to;
            }
            ASSERT_EQ(ring->lastStoreTime(), end);
            ASSERT_EQ(ring->firstStoreTime(), first);
            ASSERT_EQ(ring->hasStored(), first != 0);
            ASSERT_EQ(ring->lastRetrievedTime(), retrieved);
            ASSERT_EQ(ring->distance(), int32_t(uint32_t(end) - uint32_t(retrieved)));
        }
    }
}
