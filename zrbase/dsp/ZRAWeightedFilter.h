#pragma once

#include <zrbase/dsp/ZRWeightedFilter.h>

// A-weighting: two high-pass sections at 20.599 Hz, two at 107.652 Hz and 737.862 Hz, and the shared upper pole
// pair as two low-pass sections whose outputs are mixed three quarters of a sample apart; trimmed by 1.25.
class ZR_EXPORT ZRAWeightedFilter : public ZRWeightedFilter {
public:
    ZRAWeightedFilter();
    const ZRFilterClass& filterClass() const noexcept override;

    // The coefficients of the 20.599 Hz sections, the 107.652 Hz section, the 737.862 Hz section, and the upper
    // pole pair.
    float c0() const noexcept { return _c0; }
    float c1() const noexcept { return _c1; }
    float c2() const noexcept { return _c2; }
    float c3() const noexcept { return _c3; }

protected:
    void _computeCoefficients() noexcept override;
    void _filterLanes(const ZRFilterLanes& lanes) noexcept override;

private:
    float _c0 = 0.0f, _c1 = 0.0f, _c2 = 0.0f, _c3 = 0.0f;
};
