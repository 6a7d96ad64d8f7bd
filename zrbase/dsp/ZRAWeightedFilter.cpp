#include <zrbase/dsp/ZRAWeightedFilter.h>

#include <zrbase/dsp/ZRWeightedFilterPrivate.h>

using namespace ZRWeighting;

namespace {

// History per channel: the 20.599 Hz sections (0, 1), the 107.652 Hz (2) and 737.862 Hz (3) sections, and the
// two low-pass sections (4, 5).
constexpr uint32_t historySamples = 6;

struct Sections {
    float c0, c1, c2, c3, gain;

    template <typename T, typename Sample> [[gnu::always_inline]] void operator()(T& h, Sample& in) const noexcept
    {
        Sample t1, t2, t3, t4, m;
        highPass(h[0], in, t1, c0);
        highPass(h[1], t1, t2, c0);
        lowPass(h[4], t2, c3);
        const Sample previous = h[5];
        lowPass(h[5], h[4], c3);
        mix(m, previous, h[5]);
        highPass(h[2], m, t3, c1);
        highPass(h[3], t3, t4, c2);
        in = t4 * gain;
    }
};

ZR_VECTOR_CLONES void aWeightingLanes(const ZRFilterLanes& lanes, const Sections& sections) noexcept
{
    ZRFilterLoop::runLanes<historySamples>(lanes, sections);
}

}

ZRAWeightedFilter::ZRAWeightedFilter()
    : ZRWeightedFilter(historySamples)
{
    _updateCoefficients();
}

const ZRFilterClass& ZRAWeightedFilter::filterClass() const noexcept { return *filterClassForType(AWeighted); }

void ZRAWeightedFilter::_computeCoefficients() noexcept
{
    const Section low = section(20.599, sampleRate());
    const Section middle = section(107.652, sampleRate());
    const Section high = section(737.862, sampleRate());
    _c0 = low.coefficient;
    _c1 = middle.coefficient;
    _c2 = high.coefficient;
    _c3 = highFrequencyCoefficient(sampleRate());
    _gain = float(double(sectionGain(high.w)) * (double(sectionGain(middle.w)) * double(lowCutGain(low.w))) * 1.25);
}

void ZRAWeightedFilter::_filterLanes(const ZRFilterLanes& lanes) noexcept
{
    ZRFilterLoop::run<historySamples>(lanes, Sections { _c0, _c1, _c2, _c3, _gain }, aWeightingLanes);
}
