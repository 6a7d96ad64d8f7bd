#pragma once

#include <zrbase/dsp/ZRFilterLanesPrivate.h>

#include <cmath>

// The pieces the A, B and C weightings are built from. All arithmetic is float unless it says double, and runs in
// the order written: the curves are defined by these exact roundings.
namespace ZRWeighting {

// Added inside the high-pass sections so that their state never decays into denormal numbers on silence, which
// would slow the loops down drastically.
constexpr float offset = 0x1p-20f;

// A one-pole section at `frequency`: w = 2π F / fs, and the coefficient w × (1 − 3 F / fs), which corrects the
// plain w for the one-pole form at higher corner frequencies.
struct Section {
    float coefficient;
    float w;
};

// Kept out of line: when GCC 12 inlines two of these side by side, its straight-line vectoriser multiplies by the
// unrounded double product instead of w, and the coefficient comes out an ulp off.
[[gnu::noinline]] inline Section section(double frequency, double sampleRate) noexcept
{
    const double k = frequency / sampleRate;
    const float w = float(k * 6.283185307179586);
    return { float(double(w) * (k * -3.0 + 1.0)), w };
}

// The coefficient standing for the upper pole pair that all three curves share.
inline float highFrequencyCoefficient(double sampleRate) noexcept
{
    return float(std::exp(sampleRate / 100000.0 * -1.3003) * 1.0531 + 0.2527);
}

// The gain the two 20.599 Hz sections lose, 4 / (2 − w)², and the gain another high-pass section loses, 2 / (2 − w).
inline float lowCutGain(float w) noexcept { return 4.0f / ((2.0f - w) * (2.0f - w)); }
inline float sectionGain(float w) noexcept { return 2.0f / (2.0f - w); }

// state = ((in − state) + offset) × c + state; out = in − state.
template <typename S> [[gnu::always_inline]] inline void highPass(S& state, const S& in, S& out, float c) noexcept
{
    state = ((in - state) + offset) * c + state;
    out = in - state;
}

template <typename S> [[gnu::always_inline]] inline void lowPass(S& state, const S& in, float c) noexcept
{
    state = (in - state) * c + state;
}

// The last two low-pass outputs interpolated three quarters of a sample on: float(double(p × 0.25) + h × 0.75).
[[gnu::always_inline]] inline void mix(float& out, const float& previous, const float& latest) noexcept
{
    out = float(double(previous * 0.25f) + double(latest) * 0.75);
}

[[gnu::always_inline]] inline void mix(ZRFloat8& out, const ZRFloat8& previous, const ZRFloat8& latest) noexcept
{
    const ZRDouble8 quarter = __builtin_convertvector(previous * 0.25f, ZRDouble8);
    out = __builtin_convertvector(quarter + __builtin_convertvector(latest, ZRDouble8) * 0.75, ZRFloat8);
}

}
