#pragma once

#include <zrbase/dsp/ZRFilter.h>

// A second-order recursive section, the base of the low, high and band passes, which differ only in how they
// derive the five coefficients from frequency, bandwidth and sample rate. Its coefficients are 0, so that an
// active filter gives silence, until a frequency, bandwidth, state or new sample rate is set.
//
// Each output is in × c0 + x[0] × c1 + x[1] × c2 − y[0] × c3 − y[1] × c4 in float, in that order, where x holds the
// last two inputs and y the last two outputs of the channel. Buffers of 0 or 1 frames are left alone, history
// included. An inactive filter keeps its history aligned with the signal: both histories take the last two
// samples of the block, so that switching it on does not start from a stale state.
class ZR_EXPORT ZRBiquadFilter : public ZRFilter {
public:
    // 1000 Hz, two octaves, 48000 Hz; the coefficients are not computed yet.
    ZRBiquadFilter();
    // Of no type in the table; its subclasses are.
    const ZRFilterClass& filterClass() const noexcept override;

    // The corner frequency (low and high pass) or the centre frequency (band pass) in Hz.
    float frequency() const noexcept { return _frequency; }
    // Recomputes the coefficients, also for an unchanged value.
    void setFrequency(float frequency) noexcept;
    // The bandwidth between the −3 dB points in octaves.
    float bandwidth() const noexcept { return _bandwidth; }
    // Recomputes the coefficients, also for an unchanged value.
    void setBandwidth(float bandwidth) noexcept;
    // Recomputes the coefficients unless the rate equals the current one exactly.
    void setSampleRate(double sampleRate) noexcept override;

    // b0/a0, b1/a0, b2/a0 (feed-forward) and a1/a0, a2/a0 (feedback).
    float c0() const noexcept { return _c[0]; }
    float c1() const noexcept { return _c[1]; }
    float c2() const noexcept { return _c[2]; }
    float c3() const noexcept { return _c[3]; }
    float c4() const noexcept { return _c[4]; }

    // The input (x) and output (y) history of a channel: frame 0 is one sample back, frame 1 two; 0 outside.
    float x(uint32_t channel, uint32_t frame) const noexcept { return frame < 2 ? _historyValue(channel, frame) : 0; }
    float y(uint32_t channel, uint32_t frame) const noexcept
    {
        return frame < 2 ? _historyValue(channel, 2 + frame) : 0;
    }

    void filter(ZRNativeAudioBuffer& buffer) noexcept override;
    // Clears the history and keeps the coefficients.
    void reset() noexcept override { _clearHistory(); }

    // Adds "frequency" and "bandwidth".
    ZRDictionary state() const override;
    // Reads "active", "frequency" and "bandwidth" where present, then recomputes the coefficients.
    void setState(const ZRDictionary& state) override;

protected:
    // What the three designs share: w0 = 2π f / fs, its cosine, and alpha from the octave bandwidth.
    struct Design {
        float cosine;
        float alpha;
        float a0;
    };
    Design _design() const noexcept;
    void _setCoefficients(float c0, float c1, float c2, float c3, float c4) noexcept;
    virtual void _updateCoefficients() noexcept { }

    void _filterLanes(const ZRFilterLanes& lanes) noexcept override;

private:
    float _frequency = 1000.0f;
    float _bandwidth = 2.0f;
    float _c[5] = {};
};
