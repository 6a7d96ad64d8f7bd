#include <zrbase/dsp/ZRCWeightedFilter.h>

#include <zrbase/dsp/ZRWeightedFilterPrivate.h>

using namespace ZRWeighting;

namespace {

// History per channel: the 20.599 Hz sections (0, 1) and the two low-pass sections (2, 3).
constexpr uint32_t historySamples = 4;

struct Sections {
    float c0, c1, gain;

    template <typename T, typename Sample> [[gnu::always_inline]] void operator()(T& h, Sample& in) const noexcept
    {
        Sample t1, t2, m;
        highPass(h[0], in, t1, c0);
        highPass(h[1], t1, t2, c0);
        lowPass(h[2], t2, c1);
        const Sample previous = h[3];
        lowPass(h[3], h[2], c1);
        mix(m, previous, h[3]);
        in = m * gain;
    }
};

ZR_VECTOR_CLONES void cWeightingLanes(const ZRFilterLanes& lanes, const Sections& sections) noexcept
{
    ZRFilterLoop::runLanes<historySamples>(lanes, sections);
}

}

ZRCWeightedFilter::ZRCWeightedFilter()
    : ZRWeightedFilter(historySamples)
{
    _updateCoefficients();
}

const ZRFilterClass& ZRCWeightedFilter::filterClass() const noexcept { return *filterClassForType(CWeighted); }

void ZRCWeightedFilter::_computeCoefficients() noexcept
{
    const Section low = section(20.599, sampleRate());
    _c0 = low.coefficient;
    _c1 = highFrequencyCoefficient(sampleRate());
    _gain = float(double(lowCutGain(low.w)) * 1.007);
}

void ZRCWeightedFilter::_filterLanes(const ZRFilterLanes& lanes) noexcept
{
    ZRFilterLoop::run<historySamples>(lanes, Sections { _c0, _c1, _gain }, cWeightingLanes);
}
