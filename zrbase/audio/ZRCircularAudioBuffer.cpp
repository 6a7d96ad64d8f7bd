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
    constexpr const char* action = "Storing into the circular buffer";
    const uint32_t capacity = frames();
    const uint32_t count = block.frames();
    if (block.channels() != channels()) {
        if (error)
            *error = makeError(1, action);
        return false;
    }
    if (count > capacity) {
        if (error)
            *error = makeError(2, action);
        return false;
    }
    if (_cursorSampleTime != 0 && _cursorSampleTime != sampleTime && error)
        *error = makeError(_cursorSampleTime < sampleTime ? 3 : 4, "The continuity of the circular buffer");

    uint32_t written = 0;
    do {
        const uint32_t piece = pieceLength(count - written, capacity, _cursorPosition);
        if (!copyFrames({ written, piece }, block, _cursorPosition, error))
            return false;
        _cursorPosition = advance(_cursorPosition, piece, capacity);
        written += piece;
    } while (written < count);

    _cursorSampleTime = sampleTime + count;
    if (_firstStoreTime == 0)
        _firstStoreTime = sampleTime;
    return true;
}

bool ZRCircularAudioBuffer::retrieveBuffer(
    ZRNativeAudioBuffer& destination, const ZRIndexSet& channels, uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    const std::vector<uint32_t>& indexes = channels.indexes();
    return _retrieve(
        destination, channels.count(), [&indexes](uint32_t k) noexcept { return indexes[k]; }, sampleTime, error);
}

bool ZRCircularAudioBuffer::retrieveBuffer(
    ZRNativeAudioBuffer& destination, uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    return _retrieve(
        destination, destination.channels(), [](uint32_t k) noexcept { return k; }, sampleTime, error);
}

template <typename ChannelAt>
bool ZRCircularAudioBuffer::_retrieve(ZRNativeAudioBuffer& destination, uint32_t channelCount, ChannelAt channelAt,
    uint64_t sampleTime, ZRErrorPtr* error) noexcept
{
    constexpr const char* action = "Retrieving from the circular buffer";
    const uint32_t capacity = frames();
    const uint32_t requested = destination.frames();
    const uint64_t end = _cursorSampleTime;
    const uint64_t first = end - _firstStoreTime > capacity ? end - capacity : _firstStoreTime;
    uint64_t requestEnd = sampleTime + requested;

    const auto report = [&](int32_t code) {
        if (!error)
            return;
        std::shared_ptr<ZRCircularAudioBufferError> made = makeError(code, action);
        made->setRequestedLocation(sampleTime);
        made->setRequestedLength(requested);
        made->setAvailableLocation(first);
        made->setAvailableLength(capacity);
        *error = std::move(made);
    };

    uint64_t start = sampleTime;
    uint32_t destinationFrame = 0;
    uint32_t remaining = requested;
    if (first > requestEnd) {
        report(5);
        return false;
    } else if (first > sampleTime) {
        report(6);
        start = first;
        destinationFrame = uint32_t(first - sampleTime);
        remaining = requested - destinationFrame;
    } else if (end < sampleTime) {
        report(7);
        return false;
    } else if (end < requestEnd) {
        report(8);
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
            if (!destination.copyFrames({ ringFrame, piece }, channelAt(k), *this, destinationFrame, k, error))
                return false;
        }
        ringFrame = advance(ringFrame, piece, capacity);
        destinationFrame += piece;
        remaining -= piece;
    } while (remaining > 0);

    _lastRetrievedSampleTime = requestEnd;
    return true;
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
