#include "TruePeakMeter.h"
#include "VectorClones.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace zr {

namespace {

    // Eight floats: one AVX register, or two SSE ones.
    typedef float Lanes __attribute__((vector_size(32)));

    // Filled through a reference: a vector this wide returned by value would change the baseline build's ABI.
    [[gnu::always_inline]] inline void load(Lanes& x, const float* samples) noexcept
    {
        std::memcpy(&x, samples, sizeof x);
    }

    // The largest magnitude of the four phases over `frames` samples, which follow their filter's history. Eight
    // consecutive outputs of one phase at a time, so that every tap is one multiply-add of eight samples.
    ZR_TOOL_VECTOR_CLONES float zrTruePeakOfRun(
        const float* x, uint32_t frames, const float (*coefficients)[TruePeakMeter::factor]) noexcept
    {
        constexpr uint32_t taps = TruePeakMeter::tapsPerPhase;
        Lanes peak = {};
        uint32_t i = 0;
        for (; i + 8 <= frames; i += 8) {
            for (uint32_t phase = 0; phase < TruePeakMeter::factor; ++phase) {
                Lanes samples, sum = {};
                for (uint32_t k = 0; k < taps; ++k) {
                    load(samples, x + i - k);
                    sum += coefficients[k][phase] * samples;
                }
                const Lanes magnitude = sum < 0 ? -sum : sum;
                peak = magnitude > peak ? magnitude : peak;
            }
        }
        float result = 0.0f;
        for (int lane = 0; lane < 8; ++lane)
            result = std::max(result, peak[lane]);
        for (; i < frames; ++i)
            for (uint32_t phase = 0; phase < TruePeakMeter::factor; ++phase) {
                float sum = 0.0f;
                for (uint32_t k = 0; k < taps; ++k)
                    sum += coefficients[k][phase] * x[int64_t(i) - k];
                result = std::max(result, std::fabs(sum));
            }
        return result;
    }

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
    for (uint32_t c = 0; c < _histories.size(); ++c) {
        std::vector<float>& history = _histories[c];
        history.resize(tapsPerPhase - 1 + size_t(frames));
        std::copy_n(block.channel(c), frames, history.begin() + (tapsPerPhase - 1));
        _peaks[c]
            = std::max(_peaks[c], zrTruePeakOfRun(history.data() + (tapsPerPhase - 1), frames, _coefficients.data()));
        std::copy(history.end() - (tapsPerPhase - 1), history.end(), history.begin());
        history.resize(tapsPerPhase - 1);
    }
}

}
