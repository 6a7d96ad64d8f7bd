#include <zrbase/audio/ZRWaveBuffer.h>

#include <algorithm>
#include <cstring>
#include <vector>

ZRWaveBuffer::ZRWaveBuffer(uint32_t channels, uint32_t frames, ZRErrorPtr* error)
{
    // 2 × channels in 64 bits: a count that does not fit leaves the overview without a buffer.
    const uint64_t count = 2 * uint64_t(channels);
    if (count <= UINT32_MAX)
        _values = ZRNativeAudioBuffer::bufferWithChannels(uint32_t(count), frames, error);
}

ZRWaveBuffer::~ZRWaveBuffer() = default;

std::unique_ptr<ZRWaveBuffer> ZRWaveBuffer::bufferWithChannels(uint32_t channels, uint32_t frames, ZRErrorPtr* error)
{
    return std::make_unique<ZRWaveBuffer>(channels, frames, error);
}

uint32_t ZRWaveBuffer::channels() const noexcept { return _values ? _values->channels() / 2 : 0; }

void ZRWaveBuffer::setChannels(uint32_t channels)
{
    if (_values && channels <= UINT32_MAX / 2)
        _values->setCount(2 * channels);
}

uint32_t ZRWaveBuffer::frames() const noexcept { return _values ? _values->frames() : 0; }

void ZRWaveBuffer::setFrames(uint32_t frames)
{
    if (_values)
        _values->setFrames(frames);
}

std::optional<uint32_t> ZRWaveBuffer::_bufferChannel(uint32_t channel, bool lower) const noexcept
{
    // Computed in 64 bits so that a huge channel number cannot wrap onto a small one.
    const uint64_t index = 2 * uint64_t(channel) + (lower ? 1 : 0);
    if (!_values || index >= _values->channels())
        return std::nullopt;
    return uint32_t(index);
}

void ZRWaveBuffer::setPositiveValue(float value, uint32_t index, uint32_t channel) noexcept
{
    if (const auto upper = _bufferChannel(channel, false))
        _values->setSampleValue(value, index, *upper);
}

void ZRWaveBuffer::setNegativeValue(float value, uint32_t index, uint32_t channel) noexcept
{
    if (const auto lower = _bufferChannel(channel, true))
        _values->setSampleValue(value, index, *lower);
}

void ZRWaveBuffer::setValue(float value, uint32_t index, uint32_t channel) noexcept
{
    setPositiveValue(value, index, channel);
    setNegativeValue(-value, index, channel);
}

float ZRWaveBuffer::positiveValueAtIndex(uint32_t index, uint32_t channel) const noexcept
{
    const auto upper = _bufferChannel(channel, false);
    return upper ? _values->sampleValueAtIndex(index, *upper) : 0.0f;
}

float ZRWaveBuffer::negativeValueAtIndex(uint32_t index, uint32_t channel) const noexcept
{
    const auto lower = _bufferChannel(channel, true);
    return lower ? _values->sampleValueAtIndex(index, *lower) : 0.0f;
}

void ZRWaveBuffer::setPositiveValues(const float* values, uint32_t count, uint32_t channel) noexcept
{
    if (const auto upper = _bufferChannel(channel, false))
        _values->setSampleValues(values, count, *upper);
}

void ZRWaveBuffer::setNegativeValues(const float* values, uint32_t count, uint32_t channel) noexcept
{
    if (const auto lower = _bufferChannel(channel, true))
        _values->setSampleValues(values, count, *lower);
}

void ZRWaveBuffer::setValues(const float* values, uint32_t count, uint32_t channel) noexcept
{
    setPositiveValues(values, count, channel);
    if (const auto lower = _bufferChannel(channel, true)) {
        _values->setSampleValues(values, count, *lower);
        _values->invertChannel(*lower);
    }
}

ZRIndexRange ZRWaveBuffer::range() const noexcept { return _values ? _values->range() : ZRIndexRange {}; }

void ZRWaveBuffer::setRange(ZRIndexRange range) noexcept
{
    if (_values)
        _values->setRange(range);
}

void ZRWaveBuffer::resetRange() noexcept
{
    if (_values)
        _values->resetRange();
}

void ZRWaveBuffer::incrementRangeLocation(uint32_t by) noexcept
{
    if (_values)
        _values->incrementRangeLocation(by);
}

void ZRWaveBuffer::incrementRangeLength(uint32_t by) noexcept
{
    if (_values)
        _values->incrementRangeLength(by);
}

void ZRWaveBuffer::scale(float gain) noexcept
{
    if (_values)
        _values->scale(gain);
}

void ZRWaveBuffer::mix(const ZRWaveBuffer& other) noexcept
{
    if (_values && other._values)
        _values->mixAudioBuffer(*other._values, nullptr);
}

void ZRWaveBuffer::clear() noexcept
{
    if (!_values)
        return;
    for (uint32_t channel = 0; channel < _values->channels(); ++channel) {
        if (void* bytes = _values->bufferAtIndex(channel)) {
            // The entries lie beyond the one AudioBufferList declares, so they are reached through a pointer.
            const AudioBuffer& entry = *(_values->list()->mBuffers + channel);
            std::memset(bytes, 0xFF, entry.mDataByteSize);
        }
    }
}

void ZRWaveBuffer::average()
{
    const uint32_t count = channels();
    if (count < 2)
        return;
    const auto divisor = float(count);
    const uint32_t points = frames();
    std::vector<float> sum(points);
    for (uint32_t half = 0; half < 2; ++half) {
        std::fill(sum.begin(), sum.end(), 0.0f);
        for (uint32_t channel = 0; channel < count; ++channel) {
            for (uint32_t point = 0; point < points; ++point)
                sum[point] += _values->sampleValueAtIndex(point, 2 * channel + half);
        }
        for (float& value : sum)
            value /= divisor;
        _values->setSampleValues(sum.data(), points, half);
    }
    setChannels(1);
}
