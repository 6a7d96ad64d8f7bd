#pragma once

#include <zrbase/audio/ZRAudioBuffer.h>

#include <cstdint>
#include <memory>
#include <span>

// The library's working audio format: non-interleaved 32-bit float samples, one buffer per channel, every channel
// the same number of frames. It counts frames and channels on top of the byte-level ZRAudioBuffer and adds the
// sample edits and measurements that filters, converters and overviews build on.
//
// Sample edits and measurements act on every channel or on the channels they are given, never on the enabled
// set, which is bookkeeping for callers. They never touch memory outside the buffer, whatever their arguments:
// a missing list, a channel not below channels(), a channel without data or a frame not below frames() makes a
// read answer 0 and a write do nothing. They are real-time safe: noexcept, no lock, no allocation.
class ZR_EXPORT ZRNativeAudioBuffer : public ZRAudioBuffer {
public:
    // The kinds of combinedChannelsAtIndexes: the sum of the channels, their average (a mono mix-down), even
    // channels minus odd ones, and that difference averaged (the side signal). Larger values add nothing.
    enum CombineMethod : uint32_t {
        CombineSum = 0,
        CombineAverage = 1,
        CombineDifference = 2,
        CombineAveragedDifference = 3,
    };

    // An empty buffer, not built, with no channel enabled.
    ZRNativeAudioBuffer() noexcept;
    // Wraps a list owned by someone else, who keeps it alive as long as this object uses it.
    explicit ZRNativeAudioBuffer(AudioBufferList* list) noexcept;
    ~ZRNativeAudioBuffer() override;

    // `channels` zero-filled channels of `frames` frames; null when channels is 0 (no error) or memory runs out.
    static std::unique_ptr<ZRNativeAudioBuffer> bufferWithChannels(
        uint32_t channels, uint32_t frames, ZRErrorPtr* error = nullptr);
    // The byte-level form: `count` buffers of `length` bytes.
    static std::unique_ptr<ZRNativeAudioBuffer> bufferWithNumberOfBuffers(
        uint32_t count, uint32_t length, ZRErrorPtr* error = nullptr);
    // A deep copy of every channel of the source and of its range; the enabled set starts empty.
    static std::unique_ptr<ZRNativeAudioBuffer> bufferWithAudioBuffer(
        const ZRAudioBuffer& source, ZRErrorPtr* error = nullptr);
    // The listed channels of the source in ascending order, copied or (without copy) pointing into the source's
    // data, which must then outlive the result.
    static std::unique_ptr<ZRNativeAudioBuffer> bufferWithAudioBuffer(
        const ZRAudioBuffer& source, const ZRIndexSet& channels, bool copy, ZRErrorPtr* error = nullptr);
    // A deep copy of the same class as this object; a failure is shown as an alert and gives null.
    std::unique_ptr<ZRNativeAudioBuffer> copy() const;

    // The number of buffers, and the byte length of buffer 0 in floats; 0 without a list.
    uint32_t channels() const noexcept { return count(); }
    uint32_t frames() const noexcept { return length() / sizeof(float); }
    // The samples of a channel; null without a list, for a channel not below channels() or one without data.
    float* channel(uint32_t channel) const noexcept { return static_cast<float*>(bufferAtIndex(channel)); }

