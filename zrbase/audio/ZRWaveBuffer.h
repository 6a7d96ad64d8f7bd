#pragma once

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <cstdint>
#include <memory>
#include <optional>

// A waveform overview: for every audio channel and every overview point (a block of samples chosen by the host)
// an upper and a lower value, the envelope a waveform display draws. The host computes the points and stores them
// here; the range of the underlying buffer tracks which points are filled.
//
// The values live in one native buffer of 2 × channels channels: channel 2c holds the upper values of audio
// channel c, channel 2c + 1 its lower values. A value whose four bytes are all 0xFF (a NaN) marks a point not yet
// computed. Indexes and channels out of range read 0 and write nothing.
class ZR_EXPORT ZRWaveBuffer {
public:
    // An overview of `channels` audio channels and `frames` points. When the buffer cannot be made (no channels,
    // no memory) the object still exists without one: it then holds nothing and every read answers 0.
    ZRWaveBuffer(uint32_t channels, uint32_t frames, ZRErrorPtr* error = nullptr);
    ~ZRWaveBuffer();
    ZRWaveBuffer(const ZRWaveBuffer&) = delete;
    ZRWaveBuffer& operator=(const ZRWaveBuffer&) = delete;

    static std::unique_ptr<ZRWaveBuffer> bufferWithChannels(
        uint32_t channels, uint32_t frames, ZRErrorPtr* error = nullptr);

    // The underlying buffer of 2 × channels channels; null when it could not be made.
    ZRNativeAudioBuffer* _buffer() const noexcept { return _values.get(); }

    uint32_t channels() const noexcept;
    // Keeps or drops audio channels at the end (added ones are zero); a failure is shown as an alert.
    void setChannels(uint32_t channels);
    uint32_t frames() const noexcept;
    // Keeps the leading points; a failure is shown as an alert.
    void setFrames(uint32_t frames);

    // One point's upper or lower value, stored as given.
    void setPositiveValue(float value, uint32_t index, uint32_t channel = 0) noexcept;
    void setNegativeValue(float value, uint32_t index, uint32_t channel = 0) noexcept;
    // A symmetric point: upper value v and lower value -v, the sign bit flipped (so -0.0 gives 0.0 below).
    void setValue(float value, uint32_t index, uint32_t channel = 0) noexcept;
    float positiveValueAtIndex(uint32_t index, uint32_t channel = 0) const noexcept;
    float negativeValueAtIndex(uint32_t index, uint32_t channel = 0) const noexcept;

    // Copy min(count, frames()) values from point 0 on, as given.
    void setPositiveValues(const float* values, uint32_t count, uint32_t channel) noexcept;
    void setNegativeValues(const float* values, uint32_t count, uint32_t channel) noexcept;
    // Copies the values into both halves and then negates the whole lower half, so that lower values beyond
    // `count` change sign too.
    void setValues(const float* values, uint32_t count, uint32_t channel) noexcept;

    // The range of the underlying buffer, with which the host tracks the points filled so far.
    ZRIndexRange range() const noexcept;
    void setRange(ZRIndexRange range) noexcept;
    void resetRange() noexcept;
    void incrementRangeLocation(uint32_t by = 1) noexcept;
    void incrementRangeLength(uint32_t by = 1) noexcept;

    // Multiplies every value by the gain.
    void scale(float gain) noexcept;
    // Adds the other overview's values point by point; nothing happens when the channel or point counts differ.
    void mix(const ZRWaveBuffer& other) noexcept;
    // Marks every point as not computed (all bytes 0xFF), not as silence.
    void clear() noexcept;
    // Folds every audio channel into one: the mean of the upper values and the mean of the lower values of each
    // point. Not-computed points make the mean a NaN, so average only filled overviews.
    void average();

private:
    // The underlying channel of an audio channel's upper or lower values, or null when there is none.
    std::optional<uint32_t> _bufferChannel(uint32_t channel, bool lower) const noexcept;

    std::unique_ptr<ZRNativeAudioBuffer> _values;
};
