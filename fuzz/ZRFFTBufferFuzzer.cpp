#include <zrbase/audio/ZRFFTBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

// The input is a program of operations on one FFT buffer: resolution and window changes, resets, analyses of raw
// samples (any bit pattern, NaN and infinities included) and of buffers of any shape, pitch requests. Whatever
// the order, nothing reads or writes outside the spectra, and every spectrum read covers memory of the buffer.
namespace {

struct Reader {
    const uint8_t* data;
    size_t size;

    uint8_t byte()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }

    std::vector<float> samples(size_t count)
    {
        std::vector<float> values(std::min(count, size / sizeof(float)));
        if (values.empty())
            return values;
        std::memcpy(values.data(), data, values.size() * sizeof(float));
        data += values.size() * sizeof(float);
        size -= values.size() * sizeof(float);
        return values;
    }
};

float touch(std::span<const float> values)
{
    float sum = 0;
    for (float value : values)
        sum += value;
    return sum;
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Reader reader { data, size };
    auto buffer = ZRFFTBuffer::bufferWithResolution(reader.byte() % 12, reader.byte());
    if (!buffer)
        return 0;
    volatile float sink = 0;
    while (reader.size > 0) {
        switch (reader.byte() % 6) {
        case 0:
            buffer->setResolution(reader.byte() % 12);
            break;
        case 1:
            buffer->setWindowType(reader.byte() % 17);
            break;
        case 2:
            buffer->reset();
            break;
        case 3: {
            const uint32_t channel = reader.byte() % 4;
            const auto samples = reader.samples(reader.byte() * 8);
            buffer->analyzeAudioBuffer(samples.data(), uint32_t(samples.size()), channel);
            break;
        }
        case 4: {
            const uint32_t channels = reader.byte() % 4;
            const uint32_t frames = reader.byte() * 4;
            auto audio = channels ? ZRNativeAudioBuffer::bufferWithChannels(channels, frames)
                                  : std::make_unique<ZRNativeAudioBuffer>();
            for (uint32_t channel = 0; channel < channels; ++channel) {
                const auto samples = reader.samples(frames);
                audio->setSampleValues(samples.data(), uint32_t(samples.size()), channel);
            }
            buffer->analyzeAudioBuffer(*audio);
            break;
        }
        default:
            sink = sink + buffer->pitchForRate(44100, reader.byte() % 4);
            break;
        }
        for (uint32_t channel = 0; channel <= buffer->numberOfChannels(); ++channel)
            sink = sink + touch(buffer->magnitudeForChannel(channel)) + touch(buffer->phaseForChannel(channel));
    }
    return 0;
}
