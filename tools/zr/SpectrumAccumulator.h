#pragma once

#include <zrbase/core/ZRError.h>

#include <cstdint>
#include <memory>
#include <vector>

class ZRFFTBuffer;
class ZRNativeAudioBuffer;

namespace zr {

// The average spectrum of the mix of a signal's channels through the FFT buffer: frames of N = 2^resolution
// samples that do not overlap, under a window, the last one padded with zeros.
class SpectrumAccumulator {
public:
    static std::unique_ptr<SpectrumAccumulator> accumulatorWithResolution(
        uint32_t resolution, uint32_t windowType, double sampleRate, ZRErrorPtr* error = nullptr);
    ~SpectrumAccumulator();

    void process(const ZRNativeAudioBuffer& block);
    // Ends the signal. A remainder shorter than half a frame is left out (it would add a quieter padded frame)
    // unless it is the whole signal.
    void finish();

    uint32_t frameLength() const noexcept { return uint32_t(_frame.size()); }
    double sampleRate() const noexcept { return _sampleRate; }
    double binWidth() const noexcept { return _sampleRate / double(_frame.size()); }
    uint64_t framesAnalyzed() const noexcept { return _framesAnalyzed; }
    // The mean magnitude of each bin (bin 0 holds DC and Nyquist together), scaled so that a full-scale sine
    // under any window peaks at 1.0.
    std::vector<double> averageMagnitude() const;
    // The magnitude-weighted mean frequency and the frequency below which `fraction` of the summed magnitude lies,
    // both without bin 0.
    double centroid() const;
    double rolloff(double fraction) const;
    // The estimated fundamental in Hz.
    double pitch() const;

private:
    SpectrumAccumulator(std::unique_ptr<ZRFFTBuffer> fft, double sampleRate);
    void _analyzeFrame();

    std::unique_ptr<ZRFFTBuffer> _fft;
    double _sampleRate;
    std::vector<float> _frame;
    uint32_t _filled = 0;
    uint64_t _framesAnalyzed = 0;
};

// The mix of a block's channels from frame `first` on, `count` frames, into `mix`.
void mixChannels(const ZRNativeAudioBuffer& block, uint32_t first, uint32_t count, float* mix) noexcept;

}
