#include <zrbase/dsp/ZRDCFilter.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRFilterLanesPrivate.h>

namespace {

// History per channel: the previous input, then the previous output.
constexpr uint32_t historySamples = 2;

struct Pole {
    float c0;

    template <typename T, typename Sample> [[gnu::always_inline]] void operator()(T& h, Sample& in) const noexcept
    {
        const Sample out = (in - h[0]) + c0 * h[1];
        h[0] = in;
        h[1] = out;
        in = out;
    }
};

ZR_VECTOR_CLONES void dcLanes(const ZRFilterLanes& lanes, const Pole& pole) noexcept
{
    ZRFilterLoop::runLanes<historySamples>(lanes, pole);
}

}

ZRDCFilter::ZRDCFilter()
    : ZRFilter(historySamples)
{
}

const ZRFilterClass& ZRDCFilter::filterClass() const noexcept { return *filterClassForType(DC); }

void ZRDCFilter::setSampleRate(double sampleRate) noexcept
{
    ZRFilter::setSampleRate(sampleRate);
    reset();
    _c0 = float(-126.0 / sampleRate + 1.0);
}

void ZRDCFilter::filter(ZRNativeAudioBuffer& buffer) noexcept
{
    const uint32_t frames = buffer.frames();
    if (frames == 0)
        return;
    const uint32_t channels = _followChannels(buffer.channels());
    if (active()) {
        _filterChannels(buffer, channels);
        return;
    }
    for (uint32_t channel = 0; channel < channels; ++channel) {
        if (const float* samples = _samples(buffer, channel))
            _history(channel)[0] = _history(channel)[1] = samples[frames - 1];
    }
}

void ZRDCFilter::_filterLanes(const ZRFilterLanes& lanes) noexcept
{
    ZRFilterLoop::run<historySamples>(lanes, Pole { _c0 }, dcLanes);
}
