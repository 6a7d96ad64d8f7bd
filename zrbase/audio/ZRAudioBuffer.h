#pragma once

#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexRange.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

class ZRFile;

// The owner of a Core Audio buffer list: a counted set of equally sized raw byte blocks, one per buffer (one per
// channel for non-interleaved audio). Everything here counts bytes; nothing knows the sample format.
//
// A buffer is not built (no list), owned (created here), wrapping (a list of someone else's) or list-only (the
// list is ours, the data someone else's). The two ownership flags follow these states. Independently of them the
// object never resizes or frees a list or block it did not allocate: where a wrapped list or block would have to
// be resized, it takes a copy of its own instead and leaves the original as it was. Every block it allocated is
// freed by destroy(), including those a render reset or setToAudioBuffer stopped pointing at.
//
// Failures are plain ZRError objects with the audio-buffer codes: 1 memory, 2 destination index, 3 source index,
// 4 destination range, 5 source range, 6 count mismatch, 7 length mismatch, 8 not built.
class ZR_EXPORT ZRAudioBuffer {
public:
    // An empty buffer, not built.
    ZRAudioBuffer() noexcept;
    // Wraps a list owned by someone else, who keeps it alive as long as this object uses it.
    explicit ZRAudioBuffer(AudioBufferList* list) noexcept;
    virtual ~ZRAudioBuffer();
    ZRAudioBuffer(const ZRAudioBuffer&) = delete;
    ZRAudioBuffer& operator=(const ZRAudioBuffer&) = delete;

    // `count` zero-filled buffers of `length` bytes; null when count is 0 (no error) or memory runs out.
    static std::unique_ptr<ZRAudioBuffer> bufferWithNumberOfBuffers(
        uint32_t count, uint32_t length, ZRErrorPtr* error = nullptr);
    // A deep copy of every buffer of the source and of its range.
    static std::unique_ptr<ZRAudioBuffer> bufferWithAudioBuffer(
        const ZRAudioBuffer& source, ZRErrorPtr* error = nullptr);
    // The listed buffers of the source in ascending order: copied, or (without copy) a list of our own whose
    // entries point into the source's data, one channel each. The source's range comes along.
    static std::unique_ptr<ZRAudioBuffer> bufferWithAudioBuffer(
        const ZRAudioBuffer& source, const ZRIndexSet& bufferIndexes, bool copy, ZRErrorPtr* error = nullptr);
    // A deep copy of the same class as this object; a failure is shown as an alert and gives null.
    std::unique_ptr<ZRAudioBuffer> copy() const;

    AudioBufferList* list() const noexcept { return _list; }
    // A list exists and buffer 0 has data.
    bool hasBuffers() const noexcept;
    // mNumberBuffers, and buffer 0's mDataByteSize and mNumberChannels; 0 without a list.
    uint32_t count() const noexcept;
    uint32_t length() const noexcept;
    uint32_t channelsPerBuffer() const noexcept;
    // The data of a buffer; null without a list or for an index not below count().
    void* bufferAtIndex(uint32_t index) const noexcept;
    void* buffer() const noexcept { return bufferAtIndex(0); }
    // Sets mNumberChannels of every buffer.
    void setChannelsPerBuffer(uint32_t channels) noexcept;

    bool freeBufferListWhenDone() const noexcept { return _freeBufferListWhenDone; }
    bool freeDataWhenDone() const noexcept { return _freeDataWhenDone; }

    // A range kept for the buffer's users (the wave buffer walks it); unchecked 32-bit wrap-around arithmetic.
    ZRIndexRange range() const noexcept { return _range; }
    void setRange(ZRIndexRange range) noexcept { _range = range; }
    void resetRange() noexcept { _range = {}; }
    void incrementRangeLocation(uint32_t by = 1) noexcept { _range.location += by; }
    void incrementRangeLength(uint32_t by = 1) noexcept { _range.length += by; }

    // Replaces the list by `count` zero-filled buffers of `length` bytes (no data block when length is 0). A count
    // of 0 fails without an error; a failed allocation with code 1.
    bool createWithNumberOfBuffers(uint32_t count, uint32_t length, ZRErrorPtr* error = nullptr);
    // Resizes every buffer keeping its leading bytes (a grown tail is not zeroed); builds one buffer when there is
    // no list. A failed allocation answers false without an error object.
    bool setLength(uint32_t length, ZRErrorPtr* error);
    void setLength(uint32_t length);
    // Drops buffers from the end or adds zero-filled ones shaped like buffer 0; 0 destroys the list.
    bool setCount(uint32_t count, ZRErrorPtr* error);
    void setCount(uint32_t count);
    // Frees what this object owns; a wrapped list stays in place.
    void destroy() noexcept;

