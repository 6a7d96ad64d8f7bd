#include <zrbase/dsp/ZRBWeightedFilter.h>

#include <zrbase/dsp/ZRWeightedFilterPrivate.h>

using namespace ZRWeighting;

namespace {

// History per channel: the 20.599 Hz sections (0, 1), the 158.502 Hz section (2) and the two low-pass sections
// (3, 4).
constexpr uint32_t historySamples = 5;

struct Sections {
    float c0, c1, c2, gain;

    template <typename T, typename Sample> [[gnu::always_inline]] void operator()(T& h, Sample& in) const noexcept
    {
        Sample t1, t2, t3, m;
        highPass(h[0], in, t1, c0);
        highPass(h[1], t1, t2, c0);
        lowPass(h[3], t2, c2);
        const Sample previous = h[4];
        lowPass(h[4], h[3], c2);
        mix(m, previous, h[4]);
        highPass(h[2], m, t3, c1);
        in = t3 * gain;
    }
};

ZR_VECTOR_CLONES void bWeightingLanes(const ZRFilterLanes& lanes, const Sections& sections) noexcept
{
    ZRFilterLoop::runLanes<historySamples>(lanes, sections);
}

}

ZRBWeightedFilter::ZRBWeightedFilter()
    : ZRWeightedFilter(historySamples)
{
    _updateCoefficients();
}

const ZRFilterClass& ZRBWeightedFilter::filterClass() const noexcept { return *filterClassForType(BWeighted); }

void ZRBWeightedFilter::_computeCoefficients() noexcept
{
    const Section low = section(20.599, sampleRate());
    const Section middle = section(158.502, sampleRate());
    _c0 = low.coefficient;
    _c1 = middle.coefficient;
    _c2 = highFrequencyCoefficient(sampleRate());
    _gain = float(double(sectionGain(middle.w)) * double(lowCutGain(low.w)) * 1.015);
}

void ZRBWeightedFilter::_filterLanes(const ZRFilterLanes& lanes) noexcept
{
    ZRFilterLoop::run<historySamples>(lanes, Sections { _c0, _c1, _c2, _gain }, bWeightingLanes);
}
