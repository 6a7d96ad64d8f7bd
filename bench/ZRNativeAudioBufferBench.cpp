#include "audio/ZRNativeAudioBuffer.h"

#include "ZRBenchmarkRatio.h"

#include <cstring>
#include <vector>

// Edits of a 2-channel buffer against memcpy of the same bytes, and measurements against memchr reading them
// once, each pair timed in the same iteration.

namespace {

constexpr uint32_t channels = 2;

struct Fixture {
    explicit Fixture(uint32_t frames)
        : buffer(ZRNativeAudioBuffer::bufferWithChannels(channels, frames))
        , other(ZRNativeAudioBuffer::bufferWithChannels(channels, frames))
        , copy(channels * size_t(frames))
        , bytes(channels * size_t(frames) * sizeof(float))
    {
        // Quarter and half full scale, alternating in sign: no clipping, and no byte is 0x01 for memchr to find.
        for (uint32_t frame = 0; frame < frames; ++frame) {
            for (uint32_t channel = 0; channel < channels; ++channel) {
                buffer->setSampleValue(frame % 2 ? -0.25f : 0.5f, frame, channel);
                other->setSampleValue(frame % 3 ? 0.25f : -0.5f, frame, channel);
            }
        }
    }

    void memcpyReference()
    {
        const size_t channelBytes = buffer->length();
        for (uint32_t channel = 0; channel < channels; ++channel)
            std::memcpy(copy.data() + channel * buffer->frames(), buffer->channel(channel), channelBytes);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }

    void readReference()
    {
        for (uint32_t channel = 0; channel < channels; ++channel)
            benchmark::DoNotOptimize(std::memchr(buffer->channel(channel), 0x01, buffer->length()));
    }

    std::unique_ptr<ZRNativeAudioBuffer> buffer, other;
    std::vector<float> copy;
    int64_t bytes;
};

template <typename Edit> void edit(benchmark::State& state, Edit operation)
{
    Fixture fixture(uint32_t(state.range(0)));
    ZRBenchmarkRatio(
        state,
        [&] {
            operation(*fixture.buffer, *fixture.other);
            benchmark::ClobberMemory();
        },
        [&] { fixture.memcpyReference(); }, fixture.bytes);
}

template <typename Measure> void measure(benchmark::State& state, Measure measurement)
{
    Fixture fixture(uint32_t(state.range(0)));
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(measurement(*fixture.buffer)); }, [&] { fixture.readReference(); },
        fixture.bytes);
}

// Gains that undo each other keep the samples in range however often a benchmark runs.
void BM_NativeAudioBuffer_scale(benchmark::State& state)
{
    bool up = false;
    edit(state, [&](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.scale((up = !up) ? 2.0f : 0.5f); });
}

void BM_NativeAudioBuffer_mix(benchmark::State& state)
{
    bool up = false;
    edit(state, [&](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer& other) {
        buffer.mixAudioBuffer(other, (up = !up) ? 1.0f : -1.0f);
    });
}

void BM_NativeAudioBuffer_copy(benchmark::State& state)
{
    edit(state, [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer& other) { buffer.copyAudioBuffer(other, 0); });
}

void BM_NativeAudioBuffer_clear(benchmark::State& state)
{
    edit(state, [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.clearWithValue(0.25f); });
}

void BM_NativeAudioBuffer_invert(benchmark::State& state)
{
    edit(state, [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.invert(); });
}

void BM_NativeAudioBuffer_reverse(benchmark::State& state)
{
    edit(state, [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.reverse(); });
}

// Repeated fades would shrink the samples into the slow denormal range; on silence they cost the same as on sound.
void BM_NativeAudioBuffer_fadeIn(benchmark::State& state)
{
    edit(state, [silent = false](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) mutable {
        if (!silent)
            buffer.clear();
        silent = true;
        buffer.fadeIn();
    });
}

void BM_NativeAudioBuffer_fadeOut(benchmark::State& state)
{
    edit(state, [silent = false](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) mutable {
        if (!silent)
            buffer.clear();
        silent = true;
        buffer.fadeOut();
    });
}

void BM_NativeAudioBuffer_peak(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.peak(); });
}

void BM_NativeAudioBuffer_maximum(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.maximum(); });
}

void BM_NativeAudioBuffer_minimum(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.minimum(); });
}

void BM_NativeAudioBuffer_rms(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.rms(); });
}

void BM_NativeAudioBuffer_energy(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.energy(); });
}

void BM_NativeAudioBuffer_average(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.average(); });
}

void BM_NativeAudioBuffer_clipped(benchmark::State& state)
{
    measure(state, [](const ZRNativeAudioBuffer& buffer) { return buffer.clipped(); });
}

}

#define ZR_NATIVE_BENCHMARK(name) BENCHMARK(name)->UseManualTime()->RangeMultiplier(64)->Range(64, 1 << 20)

ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_scale);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_mix);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_copy);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_clear);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_invert);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_reverse);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_fadeIn);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_fadeOut);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_peak);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_maximum);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_minimum);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_rms);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_energy);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_average);
ZR_NATIVE_BENCHMARK(BM_NativeAudioBuffer_clipped);
