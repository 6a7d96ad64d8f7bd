#pragma once

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <cstdint>
#include <memory>

// A ring of float frames addressed by absolute 64-bit sample time: a producer stores blocks stamped with the
// sample time of their first frame, a consumer retrieves any span of the most recent frames() frames by sample
// time. The capacity and channels are those of the native buffer underneath (setChannels, setFrames).
//
// Continuity problems come as ZRCircularAudioBufferError objects, some as failures (the result is false) and some
// as warnings (the error slot is filled and the result is still true), so callers test the result, not the slot.
// There is no locking: a producer and a consumer on different threads must be serialised by the caller.
class ZR_EXPORT ZRCircularAudioBuffer : public ZRNativeAudioBuffer {
public:
    // An empty ring, not built; give it channels and frames before storing.
    ZRCircularAudioBuffer() noexcept;
    ~ZRCircularAudioBuffer() override;

    // A ring of `channels` zero-filled channels holding `frames` frames; null when channels is 0 (no error) or
    // memory runs out.
    static std::unique_ptr<ZRCircularAudioBuffer> bufferWithChannels(
        uint32_t channels, uint32_t frames, ZRErrorPtr* error = nullptr);

    // Writes the block at the cursor as if it continued the frames stored so far and stamps its end t + frames.
    // Fails with 1 (other channel count) or 2 (more frames than the ring holds); a block that does not start at
    // the stored end is still written and answers true with a warning, 3 (a gap) or 4 (an overlap).
    // Real-time safe: allocates only to build an error.
    bool storeBuffer(const ZRNativeAudioBuffer& block, uint64_t sampleTime, ZRErrorPtr* error = nullptr) noexcept;

    // Fills the destination's frames with the frames stamped sampleTime onwards; the k-th smallest index of
    // `channels` goes to destination channel k. Fails with 5 (all overwritten already) or 7 (nothing stored yet);
    // answers true with a warning 6 (the start overwritten) or 8 (the end not stored yet) and delivers only the
    // frames it holds, leaving the other destination frames as they were. Every such error carries the frames
    // asked for and those available (the first available sample time and the capacity).
    // Real-time safe: allocates only to build an error.
    bool retrieveBuffer(ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime,
        ZRErrorPtr* error = nullptr) noexcept;
    // The same with ring channels 0 … destination.channels() - 1.
    bool retrieveBuffer(ZRNativeAudioBuffer& destination, uint64_t sampleTime, ZRErrorPtr* error = nullptr) noexcept;

    // Empties the ring and zeroes its samples; the last retrieved time is kept.
    void reset() noexcept;
    // True once something was stored since the last reset; a first store stamped 0 does not count.
    bool hasStored() const noexcept { return _firstStoreTime != 0; }
    // The sample time of the first frame stored since the last reset (0 when none).
    uint64_t firstStoreTime() const noexcept { return _firstStoreTime; }
    // One past the last frame stored.
    uint64_t lastStoreTime() const noexcept { return _cursorSampleTime; }
    // One past the last frame retrieved.
    uint64_t lastRetrievedTime() const noexcept { return _lastRetrievedSampleTime; }
    // How far the consumer lags the producer: the low 32 bits of the two times subtracted with wrap-around.
    int32_t distance() const noexcept;
    // The ring frame the next store writes.
    uint32_t cursorPosition() const noexcept { return _cursorPosition; }

protected:
    std::unique_ptr<ZRAudioBuffer> _emptyInstance() const override;

private:
    template <typename ChannelAt>
    bool _retrieve(ZRNativeAudioBuffer& destination, uint32_t channelCount, ChannelAt channelAt, uint64_t sampleTime,
        ZRErrorPtr* error) noexcept;

    uint32_t _cursorPosition = 0;
    uint64_t _cursorSampleTime = 0;
    uint64_t _firstStoreTime = 0;
    uint64_t _lastRetrievedSampleTime = 0;
};
