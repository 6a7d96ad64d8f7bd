#pragma once

#include <zrbase/dsp/ZRBiquadFilter.h>

// A second-order high pass at the corner frequency: unity gain at the Nyquist frequency; the bandwidth sets the
// resonance.
class ZR_EXPORT ZRHighpassFilter : public ZRBiquadFilter {
public:
    const ZRFilterClass& filterClass() const noexcept override;

protected:
    void _updateCoefficients() noexcept override;
};
