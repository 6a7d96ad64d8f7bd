#include "TruePeakMeter.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zr {

namespace {

    // Four floats that the compiler keeps in one vector register on every target.
    typedef float Lanes __attribute__((vector_size(16)));

}

TruePeakMeter::TruePeakMeter(uint32_t channels)
    : _histories(channels, std::vector<float>(tapsPerPhase - 1, 0.0f))
    , _peaks(channels, 0.0f)
{
    // A sinc low pass at the original Nyquist frequency under a Hann window, its taps centred between samples, each
    // phase scaled to pass a constant signal unchanged.
    constexpr uint32_t taps = factor * tapsPerPhase;
    constexpr double centre = (taps - 1) / 2.0;
    double taper[taps];
    double sums[factor] = {};
    for (uint32_t n = 0; n < taps; ++n) {
        const double x = (n - centre) / factor;
        const double sinc = std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
        const double window = 0.5 * (1.0 - std::cos(2.0 * std::numbers::pi * (n + 0.5) / taps));
        taper[n] = sinc * window;
        sums[n % factor] += taper[n];
    }
    for (uint32_t n = 0; n < taps; ++n)
        _coefficients[n / factor][n % factor] = float(taper[n] / sums[n % factor]);
}

void TruePeakMeter::process(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    Lanes coefficients[tapsPerPhase];
    for (uint32_t k = 0; k < tapsPerPhase; ++k)
        for (uint32_t phase = 0; phase < factor; ++phase)
            coefficients[k][phase] = _coefficients[k][phase];
    for (uint32_t c = 0; c < _histories.size(); ++c) {
        std::vector<float>& history = _histories[c];
        history.resize(tapsPerPhase - 1 + size_t(frames));
        std::copy_n(block.channel(c), frames, history.begin() + (tapsPerPhase - 1));
        const float* x = history.data() + (tapsPerPhase - 1);
        Lanes peak = {};
        for (uint32_t i = 0; i < frames; ++i) {
            Lanes sum = coefficients[0] * x[i];
            for (uint32_t k = 1; k < tapsPerPhase; ++k)
                sum += coefficients[k] * x[int64_t(i) - k];
            const Lanes magnitude = sum < 0 ? -sum : sum;
            peak = magnitude > peak ? magnitude : peak;
        }
        for (uint32_t phase = 0; phase < factor; ++phase)
            _peaks[c] = std::max(_peaks[c], peak[phase]);
        std::copy(history.end() - (tapsPerPhase - 1), history.end(), history.begin());
        history.resize(tapsPerPhase - 1);
    }
}

}
