#pragma once

#include <zrbase/dsp/ZRFilter.h>

// The base of the A, B and C frequency weightings used in loudness metering: cascades of one-pole sections whose
// coefficients come from closed-form approximations of the analogue poles at the sample rate, with a fixed gain
// trim per curve. A new filter is ready for 48000 Hz; every change of the sample rate clears the history.
//
// An inactive weighting filter does nothing at all: buffer, history and the history's channel count stay as they
// are. On silence an active one gives small values at first, from the offset of 2^-20 that its high-pass sections
// add to keep their state out of the denormal range.
class ZR_EXPORT ZRWeightedFilter : public ZRFilter {
public:
    // Stores the rate, clears the history and recomputes the coefficients, also for an unchanged rate.
    void setSampleRate(double sampleRate) noexcept override;

    // The fixed output gain that normalises the curve.
    float gain() const noexcept { return _gain; }
    // A value of a channel's history (the sections' states); 0 outside.
    float z(uint32_t channel, uint32_t index) const noexcept { return _historyValue(channel, index); }

    void filter(ZRNativeAudioBuffer& buffer) noexcept override;
    void reset() noexcept override { _clearHistory(); }

protected:
    explicit ZRWeightedFilter(uint32_t historySamples);
    // Clears the history, then computes the coefficients for the sample rate.
    void _updateCoefficients() noexcept;
    virtual void _computeCoefficients() noexcept = 0;

    float _gain = 0.0f;
};
