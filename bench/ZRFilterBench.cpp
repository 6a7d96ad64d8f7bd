#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRFilter.h>

#include "ZRBenchmarkRatio.h"

#include <cstring>
#include <random>
#include <string>
#include <vector>

// A low pass and an A-weighting filter over 1, 2 and 8 channels of 65,536 frames, the channels filtered side by
// side, against the same channels filtered one after another by the one-channel loop (a filter of its own for
// each channel, over a one-channel view of it). Both start every iteration from the same noise: repeated in place,
// the A curve's gain above 1 would otherwise grow the signal without bound.

namespace {

constexpr uint32_t frames = 65536;

struct Fixture {
    Fixture(uint32_t type, uint32_t channels)
        : source(ZRNativeAudioBuffer::bufferWithChannels(channels, frames))
        , together(ZRNativeAudioBuffer::bufferWithChannels(channels, frames))
        , apart(ZRNativeAudioBuffer::bufferWithChannels(channels, frames))
        , lists(channels)
    {
        std::minstd_rand generator(1);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        for (uint32_t channel = 0; channel < channels; ++channel) {
            for (uint32_t frame = 0; frame < frames; ++frame)
                source->channel(channel)[frame] = noise(generator);
            lists[channel] = { 1, { { 1, frames * sizeof(float), apart->channel(channel) } } };
            views.push_back(std::make_unique<ZRNativeAudioBuffer>(&lists[channel]));
            filters.push_back(ZRFilter::filterClassForType(type)->filter());
        }
        // One more filters all channels together.
        filters.push_back(ZRFilter::filterClassForType(type)->filter());
        // A kilohertz for the low pass; the weighting filter reads only "active".
        for (auto& each : filters)
            each->setState({ { "active", true }, { "frequency", 1000.0f } });
    }

    void restore()
    {
        for (uint32_t channel = 0; channel < source->channels(); ++channel) {
            std::memcpy(together->channel(channel), source->channel(channel), frames * sizeof(float));
            std::memcpy(apart->channel(channel), source->channel(channel), frames * sizeof(float));
        }
    }

    std::unique_ptr<ZRNativeAudioBuffer> source, together, apart;
    std::vector<AudioBufferList> lists;
    std::vector<std::unique_ptr<ZRNativeAudioBuffer>> views;
    std::vector<std::unique_ptr<ZRFilter>> filters;
};

void filterChannels(benchmark::State& state, uint32_t type)
{
    const uint32_t channels = uint32_t(state.range(0));
    Fixture fixture(type, channels);
    ZRBenchmarkRatio(
        state, [&] { fixture.restore(); },
        [&] {
            fixture.filters.back()->filter(*fixture.together);
            benchmark::ClobberMemory();
        },
        [&] {
            for (uint32_t channel = 0; channel < channels; ++channel)
                fixture.filters[channel]->filter(*fixture.views[channel]);
            benchmark::ClobberMemory();
        },
        int64_t(channels) * frames * int64_t(sizeof(float)));
    state.counters["per_sample"] = benchmark::Counter(
        double(channels) * frames, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

const bool registered = [] {
    for (auto [name, type] : { std::pair { "Lowpass", ZRFilter::Lowpass }, { "AWeighted", ZRFilter::AWeighted } })
        benchmark::RegisterBenchmark((std::string("BM_Filter_") + name).c_str(), filterChannels, type)
            ->UseManualTime()
            ->Arg(1)
            ->Arg(2)
            ->Arg(8);
    return true;
}();

}
