#include <zrbase/audio/ZRCircularAudioBuffer.h>

#include "ZRBenchmarkRatio.h"

#include <algorithm>
#include <cstring>
#include <vector>

// A producer storing 512-frame blocks into a 2-channel ring and a consumer retrieving each block right after,
// against memcpy of the same frames into and out of plain channel arrays of the ring's size.
// "ratio" is memcpy's time over ours: 1 means as fast, 0.5 half as fast.
namespace {

constexpr uint32_t ZRChannels = 2;
constexpr uint32_t ZRBlockFrames = 512;

void BM_CircularAudioBuffer_storeRetrieve(benchmark::State& state)
{
    const auto capacity = uint32_t(state.range(0));
    // At least 128 blocks per iteration, so that a small ring is lapped many times and the clock's cost vanishes.
    const uint32_t blocks = std::max(capacity / ZRBlockFrames, 128u);
    auto ring = ZRCircularAudioBuffer::bufferWithChannels(ZRChannels, capacity);
    auto block = ZRNativeAudioBuffer::bufferWithChannels(ZRChannels, ZRBlockFrames);
    auto out = ZRNativeAudioBuffer::bufferWithChannels(ZRChannels, ZRBlockFrames);
    block->clearWithValue(0.5f);
    std::vector<std::vector<float>> referenceRing(ZRChannels, std::vector<float>(capacity));
    std::vector<std::vector<float>> referenceBlock(ZRChannels, std::vector<float>(ZRBlockFrames, 0.5f));
    std::vector<std::vector<float>> referenceOut(ZRChannels, std::vector<float>(ZRBlockFrames));
    uint64_t sampleTime = 1;
    uint32_t position = 0;
    bool failed = false;

    ZRBenchmarkRatio(
        state,
        [&] {
            for (uint32_t index = 0; index < blocks; ++index) {
                failed |= !ring->storeBuffer(*block, sampleTime);
                failed |= !ring->retrieveBuffer(*out, sampleTime);
                sampleTime += ZRBlockFrames;
            }
            benchmark::DoNotOptimize(out->channel(0));
        },
        [&] {
            for (uint32_t index = 0; index < blocks; ++index) {
                for (uint32_t channel = 0; channel < ZRChannels; ++channel) {
                    std::memcpy(referenceRing[channel].data() + position, referenceBlock[channel].data(),
                        ZRBlockFrames * sizeof(float));
                    std::memcpy(referenceOut[channel].data(), referenceRing[channel].data() + position,
                        ZRBlockFrames * sizeof(float));
                }
                position = (position + ZRBlockFrames) % capacity;
            }
            benchmark::DoNotOptimize(referenceOut[0].data());
        },
        int64_t(blocks) * 2 * ZRChannels * ZRBlockFrames * sizeof(float));
    if (failed)
        state.SkipWithError("a store or a retrieval failed");
}

}

BENCHMARK(BM_CircularAudioBuffer_storeRetrieve)
    ->Arg(4096)
    ->Arg(1048576)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