    void clear() noexcept;
    // Zeroes one buffer. An index not below count() changes nothing.
    void clearChannel(uint32_t index) noexcept;
    // Every buffer gets mDataByteSize `length` and no data, so that a host render call supplies its own.
    // Real-time safe.
    void resetForRenderWithLength(uint32_t length) noexcept;
    // setLength, after which the data no longer counts as owned by this object.
    void resetForProcessWithLength(uint32_t length);
    // Makes every buffer point at the other's data of the same index, with the other's length.
    void setToAudioBuffer(const ZRAudioBuffer& other) noexcept;
    // Copies buffer `index` over buffer 0 and keeps only that one; errors are shown as alerts.
    void removeAllBuffersExcept(uint32_t index);
    // Moves the data of the later buffers down by one and drops the last; errors are shown as alerts.
    void removeBufferAtIndex(uint32_t index);

    // Copies range.length bytes from the source's buffer at range.location to this object's buffer at `position`.
    // Checks, first failure wins: no list (8), destination index (2), source index (3), position + length over
    // our length (4), range over the source's length (5). The sums wrap in 32 bits as they always did; a wrapped
    // range that passes copies nothing. Allocates nothing unless an error is built.
    bool copyRange(ZRIndexRange range, uint32_t sourceIndex, const ZRAudioBuffer& source, uint32_t position,
        uint32_t destinationIndex, ZRErrorPtr* error = nullptr);
    // The same range of every buffer i to buffer i; counts must agree (6). Stops at the first failure.
    bool copyRange(ZRIndexRange range, const ZRAudioBuffer& source, uint32_t position, ZRErrorPtr* error = nullptr);
    // A whole buffer; lengths must agree (7).
    bool copyBufferAtIndex(
        uint32_t sourceIndex, const ZRAudioBuffer& source, uint32_t destinationIndex, ZRErrorPtr* error = nullptr);
    // Grows this buffer and copies the source's range to its old end. Different counts fail without an error.
    bool appendRange(ZRIndexRange range, const ZRAudioBuffer& source, ZRErrorPtr* error = nullptr);
    // Exchanges a delay line (this object's buffer) with a block (the other's), m = the shorter length: our
    // buffer gets the block's first m bytes followed by its own first bytes, the block gets its own remaining
    // bytes followed by our last m. Equal lengths swap. False without a list or when either buffer is missing.
    bool delayBufferAtIndex(uint32_t index, const ZRAudioBuffer& other, uint32_t otherIndex) noexcept;

    // Appends buffer i to the existing file at paths[i]. A different number of paths fails without an error.
    bool appendToFiles(const std::vector<std::string>& paths, ZRErrorPtr* error = nullptr);
    // Zeroes the buffers and reads `length` bytes (at most the buffer length) from files[i] into buffer i. Answers
    // the count read per buffer, the length as given when it is negative, and 0 on failure.
    int64_t readFromFiles(std::span<ZRFile* const> files, int64_t length, ZRErrorPtr* error = nullptr);

protected:
    // A new, empty object of this object's own class, for copy().
    virtual std::unique_ptr<ZRAudioBuffer> _emptyInstance() const;
    // The steps of the copying factories, for subclasses that build their own instances.
    bool _initWithAudioBuffer(const ZRAudioBuffer& source, ZRErrorPtr* error);
    bool _initWithAudioBuffer(
        const ZRAudioBuffer& source, const ZRIndexSet& bufferIndexes, bool copy, ZRErrorPtr* error);

private:
    bool _ownsData(uint32_t index) const noexcept;
    void _freeBlock(uint32_t index) noexcept;
    void _adoptBlock(uint32_t index, void* block);
    bool _makeListOwn(uint32_t count) noexcept;

    AudioBufferList* _list = nullptr;
    bool _freeBufferListWhenDone = false;
    bool _freeDataWhenDone = false;
    ZRIndexRange _range;
    // The data blocks this object allocated, by buffer index; an entry may since point elsewhere.
    std::vector<void*> _blocks;
};
