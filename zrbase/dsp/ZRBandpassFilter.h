#pragma once

#include <zrbase/dsp/ZRBiquadFilter.h>

// A second-order band pass with a peak gain of 0 dB at the centre frequency.
class ZR_EXPORT ZRBandpassFilter : public ZRBiquadFilter {
public:
    const ZRFilterClass& filterClass() const noexcept override;

protected:
    void _updateCoefficients() noexcept override;
};
