#include <zrbase/dsp/ZRBiquadFilter.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRFilterLanesPrivate.h>

#include <cmath>

namespace {

// History per channel: the inputs one and two samples back, then the outputs one and two samples back.
constexpr uint32_t historySamples = 4;

struct Coefficients {
    float c0, c1, c2, c3, c4;

    template <typename T, typename Sample> [[gnu::always_inline]] void operator()(T& h, Sample& in) const noexcept
    {
        const Sample out = in * c0 + h[0] * c1 + h[1] * c2 - h[2] * c3 - h[3] * c4;
        h[1] = h[0];
        h[0] = in;
        h[3] = h[2];
        h[2] = out;
        in = out;
    }
};

ZR_VECTOR_CLONES void biquadLanes(const ZRFilterLanes& lanes, const Coefficients& coefficients) noexcept
{
    ZRFilterLoop::runLanes<historySamples>(lanes, coefficients);
}

const ZRFilterClass biquadClass { "ZRBiquadFilter", ZRFilter::NoFilter,
    []() -> std::unique_ptr<ZRFilter> { return std::make_unique<ZRBiquadFilter>(); } };

}

ZRBiquadFilter::ZRBiquadFilter()
    : ZRFilter(historySamples)
{
}

const ZRFilterClass& ZRBiquadFilter::filterClass() const noexcept { return biquadClass; }

void ZRBiquadFilter::setFrequency(float frequency) noexcept
{
    _frequency = frequency;
    _updateCoefficients();
}

void ZRBiquadFilter::setBandwidth(float bandwidth) noexcept
{
    _bandwidth = bandwidth;
    _updateCoefficients();
}

void ZRBiquadFilter::setSampleRate(double sampleRate) noexcept
{
    if (sampleRate == this->sampleRate())
        return;
    ZRFilter::setSampleRate(sampleRate);
    _updateCoefficients();
}

void ZRBiquadFilter::filter(ZRNativeAudioBuffer& buffer) noexcept
{
    const uint32_t frames = buffer.frames();
    if (frames < 2)
        return;
    const uint32_t channels = _followChannels(buffer.channels());
    if (active()) {
        _filterChannels(buffer, channels);
        return;
    }
    for (uint32_t channel = 0; channel < channels; ++channel) {
        if (const float* samples = _samples(buffer, channel)) {
            float* history = _history(channel);
            history[0] = history[2] = samples[frames - 1];
            history[1] = history[3] = samples[frames - 2];
        }
    }
}

ZRDictionary ZRBiquadFilter::state() const
{
    ZRDictionary state = ZRFilter::state();
    state.emplace("frequency", ZRPropertyList(_frequency));
    state.emplace("bandwidth", ZRPropertyList(_bandwidth));
    return state;
}

void ZRBiquadFilter::setState(const ZRDictionary& state)
{
    ZRFilter::setState(state);
    _read(state, "frequency", _frequency);
    _read(state, "bandwidth", _bandwidth);
    _updateCoefficients();
}

ZRBiquadFilter::Design ZRBiquadFilter::_design() const noexcept
{
    // The bandwidth form of the design: alpha = sin w0 × sinh(ln 2 / 2 × bw × w0 / sin w0).
    const float w0 = float(double(_frequency) * 6.283185307179586 / sampleRate());
    const float cs = cosf(w0);
    const float sn = sinf(w0);
    const float alpha = float(sn * std::sinh(double(_bandwidth) * 0.34657359027997264 * double(w0) / double(sn)));
    return { cs, alpha, alpha + 1.0f };
}

void ZRBiquadFilter::_setCoefficients(float c0, float c1, float c2, float c3, float c4) noexcept
{
    _c[0] = c0;
    _c[1] = c1;
    _c[2] = c2;
    _c[3] = c3;
    _c[4] = c4;
}

void ZRBiquadFilter::_filterLanes(const ZRFilterLanes& lanes) noexcept
{
    ZRFilterLoop::run<historySamples>(lanes, Coefficients { _c[0], _c[1], _c[2], _c[3], _c[4] }, biquadLanes);
}
