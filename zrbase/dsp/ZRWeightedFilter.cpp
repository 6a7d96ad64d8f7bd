#include <zrbase/dsp/ZRWeightedFilter.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>

ZRWeightedFilter::ZRWeightedFilter(uint32_t historySamples)
    : ZRFilter(historySamples)
{
}

void ZRWeightedFilter::setSampleRate(double sampleRate) noexcept
{
    ZRFilter::setSampleRate(sampleRate);
    _updateCoefficients();
}

void ZRWeightedFilter::filter(ZRNativeAudioBuffer& buffer) noexcept
{
    if (active())
        _filterChannels(buffer, _followChannels(buffer.channels()));
}

void ZRWeightedFilter::_updateCoefficients() noexcept
{
    reset();
    _computeCoefficients();
}
