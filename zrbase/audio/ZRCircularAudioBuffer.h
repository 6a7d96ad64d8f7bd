#pragma once

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <cstdint>
#include <memory>

// The outcome of a store or a retrieval, numbered as the codes of the errors that describe it.
enum class ZRCircularAudioBufferStatus : int32_t {
    success = 0,
    otherChannelCount = 1, // store failed: the block has another channel count
    blockTooLong = 2, // store failed: the block holds more frames than the ring
    gap = 3, // stored, with a gap before the block
    overlap = 4, // stored, overlapping frames stored before
    overwritten = 5, // retrieval failed: every frame asked for was overwritten already
    startOverwritten = 6, // retrieved what is held: the start was overwritten already
    nothingStored = 7, // retrieval failed: nothing is stored at or after the time asked for
    endNotStored = 8, // retrieved what is held: the end is not stored yet
    copyFailed = -1, // the frame copy refused the channels or frames (a destination too small)
};

// True for the outcomes that stored or delivered frames, warnings included.
constexpr bool ZRCircularAudioBufferSucceeded(ZRCircularAudioBufferStatus status) noexcept
{
    using enum ZRCircularAudioBufferStatus;
    return status == success || status == gap || status == overlap || status == startOverwritten
        || status == endNotStored;
}

// A ring of float frames addressed by absolute 64-bit sample time: a producer stores blocks stamped with the
// sample time of their first frame, a consumer retrieves any span of the most recent frames() frames by sample
// time. The capacity and channels are those of the native buffer underneath (setChannels, setFrames).
//
// Continuity problems come as ZRCircularAudioBufferError objects, some as failures (the result is false) and some
// as warnings (the error slot is filled and the result is still true), so callers test the result, not the slot.
// Gaps, overlaps and under-runs are routine on an audio thread, and building an error object is not something an
// audio thread may do: there, call store and retrieve, which answer the outcome as a status and build nothing.
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
    // An audio thread passes no error slot, or better calls store().
    bool storeBuffer(const ZRNativeAudioBuffer& block, uint64_t sampleTime, ZRErrorPtr* error = nullptr) noexcept;
    // storeBuffer answering its outcome as a status. Real-time safe: takes no lock and allocates nothing.
    ZRCircularAudioBufferStatus store(const ZRNativeAudioBuffer& block, uint64_t sampleTime) noexcept;

    // Fills the destination's frames with the frames stamped sampleTime onwards; the k-th smallest index of
    // `channels` goes to destination channel k. Fails with 5 (all overwritten already) or 7 (nothing stored yet);
    // answers true with a warning 6 (the start overwritten) or 8 (the end not stored yet) and delivers only the
    // frames it holds, leaving the other destination frames as they were. Every such error carries the frames
    // asked for and those available (the first available sample time and the capacity).
    // An audio thread passes no error slot, or better calls retrieve().
    bool retrieveBuffer(ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime,
        ZRErrorPtr* error = nullptr) noexcept;
    // The same with ring channels 0 … destination.channels() - 1.
    bool retrieveBuffer(ZRNativeAudioBuffer& destination, uint64_t sampleTime, ZRErrorPtr* error = nullptr) noexcept;
    // retrieveBuffer answering its outcome as a status. Real-time safe: takes no lock and allocates nothing.
    ZRCircularAudioBufferStatus retrieve(
        ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime) noexcept;
    ZRCircularAudioBufferStatus retrieve(ZRNativeAudioBuffer& destination, uint64_t sampleTime) noexcept;

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
    // The outcome, with the error of a refused frame copy in the slot when one is given.
    ZRCircularAudioBufferStatus _store(
        const ZRNativeAudioBuffer& block, uint64_t sampleTime, ZRErrorPtr* copyError) noexcept;
    template <typename ChannelAt>
    ZRCircularAudioBufferStatus _retrieve(ZRNativeAudioBuffer& destination, uint32_t channelCount, ChannelAt channelAt,
        uint64_t sampleTime, ZRErrorPtr* copyError) noexcept;
    // What retrieveBuffer answers for an outcome, with its error built when asked for.
    bool _retrieveResult(
        ZRCircularAudioBufferStatus status, uint32_t requested, uint64_t sampleTime, ZRErrorPtr* error) const noexcept;
    // The sample time of the oldest frame still held.
    uint64_t _firstAvailableTime() const noexcept;

    uint32_t _cursorPosition = 0;
    uint64_t _cursorSampleTime = 0;
    uint64_t _firstStoreTime = 0;
    uint64_t _lastRetrievedSampleTime = 0;
};
