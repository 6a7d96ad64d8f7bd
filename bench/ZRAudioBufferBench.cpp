#include <zrbase/audio/ZRAudioBuffer.h>

#include "ZRBenchmarkRatio.h"

#include <cstring>

// The byte-level buffer operations on two buffers of 4-byte frames against memcpy (memset for clear) of the same
// bytes in the same run. "ratio" is the reference's time over ours: 1 means as fast, 0.5 half as fast.
namespace {

constexpr uint32_t ZRBenchmarkBuffers = 2;

struct Pair {
    explicit Pair(benchmark::State& state)
        : bytes(uint32_t(state.range(0)) * sizeof(float))
        , source(ZRAudioBuffer::bufferWithNumberOfBuffers(ZRBenchmarkBuffers, bytes))
        , target(ZRAudioBuffer::bufferWithNumberOfBuffers(ZRBenchmarkBuffers, bytes))
    {
    }
    void memcpyReference()
    {
        for (uint32_t index = 0; index < ZRBenchmarkBuffers; ++index)
            std::memcpy(target->bufferAtIndex(index), source->bufferAtIndex(index), bytes);
        benchmark::ClobberMemory();
    }
    int64_t totalBytes() const { return int64_t(bytes) * ZRBenchmarkBuffers; }

    uint32_t bytes;
    std::unique_ptr<ZRAudioBuffer> source;
    std::unique_ptr<ZRAudioBuffer> target;
};

void BM_AudioBuffer_copyRange(benchmark::State& state)
{
    Pair pair(state);
    ZRBenchmarkRatio(
        state,
        [&] {
            pair.target->copyRange({ 0, pair.bytes }, *pair.source, 0);
            benchmark::ClobberMemory();
        },
        [&] { pair.memcpyReference(); }, pair.totalBytes());
}

void BM_AudioBuffer_clear(benchmark::State& state)
{
    Pair pair(state);
    ZRBenchmarkRatio(
        state,
        [&] {
            pair.target->clear();
            benchmark::ClobberMemory();
        },
        [&] {
            for (uint32_t index = 0; index < ZRBenchmarkBuffers; ++index)
                std::memset(pair.target->bufferAtIndex(index), 0, pair.bytes);
            benchmark::ClobberMemory();
        },
        pair.totalBytes());
}

// A delay line of the buffer's length against render blocks of 512 frames, against memcpy of the delay line.
void BM_AudioBuffer_delayBuffer(benchmark::State& state)
{
    Pair pair(state);
    auto block = ZRAudioBuffer::bufferWithNumberOfBuffers(ZRBenchmarkBuffers, 512 * sizeof(float));
    ZRBenchmarkRatio(
        state,
        [&] {
            for (uint32_t index = 0; index < ZRBenchmarkBuffers; ++index)
                pair.target->delayBufferAtIndex(index, *block, index);
            benchmark::ClobberMemory();
        },
        [&] { pair.memcpyReference(); }, pair.totalBytes());
}

}

BENCHMARK(BM_AudioBuffer_copyRange)->Arg(4096)->Arg(1048576)->UseManualTime();
BENCHMARK(BM_AudioBuffer_clear)->Arg(4096)->Arg(1048576)->UseManualTime();
BENCHMARK(BM_AudioBuffer_delayBuffer)->Arg(4096)->Arg(1048576)->UseManualTime();
