#include <zrbase/dsp/ZRLowpassFilter.h>

const ZRFilterClass& ZRLowpassFilter::filterClass() const noexcept { return *filterClassForType(Lowpass); }

void ZRLowpassFilter::_updateCoefficients() noexcept
{
    const auto [cs, alpha, a0] = _design();
    const float c0 = (1.0f - cs) * 0.5f / a0;
    _setCoefficients(c0, (1.0f - cs) / a0, c0, -2.0f * cs / a0, (1.0f - alpha) / a0);
}