    // Frame forms of the byte-level operations: frame counts and positions are multiplied by 4 in 32 bits, and
    // the failures and codes are those of the byte-level operation.
    bool setFrames(uint32_t frames, ZRErrorPtr* error);
    void setFrames(uint32_t frames);
    // Changes the number of channels; after a success the enabled indexes channels … channels + 1023 are
    // dropped, and channel 0 is enabled when nothing else is.
    bool setChannels(uint32_t channels, ZRErrorPtr* error);
    void setChannels(uint32_t channels);
    bool copyFrames(ZRIndexRange frames, uint32_t sourceChannel, const ZRAudioBuffer& source, uint32_t position,
        uint32_t destinationChannel, ZRErrorPtr* error = nullptr);
    bool copyFrames(ZRIndexRange frames, const ZRAudioBuffer& source, uint32_t position, ZRErrorPtr* error = nullptr);
    bool copyChannel(
        uint32_t sourceChannel, const ZRAudioBuffer& source, uint32_t destinationChannel, ZRErrorPtr* error = nullptr);
    bool appendFrames(ZRIndexRange frames, const ZRAudioBuffer& source, ZRErrorPtr* error = nullptr);
    void removeAllChannelsExcept(uint32_t channel) { removeAllBuffersExcept(channel); }
    void removeChannelAtIndex(uint32_t channel) { removeBufferAtIndex(channel); }
    bool delayChannel(uint32_t channel, const ZRAudioBuffer& other, uint32_t otherChannel) noexcept
    {
        return delayBufferAtIndex(channel, other, otherChannel);
    }
    // The frame form of readFromFiles, named apart as its parameters have the byte form's types. Reads `frames`
    // frames per channel (at most frames()); answers the frames read, or the count as given when it is negative,
    // and 0 on failure.
    int64_t readFromFilesFrames(std::span<ZRFile* const> files, int64_t frames, ZRErrorPtr* error = nullptr);
    void resetForProcessWithFrames(uint32_t frames) { resetForProcessWithLength(frames * sizeof(float)); }
    // Real-time safe.
    void resetForRenderWithFrames(uint32_t frames) noexcept { resetForRenderWithLength(frames * sizeof(float)); }

    // Channel numbers callers mark as enabled. setEnabled ignores a channel not below channels().
    void enableAllChannels();
    void disableAllChannels() noexcept { _enabledChannelIndexes.removeAllIndexes(); }
    void setEnabled(bool enabled, uint32_t channel);
    bool isChannelEnabled(uint32_t channel) const noexcept { return _enabledChannelIndexes.containsIndex(channel); }
    const ZRIndexSet& enabledChannels() const noexcept { return _enabledChannelIndexes; }
    void setEnabledChannels(ZRIndexSet channels) { _enabledChannelIndexes = std::move(channels); }

    // Single samples. Real-time safe.
    float sampleValueAtIndex(uint32_t index, uint32_t channel = 0) const noexcept;
    void setSampleValue(float value, uint32_t index, uint32_t channel = 0) noexcept;
    void scaleSampleBy(float factor, uint32_t index, uint32_t channel = 0) noexcept;
    // Copies min(count, frames()) floats into the channel from frame 0. Real-time safe.
    void setSampleValues(const float* values, uint32_t count, uint32_t channel) noexcept;

    // Linear ramps over N = frames(): frame i gets the gain float(i) × float(1/N) (fade in) or
    // 1 + float(i) × float(-1/N) (fade out), so the last frame of a fade in stays just below full level and the
    // last of a fade out keeps 1/N. Real-time safe.
    void fadeIn() noexcept;
    void fadeOut() noexcept;
    // Reverses the frame order of every channel. Real-time safe.
    void reverse() noexcept;
    // Negates the samples of every channel, of one channel, or of the listed ones. Real-time safe.
    void invert() noexcept;
    void invertChannel(uint32_t channel) noexcept;
    void invertChannels(const ZRIndexSet& channels) noexcept;
    // Multiplies by a gain every channel, one channel, the listed channels, or the part of a frame range of one
    // channel that lies inside the buffer. Real-time safe.
    void scale(float gain) noexcept;
    void scale(float gain, uint32_t channel) noexcept;
    void scaleChannels(float gain, const ZRIndexSet& channels) noexcept;
    void scale(float gain, uint32_t channel, ZRIndexRange frames) noexcept;
    // Fills every channel or one channel with a value; clear() and clearChannel(channel) fill with zeros.
    // Real-time safe.
    using ZRAudioBuffer::clearChannel;
    void clearWithValue(float value) noexcept;
    void clearChannel(uint32_t channel, float value) noexcept;

