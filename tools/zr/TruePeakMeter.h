#pragma once

#include <array>
#include <cstdint>
#include <vector>

class ZRNativeAudioBuffer;

namespace zr {

// The true peak of each channel as ITU-R BS.1770 measures it: the largest magnitude of the signal oversampled four
// times by a 48-tap interpolation filter (12 taps per phase), which finds the peaks between samples that a
// digital-to-analogue converter will produce. Eight outputs of a phase are computed together in one vector.
class TruePeakMeter {
public:
    static constexpr uint32_t factor = 4;
    static constexpr uint32_t tapsPerPhase = 12;

    explicit TruePeakMeter(uint32_t channels);

    // Adds a block with the meter's channel count.
    void process(const ZRNativeAudioBuffer& block);
    // The largest oversampled magnitude of a channel so far, as a linear amplitude.
    float truePeak(uint32_t channel) const noexcept { return _peaks[channel]; }

private:
    // Coefficient k of every phase: the filter's taps k × 4 + phase.
    std::array<float[factor], tapsPerPhase> _coefficients;
    // Per channel: the last tapsPerPhase - 1 samples, followed by room for a block.
    std::vector<std::vector<float>> _histories;
    std::vector<float> _peaks;
};

}
