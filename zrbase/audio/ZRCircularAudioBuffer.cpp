#include <zrbase/audio/ZRCircularAudioBuffer.h>

#include <zrbase/core/ZRCircularAudioBufferError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <algorithm>

namespace {

std::shared_ptr<ZRCircularAudioBufferError> makeError(int32_t code, const char* action)
{
    return ZRCircularAudioBufferError::errorWithCode(code, ZRLocalizedString(action));
}

// The frames of a piece starting at ring frame `position`: up to the end of the ring. A piece that could take
// nothing (a ring of no frames, or a cursor left beyond a ring that was made smaller) takes everything, so that
// the frame copy refuses it instead of the loop never ending.
uint32_t pieceLength(uint32_t remaining, uint32_t capacity, uint32_t position) noexcept
{
    const uint32_t toEnd = capacity - position;
    return toEnd == 0 ? remaining : std::min(remaining, toEnd);
}

uint32_t advance(uint32_t position, uint32_t by, uint32_t capacity) noexcept
{
    position += by;
    return position == capacity ? 0 : position;
}

}

ZRCircularAudioBuffer::ZRCircularAudioBuffer() noexcept = default;

ZRCircularAudioBuffer::~ZRCircularAudioBuffer() = default;

std::unique_ptr<ZRCircularAudioBuffer> ZRCircularAudioBuffer::bufferWithChannels(
    uint32_t channels, uint32_t frames, ZRErrorPtr* error)
{
    auto ring = std::make_unique<ZRCircularAudioBuffer>();
    if (!ring->createWithNumberOfBuffers(channels, frames * uint32_t(sizeof(float)), error))
        return nullptr;
    return ring;
}

std::unique_ptr<ZRAudioBuffer> ZRCircularAudioBuffer::_emptyInstance() const
{
    return std::make_unique<ZRCircularAudioBuffer>();
}

bool ZRCircularAudioBuffer::storeBuffer(
    const ZRNativeAudioBuffer& block, uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    using enum ZRCircularAudioBufferStatus;
    const ZRCircularAudioBufferStatus status = _store(block, sampleTime, error);
    if (error && status != success && status != copyFailed) {
        const bool continuity = status == gap || status == overlap;
        *error = makeError(
            int32_t(status), continuity ? "The continuity of the circular buffer" : "Storing into the circular buffer");
    }
    return ZRCircularAudioBufferSucceeded(status);
}

ZRCircularAudioBufferStatus ZRCircularAudioBuffer::store(const ZRNativeAudioBuffer& block, uint64_t sampleTime) noexcept
{
    return _store(block, sampleTime, nullptr);
}

ZRCircularAudioBufferStatus ZRCircularAudioBuffer::_store(
    const ZRNativeAudioBuffer& block, uint64_t sampleTime, ZRErrorPtr* copyError) noexcept
{
    using enum ZRCircularAudioBufferStatus;
    const uint32_t capacity = frames();
    const uint32_t count = block.frames();
    if (block.channels() != channels())
        return otherChannelCount;
    if (count > capacity)
        return blockTooLong;
    ZRCircularAudioBufferStatus status = success;
    if (_cursorSampleTime != 0 && _cursorSampleTime != sampleTime)
        status = _cursorSampleTime < sampleTime ? gap : overlap;

    uint32_t written = 0;
    do {
        const uint32_t piece = pieceLength(count - written, capacity, _cursorPosition);
        if (!copyFrames({ written, piece }, block, _cursorPosition, copyError))
            return copyFailed;
        _cursorPosition = advance(_cursorPosition, piece, capacity);
        written += piece;
    } while (written < count);

    _cursorSampleTime = sampleTime + count;
    if (_firstStoreTime == 0)
        _firstStoreTime = sampleTime;
    return status;
}

bool ZRCircularAudioBuffer::retrieveBuffer(
    ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    const std::vector<uint32_t>& indexes = channels.indexes();
    const ZRCircularAudioBufferStatus status = _retrieve(
        destination, channels.count(), [&indexes](uint32_t k) noexcept { return indexes[k]; }, sampleTime, error);
    return _retrieveResult(status, destination.frames(), sampleTime, error);
}

