#pragma once

#include <zrbase/core/ZRError.h>

#include <cmath>
#include <cstdint>
#include <future>
#include <memory>
#include <vector>

class ZRFilter;
class ZRNativeAudioBuffer;

namespace zr {

class LoudnessMeter;
class SpectrumAccumulator;
class TruePeakMeter;

// Levels as linear amplitudes relative to full scale (1.0).
struct LevelStatistics {
    double peak = 0.0;
    double truePeak = 0.0;
    double rms = 0.0;
    double dcOffset = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
    uint64_t clippedSamples = 0;
    double aWeightedRms = 0.0;
    double bWeightedRms = 0.0;
    double cWeightedRms = 0.0;

    // RMS scaled so that a full-scale sine reads 0 dB (AES17): RMS × √2.
    double aes17Rms() const noexcept;
    // Peak over RMS, as a ratio.
    double crestFactor() const noexcept;
};

struct AnalysisResult {
    double sampleRate = 0.0;
    uint32_t channels = 0;
    uint64_t frames = 0;
    // Only the sample statistics: no true peak, weighting, loudness or spectrum.
    bool basic = false;
    std::vector<LevelStatistics> perChannel;
    // Every sample of every channel taken together.
    LevelStatistics overall;
    double integratedLufs = 0.0;
    double loudnessRangeLu = 0.0;
    double maxMomentaryLufs = 0.0;
    double maxShortTermLufs = 0.0;
    double spectralCentroidHz = 0.0;
    double spectralRolloffHz = 0.0;
    double pitchHz = 0.0;
};

// One pass over a signal, block after block: sample statistics per channel, A-, B- and C-weighted RMS through the
// library's filters, EBU R128 loudness through libebur128, the 4× oversampled true peak, and the average spectrum
// of the channels' mix through the FFT buffer, with its centroid, roll-off and pitch estimate. Loudness, true peak
// and spectrum measure a copy of each block on a thread of their own while the calling thread weights it and reads
// the next one: the two halves cost about the same.
class Analyzer {
public:
    // The fraction of the spectrum's summed magnitude below the roll-off frequency.
    static constexpr double rolloffFraction = 0.85;
    // log2 of the spectrum's frame length.
    static constexpr uint32_t spectrumResolution = 12;

    static std::unique_ptr<Analyzer> analyzerWithFormat(
        double sampleRate, uint32_t channels, bool basic, ZRErrorPtr* error = nullptr);
    ~Analyzer();
    Analyzer(const Analyzer&) = delete;
    Analyzer& operator=(const Analyzer&) = delete;

    // Adds a block of any length with the analyzer's channel count.
    void process(const ZRNativeAudioBuffer& block);
    // Ends the signal and answers the results; nothing may be processed afterwards.
    AnalysisResult finish();

private:
    struct Sums {
        double sum = 0.0;
        double squares = 0.0;
        double weightedSquares[3] = { 0.0, 0.0, 0.0 };
        float peak = 0.0f;
        float minimum = HUGE_VALF;
        float maximum = -HUGE_VALF;
        uint64_t clipped = 0;
    };

    Analyzer(double sampleRate, uint32_t channels, bool basic);
    void _processWeighting(const ZRNativeAudioBuffer& block);
    void _startBackground(const ZRNativeAudioBuffer& block);

    double _sampleRate;
    uint32_t _channels;
    bool _basic;
    uint64_t _frames = 0;
    std::vector<Sums> _sums;

    std::unique_ptr<ZRFilter> _weightings[3];
    std::unique_ptr<ZRNativeAudioBuffer> _weighted;

    // The background thread's work: its copy of the block, the loudness meter's interleaved frames.
    std::future<void> _background;
    std::unique_ptr<ZRNativeAudioBuffer> _backgroundBlock;
    std::vector<float> _interleaved;
    std::unique_ptr<LoudnessMeter> _loudness;
    std::unique_ptr<TruePeakMeter> _truePeak;
    std::unique_ptr<SpectrumAccumulator> _spectrum;
};

}
