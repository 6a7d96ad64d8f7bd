#include <zrbase/codec/ZRConverter.h>

#include "ZRBenchmarkRatio.h"

#include <soxr.h>

#include <cmath>
#include <vector>

// 44100 to 48000 Hz conversion of stereo float through a converter against libsoxr called directly on the same
// data with the same recipe, in blocks of the same size, into output buffers made beforehand on both sides.
// "ratio" is the reference's time over ours.
namespace {

constexpr uint32_t seconds = 10;
constexpr uint32_t inputFrames = 44100 * seconds;
constexpr uint32_t outputFrames = 48000 * seconds;

struct Source {
    const ZRNativeAudioBuffer* block;
    uint32_t at = 0;
    static OSStatus supply(
        AudioConverterRef, uint32_t* packets, AudioBufferList* data, AudioStreamPacketDescription**, void* user)
    {
        auto& self = *static_cast<Source*>(user);
        const uint32_t count = std::min(*packets, self.block->frames() - self.at);
        for (uint32_t channel = 0; channel < 2; ++channel)
            data->mBuffers[channel] = { 1, count * 4, self.block->channel(channel) + self.at };
        self.at += count;
        *packets = count;
        return noErr;
    }
};

void BM_Converter_resample44100To48000(benchmark::State& state)
{
    auto input = ZRNativeAudioBuffer::bufferWithChannels(2, inputFrames);
    for (uint32_t i = 0; i < inputFrames; ++i) {
        input->setSampleValue(float(0.5 * std::sin(i * 0.0627)), i, 0);
        input->setSampleValue(float(0.25 * std::sin(i * 0.0941)), i, 1);
    }
    std::vector<float> left(outputFrames + 1024), right(outputFrames + 1024);
    const uint32_t block = uint32_t(state.range(0));
    // Our output goes into a buffer made beforehand, as the reference's does.
    auto part = ZRNativeAudioBuffer::bufferWithChannels(2, block);
    ZRBenchmarkRatio(
        state,
        [&] {
            auto converter = ZRConverter::converterWithSourceFormat(
                ZRAudioStreamDescription(44100, 2), ZRAudioStreamDescription(48000, 2));
            Source source { input.get() };
            converter->setCallback(Source::supply, &source);
            uint32_t made = 0;
            do {
                part->setFrames(block);
                made = converter->convertToNativeBufferUsingCallback(*part);
            } while (made == block);
        },
        [&] {
            const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
            const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
            soxr_t soxr = soxr_create(44100, 48000, 2, nullptr, &io, &quality, nullptr);
            const uint32_t inputBlock = uint32_t(uint64_t(block) * 44100 / 48000);
            size_t done = 0;
            size_t made = 0;
            for (uint32_t at = 0; at < inputFrames; at += inputBlock) {
                const float* in[2] = { input->channel(0) + at, input->channel(1) + at };
                float* out[2] = { left.data() + made, right.data() + made };
                size_t used = 0;
                size_t produced = 0;
                soxr_process(soxr, in, std::min(inputBlock, inputFrames - at), &used, out, outputFrames + 1024 - made,
                    &produced);
                made += produced;
                done += used;
            }
            float* out[2] = { left.data() + made, right.data() + made };
            size_t produced = 0;
            soxr_process(soxr, nullptr, 0, nullptr, out, outputFrames + 1024 - made, &produced);
            soxr_delete(soxr);
            benchmark::DoNotOptimize(done + made + produced);
        },
        int64_t(inputFrames) * 8);
}
BENCHMARK(BM_Converter_resample44100To48000)
    ->Arg(1024)
    ->Arg(4096)
    ->Arg(65536)
    ->MinTime(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
