#include <zrbase/dsp/ZRFilter.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRBWeightedFilter.h>
#include <zrbase/dsp/ZRBandpassFilter.h>
#include <zrbase/dsp/ZRCWeightedFilter.h>
#include <zrbase/dsp/ZRDCFilter.h>
#include <zrbase/dsp/ZRFilterLanesPrivate.h>
#include <zrbase/dsp/ZRHighpassFilter.h>
#include <zrbase/dsp/ZRLowpassFilter.h>

#include <algorithm>
#include <new>

namespace {

// Eight channels cover the usual layouts up to 7.1, so their history never has to grow on an audio thread.
constexpr uint32_t initialCapacity = 8;

template <typename T> std::unique_ptr<ZRFilter> make() { return std::make_unique<T>(); }

// Indexed by type code.
const ZRFilterClass filterClasses[] = {
    { "ZRLowpassFilter", ZRFilter::Lowpass, make<ZRLowpassFilter> },
    { "ZRHighpassFilter", ZRFilter::Highpass, make<ZRHighpassFilter> },
    { "ZRBandpassFilter", ZRFilter::Bandpass, make<ZRBandpassFilter> },
    { "ZRAWeightedFilter", ZRFilter::AWeighted, make<ZRAWeightedFilter> },
    { "ZRCWeightedFilter", ZRFilter::CWeighted, make<ZRCWeightedFilter> },
    { "ZRBWeightedFilter", ZRFilter::BWeighted, make<ZRBWeightedFilter> },
    { "ZRDCFilter", ZRFilter::DC, make<ZRDCFilter> },
};

const ZRFilterClass baseClass { "ZRFilter", ZRFilter::NoFilter, make<ZRFilter> };

const ZRPropertyList* numericValue(const ZRDictionary& state, std::string_view key) noexcept
{
    const ZRPropertyList* value = ZRDictionaryObject(state, key);
    return value && (value->isNumber() || value->string()) ? value : nullptr;
}

}

ZRFilter::ZRFilter()
    : ZRFilter(0)
{
}

ZRFilter::ZRFilter(uint32_t historySamples)
    : _historySamples(historySamples)
    , _historyCapacity(initialCapacity)
    , _historyBlock(new float[size_t(initialCapacity) * historySamples]())
{
}

ZRFilter::~ZRFilter() = default;

const ZRFilterClass* ZRFilter::filterClassForType(uint32_t type) noexcept
{
    return type < std::size(filterClasses) ? &filterClasses[type] : nullptr;
}

const ZRFilterClass& ZRFilter::filterClass() const noexcept { return baseClass; }

void ZRFilter::filter(ZRNativeAudioBuffer&) noexcept { }

ZRDictionary ZRFilter::state() const
{
    return { { "class", ZRPropertyList(filterClass().name) }, { "active", ZRPropertyList(_active) } };
}

void ZRFilter::setState(const ZRDictionary& state) { _read(state, "active", _active); }

void ZRFilter::reserveChannels(uint32_t channels) noexcept { _grow(channels); }

bool ZRFilter::_grow(uint32_t channels) noexcept
{
    if (channels <= _historyCapacity)
        return true;
    float* block = new (std::nothrow) float[size_t(channels) * _historySamples];
    if (!block)
        return false;
    std::copy_n(_historyBlock.get(), size_t(_historyChannels) * _historySamples, block);
    _historyBlock.reset(block);
    _historyCapacity = channels;
    return true;
}

uint32_t ZRFilter::_followChannels(uint32_t channels) noexcept
{
    const uint32_t followed = _grow(channels) ? channels : _historyCapacity;
    if (followed > _historyChannels)
        std::fill(_history(_historyChannels), _history(followed), 0.0f);
    _historyChannels = followed;
    return followed;
}

float ZRFilter::_historyValue(uint32_t channel, uint32_t index) const noexcept
{
    if (channel >= _historyChannels || index >= _historySamples)
        return 0.0f;
    return _historyBlock[size_t(channel) * _historySamples + index];
}

void ZRFilter::_clearHistory() noexcept { std::fill(_history(0), _history(_historyChannels), 0.0f); }

float* ZRFilter::_samples(const ZRNativeAudioBuffer& buffer, uint32_t channel) noexcept
{
    float* samples = buffer.channel(channel);
    if (!samples || (buffer.list()->mBuffers + channel)->mDataByteSize / sizeof(float) < buffer.frames())
        return nullptr;
    return samples;
}

void ZRFilter::_filterChannels(ZRNativeAudioBuffer& buffer, uint32_t channels) noexcept
{
    ZRFilterLanes lanes {};
    lanes.frames = buffer.frames();
    for (uint32_t channel = 0; channel < channels; ++channel) {
        float* samples = _samples(buffer, channel);
        if (!samples)
            continue;
        lanes.samples[lanes.used] = samples;
        lanes.history[lanes.used] = _history(channel);
        if (++lanes.used == ZRFilterLaneCount) {
            _filterLanes(lanes);
            lanes.used = 0;
        }
    }
    if (lanes.used > 0)
        _filterLanes(lanes);
}

void ZRFilter::_filterLanes(const ZRFilterLanes&) noexcept { }

void ZRFilter::_read(const ZRDictionary& state, std::string_view key, float& value) noexcept
{
    if (const ZRPropertyList* number = numericValue(state, key))
        value = number->floatValue();
}

void ZRFilter::_read(const ZRDictionary& state, std::string_view key, bool& value) noexcept
{
    if (const ZRPropertyList* number = numericValue(state, key))
        value = number->boolValue();
}
