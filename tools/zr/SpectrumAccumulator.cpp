#include "SpectrumAccumulator.h"

#include "ToolError.h"

#include <zrbase/audio/ZRFFTBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zr {

void mixChannels(const ZRNativeAudioBuffer& block, uint32_t first, uint32_t count, float* mix) noexcept
{
    const uint32_t channels = block.channels();
    std::copy_n(block.channel(0) + first, count, mix);
    for (uint32_t c = 1; c < channels; ++c) {
        const float* samples = block.channel(c) + first;
        for (uint32_t i = 0; i < count; ++i)
            mix[i] += samples[i];
    }
    if (channels > 1) {
        const float scale = 1.0f / float(channels);
        for (uint32_t i = 0; i < count; ++i)
            mix[i] *= scale;
    }
}

std::unique_ptr<SpectrumAccumulator> SpectrumAccumulator::accumulatorWithResolution(
    uint32_t resolution, uint32_t windowType, double sampleRate, ZRErrorPtr* error)
{
    // The rectangular window is built only when the code changes to it from another one.
    std::unique_ptr<ZRFFTBuffer> fft
        = ZRFFTBuffer::bufferWithResolution(resolution, windowType == 0 ? ZRFFTBuffer::WindowHann : windowType);
    if (!fft || resolution < 4) {
        if (error)
            *error = toolError("Setting up the spectrum", "the resolution must lie between 4 and 24");
        return nullptr;
    }
    fft->setWindowType(windowType);
    fft->reset();
    return std::unique_ptr<SpectrumAccumulator>(new SpectrumAccumulator(std::move(fft), sampleRate));
}

SpectrumAccumulator::SpectrumAccumulator(std::unique_ptr<ZRFFTBuffer> fft, double sampleRate)
    : _fft(std::move(fft))
    , _sampleRate(sampleRate)
    , _frame(size_t(1) << _fft->resolution())
{
}

SpectrumAccumulator::~SpectrumAccumulator() = default;

void SpectrumAccumulator::process(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    const uint32_t length = frameLength();
    uint32_t done = 0;
    while (done < frames) {
        const uint32_t count = std::min(frames - done, length - _filled);
        mixChannels(block, done, count, _frame.data() + _filled);
        _filled += count;
        done += count;
        if (_filled == length)
            _analyzeFrame();
    }
}

void SpectrumAccumulator::_analyzeFrame()
{
    _fft->analyzeAudioBuffer(_frame.data(), _filled, 0);
    _framesAnalyzed += 1;
    _filled = 0;
}

void SpectrumAccumulator::finish()
{
    if (_filled > 0 && (_framesAnalyzed == 0 || _filled >= frameLength() / 2))
        _analyzeFrame();
}

std::vector<double> SpectrumAccumulator::averageMagnitude() const
{
    const std::span<const float> magnitude = _fft->magnitudeForChannel(0);
    const std::span<const float> window = _fft->windowFunction();
    // A sine of amplitude A peaks at A × Σw in the buffer's scale (twice the DFT of the windowed frame).
    const double windowSum = std::accumulate(window.begin(), window.end(), 0.0);
    const double scale = 1.0 / (std::max<uint64_t>(_framesAnalyzed, 1) * windowSum);
    std::vector<double> average(magnitude.size());
    for (size_t k = 0; k < magnitude.size(); ++k)
        average[k] = magnitude[k] * scale;
    return average;
}

double SpectrumAccumulator::centroid() const
{
    const std::span<const float> magnitude = _fft->magnitudeForChannel(0);
    double weighted = 0.0, total = 0.0;
    for (size_t k = 1; k < magnitude.size(); ++k) {
        weighted += double(k) * magnitude[k];
        total += magnitude[k];
    }
    return total > 0.0 ? weighted / total * binWidth() : 0.0;
}

double SpectrumAccumulator::rolloff(double fraction) const
{
    const std::span<const float> magnitude = _fft->magnitudeForChannel(0);
    const double total
        = std::accumulate(magnitude.begin() + std::min<size_t>(1, magnitude.size()), magnitude.end(), 0.0);
    double below = 0.0;
    for (size_t k = 1; k < magnitude.size() && total > 0.0; ++k) {
        below += magnitude[k];
        if (below >= fraction * total)
            return double(k) * binWidth();
    }
    return 0.0;
}

double SpectrumAccumulator::pitch() const
{
    return _framesAnalyzed ? _fft->pitchForRate(uint32_t(std::lround(_sampleRate))) : 0.0;
}

}