    // Copies every channel of the source whole to frame `position`. Channel counts must agree (7, "Copying a
    // buffer range"); source frames + position × 4 must not exceed frames() (4, "Copying a buffer channel").
    bool copyAudioBuffer(const ZRNativeAudioBuffer& source, uint32_t position, ZRErrorPtr* error = nullptr);
    // Adds source × level into a channel of this buffer. The frame counts must agree (4, "Mixing buffers"); a
    // channel not below the count fails with 2 (ours) or 3 (the source's). Allocates nothing unless an error is built.
    bool mixChannel(uint32_t sourceChannel, const ZRNativeAudioBuffer& source, uint32_t destinationChannel, float level,
        ZRErrorPtr* error = nullptr);
    // Mixes channel i of the source into channel i for every i; channel counts must agree (7, "Mixing buffers").
    bool mixAudioBuffer(const ZRNativeAudioBuffer& source, float level, ZRErrorPtr* error = nullptr);
    bool mixAudioBuffer(const ZRNativeAudioBuffer& source, ZRErrorPtr* error = nullptr)
    {
        return mixAudioBuffer(source, 1.0f, error);
    }
    // A new one-channel buffer of frames() frames combining the listed channels below channels() in ascending
    // order (see CombineMethod). Every channel walked counts for the averages, whatever the method.
    std::unique_ptr<ZRNativeAudioBuffer> combinedChannelsAtIndexes(
        const ZRIndexSet& channels, uint32_t method, ZRErrorPtr* error = nullptr) const;
    std::unique_ptr<ZRNativeAudioBuffer> combinedChannelsWithMethod(uint32_t method, ZRErrorPtr* error = nullptr) const;

    // Measurements of one channel: the largest absolute value, the largest and smallest sample, the root mean
    // square, the RMS raised by 3 dB as AES17 reads it, the mean absolute value, the sum of squares, rms ÷ average
    // and peak ÷ rms (0 when the divisor is 0). Real-time safe.
    //
    // When buffer 0 holds C ≥ 2 interleaved channels, peakOfChannel reads channel c of buffer 0 with stride C;
    // c may equal C, which reads the samples one past each frame's last channel that lie inside the buffer.
    float peakOfChannel(uint32_t channel) const noexcept;
    float maximumOfChannel(uint32_t channel) const noexcept;
    float minimumOfChannel(uint32_t channel) const noexcept;
    float rmsOfChannel(uint32_t channel) const noexcept;
    float aes17OfChannel(uint32_t channel) const noexcept;
    float averageOfChannel(uint32_t channel) const noexcept;
    float energyOfChannel(uint32_t channel) const noexcept;
    float formFactorOfChannel(uint32_t channel) const noexcept;
    float crestFactorOfChannel(uint32_t channel) const noexcept;
    // Two consecutive samples at or above 1.0; only the positive rail is watched. Real-time safe.
    bool clippedChannel(uint32_t channel) const noexcept;

    // Measurements of the whole buffer: means over the channels (energy, average), the root of the mean square of
    // the channels' RMS values (rms), the largest channel value starting from 0 (peak, maximum: an all-negative
    // buffer's maximum is 0), the smallest starting from the largest float (minimum). 0 without channels.
    // Real-time safe.
    float peak() const noexcept;
    float maximum() const noexcept;
    float minimum() const noexcept;
    float rms() const noexcept;
    float aes17() const noexcept;
    float average() const noexcept;
    float energy() const noexcept;
    float formFactor() const noexcept;
    float crestFactor() const noexcept;
    bool clipped() const noexcept;
    // The mean absolute value at one frame over the listed channels (a missing sample counts as 0); 0 for an
    // empty set. Real-time safe.
    float averageOfChannels(const ZRIndexSet& channels, uint32_t index) const noexcept;

    // The first frame whose absolute value is at least `magnitude`, from frame 0 up or from the last frame down;
    // ZRNotFound when the magnitude exceeds the channel's peak. The form without a channel answers the first hit
    // of channels 0, 1, …. Real-time safe.
    uint32_t positionOfSampleGreaterThanOrEqualToMagnitude(
        float magnitude, uint32_t channel, bool backwards) const noexcept;
    uint32_t positionOfSampleGreaterThanOrEqualToMagnitude(float magnitude, bool backwards) const noexcept;

protected:
    std::unique_ptr<ZRAudioBuffer> _emptyInstance() const override;

private:
    // The channel's samples as a span of frames() floats; empty when there are none.
    std::span<float> _samples(uint32_t channel) const noexcept;

    ZRIndexSet _enabledChannelIndexes;
};
