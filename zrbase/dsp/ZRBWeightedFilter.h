#pragma once

#include <zrbase/dsp/ZRWeightedFilter.h>

// B-weighting: two high-pass sections at 20.599 Hz, the shared upper pole pair as two low-pass sections mixed three
// quarters of a sample apart, and a high-pass section at 158.502 Hz; trimmed by 1.015.
class ZR_EXPORT ZRBWeightedFilter : public ZRWeightedFilter {
public:
    ZRBWeightedFilter();
    const ZRFilterClass& filterClass() const noexcept override;

    // The coefficients of the 20.599 Hz sections, the 158.502 Hz section and the upper pole pair.
    float c0() const noexcept { return _c0; }
    float c1() const noexcept { return _c1; }
    float c2() const noexcept { return _c2; }

protected:
    void _computeCoefficients() noexcept override;
    void _filterLanes(const ZRFilterLanes& lanes) noexcept override;

private:
    float _c0 = 0.0f, _c1 = 0.0f, _c2 = 0.0f;
};
