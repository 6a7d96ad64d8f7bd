#pragma once

#include <zrbase/dsp/ZRWeightedFilter.h>

// C-weighting: two high-pass sections at 20.599 Hz and the shared upper pole pair as two low-pass sections mixed
// three quarters of a sample apart; trimmed by 1.007.
class ZR_EXPORT ZRCWeightedFilter : public ZRWeightedFilter {
public:
    ZRCWeightedFilter();
    const ZRFilterClass& filterClass() const noexcept override;

    // The coefficients of the 20.599 Hz sections and the upper pole pair.
    float c0() const noexcept { return _c0; }
    float c1() const noexcept { return _c1; }

protected:
    void _computeCoefficients() noexcept override;
    void _filterLanes(const ZRFilterLanes& lanes) noexcept override;

private:
    float _c0 = 0.0f, _c1 = 0.0f;
};