bool ZRCircularAudioBuffer::retrieveBuffer(
    ZRNativeAudioBuffer& destination, uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    const ZRCircularAudioBufferStatus status = _retrieve(
        destination, destination.channels(), [](uint32_t k) noexcept { return k; }, sampleTime, error);
    return _retrieveResult(status, destination.frames(), sampleTime, error);
}

ZRCircularAudioBufferStatus ZRCircularAudioBuffer::retrieve(
    ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime) noexcept
{
    const std::vector<uint32_t>& indexes = channels.indexes();
    return _retrieve(
        destination, channels.count(), [&indexes](uint32_t k) noexcept { return indexes[k]; }, sampleTime, nullptr);
}

ZRCircularAudioBufferStatus ZRCircularAudioBuffer::retrieve(
    ZRNativeAudioBuffer& destination, uint64_t sampleTime) noexcept
{
    return _retrieve(
        destination, destination.channels(), [](uint32_t k) noexcept { return k; }, sampleTime, nullptr);
}

bool ZRCircularAudioBuffer::_retrieveResult(
    ZRCircularAudioBufferStatus status, uint32_t requested, uint64_t sampleTime, ZRErrorPtr* error) const noexcept
{
    using enum ZRCircularAudioBufferStatus;
    if (error && status != success && status != copyFailed) {
        std::shared_ptr<ZRCircularAudioBufferError> made
            = makeError(int32_t(status), "Retrieving from the circular buffer");
        made->setRequestedLocation(sampleTime);
        made->setRequestedLength(requested);
        made->setAvailableLocation(_firstAvailableTime());
        made->setAvailableLength(frames());
        *error = std::move(made);
    }
    return ZRCircularAudioBufferSucceeded(status);
}

uint64_t ZRCircularAudioBuffer::_firstAvailableTime() const noexcept
{
    const uint64_t end = _cursorSampleTime;
    return end - _firstStoreTime > frames() ? end - frames() : _firstStoreTime;
}

template <typename ChannelAt>
ZRCircularAudioBufferStatus ZRCircularAudioBuffer::_retrieve(ZRNativeAudioBuffer& destination, uint32_t channelCount,
    ChannelAt channelAt, uint64_t sampleTime, ZRErrorPtr* copyError) noexcept
{
    using enum ZRCircularAudioBufferStatus;
    const uint32_t capacity = frames();
    const uint32_t requested = destination.frames();
    const uint64_t end = _cursorSampleTime;
    const uint64_t first = _firstAvailableTime();
    uint64_t requestEnd = sampleTime + requested;

    ZRCircularAudioBufferStatus status = success;
    uint64_t start = sampleTime;
    uint32_t destinationFrame = 0;
    uint32_t remaining = requested;
    if (first > requestEnd) {
        return overwritten;
    } else if (first > sampleTime) {
        status = startOverwritten;
        start = first;
        destinationFrame = uint32_t(first - sampleTime);
        remaining = requested - destinationFrame;
    } else if (end < sampleTime) {
        return nothingStored;
    } else if (end < requestEnd) {
        status = endNotStored;
        remaining = uint32_t(end - sampleTime);
        requestEnd = end;
    }

    // The ring frame of `start`, counted back from the cursor, where the frame stamped `end` would go.
    int32_t position = int32_t(_cursorPosition - uint32_t(end - start));
    if (position < 0)
        position += int32_t(capacity);
    uint32_t ringFrame = uint32_t(position);
    do {
        const uint32_t piece = pieceLength(remaining, capacity, ringFrame);
        for (uint32_t k = 0; k < channelCount; ++k) {
            if (!destination.copyFrames({ ringFrame, piece }, channelAt(k), *this, destinationFrame, k, copyError))
                return copyFailed;
        }
        ringFrame = advance(ringFrame, piece, capacity);
        destinationFrame += piece;
        remaining -= piece;
    } while (remaining > 0);

    _lastRetrievedSampleTime = requestEnd;
    return status;
}

void ZRCircularAudioBuffer::reset() noexcept
{
    _cursorPosition = 0;
    _cursorSampleTime = 0;
    _firstStoreTime = 0;
    clear();
}

int32_t ZRCircularAudioBuffer::distance() const noexcept
{
    return int32_t(uint32_t(_cursorSampleTime) - uint32_t(_lastRetrievedSampleTime));
}
