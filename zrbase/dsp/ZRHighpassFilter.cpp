#include <zrbase/dsp/ZRHighpassFilter.h>

const ZRFilterClass& ZRHighpassFilter::filterClass() const noexcept { return *filterClassForType(Highpass); }

void ZRHighpassFilter::_updateCoefficients() noexcept
{
    const auto [cs, alpha, a0] = _design();
    const float c0 = (1.0f + cs) * 0.5f / a0;
    _setCoefficients(c0, -(1.0f + cs) / a0, c0, -2.0f * cs / a0, (1.0f - alpha) / a0);
}
