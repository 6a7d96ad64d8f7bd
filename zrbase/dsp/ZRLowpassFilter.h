#pragma once

#include <zrbase/dsp/ZRBiquadFilter.h>

// A second-order low pass at the corner frequency: unity gain at DC; the bandwidth sets the resonance.
class ZR_EXPORT ZRLowpassFilter : public ZRBiquadFilter {
public:
    const ZRFilterClass& filterClass() const noexcept override;

protected:
    void _updateCoefficients() noexcept override;
};
