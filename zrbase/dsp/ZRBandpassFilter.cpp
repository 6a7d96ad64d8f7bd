#include <zrbase/dsp/ZRBandpassFilter.h>

const ZRFilterClass& ZRBandpassFilter::filterClass() const noexcept { return *filterClassForType(Bandpass); }

// The numerator is alpha rather than sin(w0) / 2, which keeps the peak at 0 dB whatever the bandwidth.
void ZRBandpassFilter::_updateCoefficients() noexcept
{
    const auto [cs, alpha, a0] = _design();
    _setCoefficients(alpha / a0, 0.0f / a0, -alpha / a0, -2.0f * cs / a0, (1.0f - alpha) / a0);
}
