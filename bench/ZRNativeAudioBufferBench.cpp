#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include "ZRBenchmarkRatio.h"

#include <cstring>
#include <string>
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

template <typename Benchmark> void add(const std::string& name, Benchmark benchmark)
{
    benchmark::RegisterBenchmark(("BM_NativeAudioBuffer_" + name).c_str(), benchmark)
        ->UseManualTime()
        ->RangeMultiplier(64)
        ->Range(64, 1 << 20);
}

template <typename Edit> void addEdit(const std::string& name, Edit operation)
{
    add(name, [operation](benchmark::State& state) { edit(state, operation); });
}

template <typename Measure> void addMeasurement(const std::string& name, Measure measurement)
{
    add(name, [measurement](benchmark::State& state) { measure(state, measurement); });
}

// Repeated fades would shrink the samples into the slow denormal range; on silence they cost the same as on sound.
template <typename Fade> auto onSilence(Fade fade)
{
    return [fade, silent = false](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) mutable {
        if (!silent)
            buffer.clear();
        silent = true;
        fade(buffer);
    };
}

const bool registered = [] {
    // Gains that undo each other keep the samples in range however often a benchmark runs.
    addEdit("scale", [up = false](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) mutable {
        buffer.scale((up = !up) ? 2.0f : 0.5f);
    });
    addEdit("mix", [up = false](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer& other) mutable {
        buffer.mixAudioBuffer(other, (up = !up) ? 1.0f : -1.0f);
    });
    addEdit("copy", [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer& other) { buffer.copyAudioBuffer(other, 0); });
    addEdit("clear", [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.clearWithValue(0.25f); });
    addEdit("invert", [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.invert(); });
    addEdit("reverse", [](ZRNativeAudioBuffer& buffer, ZRNativeAudioBuffer&) { buffer.reverse(); });
    addEdit("fadeIn", onSilence([](ZRNativeAudioBuffer& buffer) { buffer.fadeIn(); }));
    addEdit("fadeOut", onSilence([](ZRNativeAudioBuffer& buffer) { buffer.fadeOut(); }));
    addMeasurement("peak", [](const ZRNativeAudioBuffer& buffer) { return buffer.peak(); });
    addMeasurement("maximum", [](const ZRNativeAudioBuffer& buffer) { return buffer.maximum(); });
    addMeasurement("minimum", [](const ZRNativeAudioBuffer& buffer) { return buffer.minimum(); });
    addMeasurement("rms", [](const ZRNativeAudioBuffer& buffer) { return buffer.rms(); });
    addMeasurement("energy", [](const ZRNativeAudioBuffer& buffer) { return buffer.energy(); });
    addMeasurement("average", [](const ZRNativeAudioBuffer& buffer) { return buffer.average(); });
    addMeasurement("clipped", [](const ZRNativeAudioBuffer& buffer) { return buffer.clipped(); });
    return true;
}();

}
