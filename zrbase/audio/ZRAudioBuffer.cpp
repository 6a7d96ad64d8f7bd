#include <zrbase/audio/ZRAudioBuffer.h>

#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRFile.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// The entries lie beyond the one the structure declares, so they are reached through a pointer.
AudioBuffer& entry(AudioBufferList* list, uint32_t index) noexcept { return *(list->mBuffers + index); }

// Whether `length` bytes at `location` lie within `size` bytes, without the 32-bit wrap of the checks.
bool fits(uint32_t location, uint32_t length, uint32_t size) noexcept { return uint64_t(location) + length <= size; }

}

ZRAudioBuffer::ZRAudioBuffer() noexcept = default;

ZRAudioBuffer::ZRAudioBuffer(AudioBufferList* list) noexcept
    : _list(list)
{
}

ZRAudioBuffer::~ZRAudioBuffer() { destroy(); }

std::unique_ptr<ZRAudioBuffer> ZRAudioBuffer::bufferWithNumberOfBuffers(
    uint32_t count, uint32_t length, ZRErrorPtr* error)
{
    auto buffer = std::make_unique<ZRAudioBuffer>();
    if (!buffer->createWithNumberOfBuffers(count, length, error))
        return nullptr;
    return buffer;
}

std::unique_ptr<ZRAudioBuffer> ZRAudioBuffer::bufferWithAudioBuffer(const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    auto buffer = std::make_unique<ZRAudioBuffer>();
    if (!buffer->_initWithAudioBuffer(source, error))
        return nullptr;
    return buffer;
}

std::unique_ptr<ZRAudioBuffer> ZRAudioBuffer::bufferWithAudioBuffer(
    const ZRAudioBuffer& source, const ZRIndexSet& bufferIndexes, bool copy, ZRErrorPtr* error)
{
    auto buffer = std::make_unique<ZRAudioBuffer>();
    if (!buffer->_initWithAudioBuffer(source, bufferIndexes, copy, error))
        return nullptr;
    return buffer;
}

std::unique_ptr<ZRAudioBuffer> ZRAudioBuffer::copy() const
{
    std::unique_ptr<ZRAudioBuffer> buffer = _emptyInstance();
    ZRErrorPtr error;
    if (!buffer->_initWithAudioBuffer(*this, &error)) {
        if (error)
            error->alert();
        return nullptr;
    }
    return buffer;
}

std::unique_ptr<ZRAudioBuffer> ZRAudioBuffer::_emptyInstance() const { return std::make_unique<ZRAudioBuffer>(); }

bool ZRAudioBuffer::_initWithAudioBuffer(const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    if (!createWithNumberOfBuffers(source.count(), source.length(), error))
        return false;
    for (uint32_t index = 0; index < source.count(); ++index) {
        if (!copyBufferAtIndex(index, source, index, error))
            return false;
    }
    _range = source._range;
    return true;
}

bool ZRAudioBuffer::_initWithAudioBuffer(
    const ZRAudioBuffer& source, const ZRIndexSet& bufferIndexes, bool copy, ZRErrorPtr* error)
{
    if (copy) {
        if (!createWithNumberOfBuffers(bufferIndexes.count(), source.length(), error))
            return false;
        uint32_t slot = 0;
        for (uint32_t index : bufferIndexes) {
            if (!copyBufferAtIndex(index, source, slot++, error))
                return false;
        }
    } else {
        destroy();
        auto* list = static_cast<AudioBufferList*>(std::calloc(1, ZRAudioBufferListSize(bufferIndexes.count())));
        if (!list)
            return ZRError::fail(error, 1, "Creating the audio buffer list");
        list->mNumberBuffers = bufferIndexes.count();
        uint32_t slot = 0;
        for (uint32_t index : bufferIndexes)
            entry(list, slot++) = { 1, source.length(), source.bufferAtIndex(index) };
        _list = list;
        _freeBufferListWhenDone = true;
    }
    _range = source._range;
    return true;
}

bool ZRAudioBuffer::hasBuffers() const noexcept { return count() > 0 && entry(_list, 0).mData; }

uint32_t ZRAudioBuffer::count() const noexcept { return _list ? _list->mNumberBuffers : 0; }

uint32_t ZRAudioBuffer::length() const noexcept { return count() > 0 ? entry(_list, 0).mDataByteSize : 0; }

uint32_t ZRAudioBuffer::channelsPerBuffer() const noexcept { return count() > 0 ? entry(_list, 0).mNumberChannels : 0; }

void* ZRAudioBuffer::bufferAtIndex(uint32_t index) const noexcept
{
    return index < count() ? entry(_list, index).mData : nullptr;
}

void ZRAudioBuffer::setChannelsPerBuffer(uint32_t channels) noexcept
{
    for (uint32_t index = 0; index < count(); ++index)
        entry(_list, index).mNumberChannels = channels;
}

bool ZRAudioBuffer::createWithNumberOfBuffers(uint32_t count, uint32_t length, ZRErrorPtr* error)
{
    if (_list)
        destroy();
    if (count == 0)
        return false;
    auto* list = static_cast<AudioBufferList*>(std::calloc(1, ZRAudioBufferListSize(count)));
    if (!list)
        return ZRError::fail(error, 1, "Creating the audio buffer list");
    // The list is ours from here on, so that what a failure below leaves behind is still freed by destroy.
    _list = list;
    _freeBufferListWhenDone = true;
    _freeDataWhenDone = false;
    _blocks.assign(count, nullptr);
    list->mNumberBuffers = count;
    for (uint32_t index = 0; index < count; ++index) {
        AudioBuffer& buffer = entry(list, index);
        buffer.mNumberChannels = 1;
        buffer.mDataByteSize = length;
        if (length == 0)
            continue;
        buffer.mData = std::calloc(1, length);
        if (!buffer.mData)
            return ZRError::fail(error, 1, "Creating an audio buffer");
        _blocks[index] = buffer.mData;
    }
    _freeDataWhenDone = length != 0;
    return true;
}

bool ZRAudioBuffer::setLength(uint32_t length, ZRErrorPtr* error)
{
    if (!_list)
        return createWithNumberOfBuffers(1, length, error);
    if (count() > 0 && entry(_list, 0).mDataByteSize == length)
        return true;
    if (!_freeBufferListWhenDone && !_makeListOwn(count()))
        return false;
    for (uint32_t index = 0; index < count(); ++index) {
        AudioBuffer& buffer = entry(_list, index);
        const uint32_t oldLength = buffer.mDataByteSize;
        buffer.mDataByteSize = length;
        if (length == 0) {
            if (_ownsData(index))
                _freeBlock(index);
            buffer.mData = nullptr;
        } else if (buffer.mData && _ownsData(index)) {
            void* block = std::realloc(buffer.mData, length);
            if (!block) {
                _freeBlock(index);
                return false;
            }
            buffer.mData = block;
            _blocks[index] = block;
        } else if (buffer.mData) {
            // Someone else's block is never resized: it is replaced by a copy of our own.
            void* block = std::malloc(length);
            if (!block) {
                buffer.mData = nullptr;
                return false;
            }
            std::memcpy(block, buffer.mData, std::min(oldLength, length));
            buffer.mData = block;
            _adoptBlock(index, block);
        } else {
            buffer.mData = std::calloc(1, length);
            if (!buffer.mData)
                return false;
            _adoptBlock(index, buffer.mData);
            _freeDataWhenDone = true;
        }
    }
    return true;
}

void ZRAudioBuffer::setLength(uint32_t length)
{
    ZRErrorPtr error;
    if (!setLength(length, &error) && error)
        error->alert();
}

bool ZRAudioBuffer::setCount(uint32_t count, ZRErrorPtr* error)
{
    if (!_list)
        return createWithNumberOfBuffers(count, 0, error);
    const uint32_t oldCount = this->count();
    if (count == oldCount)
        return true;
    if (count == 0) {
        destroy();
        return true;
    }
    if (count < oldCount) {
        for (uint32_t index = count; index < oldCount; ++index)
            _freeBlock(index);
        if (_blocks.size() > count)
            _blocks.resize(count);
        if (!_freeBufferListWhenDone) {
            if (!_makeListOwn(count))
                return false;
        } else if (auto* list = static_cast<AudioBufferList*>(std::realloc(_list, ZRAudioBufferListSize(count)))) {
            _list = list;
        }
        _list->mNumberBuffers = count;
        return true;
    }

    if (!_freeBufferListWhenDone) {
        if (!_makeListOwn(count))
            return false;
    } else {
        auto* list = static_cast<AudioBufferList*>(std::realloc(_list, ZRAudioBufferListSize(count)));
        if (!list)
            return false;
        _list = list;
    }
    const uint32_t channels = oldCount > 0 ? entry(_list, 0).mNumberChannels : 1;
    const uint32_t length = oldCount > 0 ? entry(_list, 0).mDataByteSize : 0;
    for (uint32_t index = oldCount; index < count; ++index) {
        AudioBuffer& buffer = entry(_list, index);
        buffer = { channels, length, nullptr };
        if (length == 0)
            continue;
        buffer.mData = std::calloc(1, length);
        if (!buffer.mData)
            return false;
        _adoptBlock(index, buffer.mData);
    }
    _list->mNumberBuffers = count;
    return true;
}

void ZRAudioBuffer::setCount(uint32_t count)
{
    ZRErrorPtr error;
    if (!setCount(count, &error) && error)
        error->alert();
}

void ZRAudioBuffer::destroy() noexcept
{
    for (uint32_t index = 0; index < _blocks.size(); ++index)
        _freeBlock(index);
    _blocks.clear();
    if (_list && _freeBufferListWhenDone) {
        std::free(_list);
        _list = nullptr;
    }
}

void ZRAudioBuffer::clear() noexcept
{
    for (uint32_t index = 0; index < count(); ++index)
        clearChannel(index);
}

void ZRAudioBuffer::clearChannel(uint32_t index) noexcept
{
    if (void* data = bufferAtIndex(index))
        std::memset(data, 0, entry(_list, index).mDataByteSize);
}

void ZRAudioBuffer::resetForRenderWithLength(uint32_t length) noexcept
{
    for (uint32_t index = 0; index < count(); ++index) {
        entry(_list, index).mDataByteSize = length;
        entry(_list, index).mData = nullptr;
    }
    _freeDataWhenDone = false;
}

void ZRAudioBuffer::resetForProcessWithLength(uint32_t length)
{
    setLength(length);
    _freeDataWhenDone = false;
}

void ZRAudioBuffer::setToAudioBuffer(const ZRAudioBuffer& other) noexcept
{
    for (uint32_t index = 0; index < count(); ++index) {
        entry(_list, index).mDataByteSize = other.length();
        entry(_list, index).mData = other.bufferAtIndex(index);
    }
}

void ZRAudioBuffer::removeAllBuffersExcept(uint32_t index)
{
    ZRErrorPtr error;
    if (!copyBufferAtIndex(index, *this, 0, &error) && error)
        error->alert();
    setCount(1);
}

void ZRAudioBuffer::removeBufferAtIndex(uint32_t index)
{
    const uint32_t count = this->count();
    if (count == 0)
        return;
    for (uint64_t later = uint64_t(index) + 1; later < count; ++later) {
        ZRErrorPtr error;
        if (!copyBufferAtIndex(uint32_t(later), *this, uint32_t(later - 1), &error) && error)
            error->alert();
    }
    setCount(count - 1);
}

bool ZRAudioBuffer::copyRange(ZRIndexRange range, uint32_t sourceIndex, const ZRAudioBuffer& source, uint32_t position,
    uint32_t destinationIndex, ZRErrorPtr* error)
{
    constexpr const char* action = "Copying between buffers";
    if (!_list)
        return ZRError::fail(error, 8, action);
    if (destinationIndex >= count())
        return ZRError::fail(error, 2, action);
    if (sourceIndex >= source.count())
        return ZRError::fail(error, 3, action);
    if (uint32_t(position + range.length) > length())
        return ZRError::fail(error, 4, action);
    if (uint32_t(range.location + range.length) > source.length())
        return ZRError::fail(error, 5, action);
    if (range.length == 0)
        return true;

    const AudioBuffer& to = entry(_list, destinationIndex);
    const AudioBuffer& from = entry(source._list, sourceIndex);
    if (!fits(position, range.length, std::min(length(), to.mDataByteSize))
        || !fits(range.location, range.length, std::min(source.length(), from.mDataByteSize)))
        return true;
    if (!to.mData || !from.mData)
        return ZRError::fail(error, 8, action);
    std::memmove(static_cast<uint8_t*>(to.mData) + position, static_cast<const uint8_t*>(from.mData) + range.location,
        range.length);
    return true;
}

bool ZRAudioBuffer::copyRange(ZRIndexRange range, const ZRAudioBuffer& source, uint32_t position, ZRErrorPtr* error)
{
    if (count() != source.count())
        return ZRError::fail(error, 6, "Copying a buffer range");
    for (uint32_t index = 0; index < count(); ++index) {
        if (!copyRange(range, index, source, position, index, error))
            return false;
    }
    return true;
}

bool ZRAudioBuffer::copyBufferAtIndex(
    uint32_t sourceIndex, const ZRAudioBuffer& source, uint32_t destinationIndex, ZRErrorPtr* error)
{
    if (source.length() != length())
        return ZRError::fail(error, 7, "Copying a buffer channel");
    return copyRange({ 0, length() }, sourceIndex, source, 0, destinationIndex, error);
}

bool ZRAudioBuffer::appendRange(ZRIndexRange range, const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    const uint32_t position = length();
    if (_list) {
        if (count() != source.count())
            return false;
        if (!setLength(position + range.length, error))
            return false;
    } else if (!createWithNumberOfBuffers(source.count(), range.length, error) && source.count() != 0) {
        return false;
    }
    return copyRange(range, source, position, error);
}

bool ZRAudioBuffer::delayBufferAtIndex(uint32_t index, const ZRAudioBuffer& other, uint32_t otherIndex) noexcept
{
    if (!_list)
        return false;
    auto* a = static_cast<uint8_t*>(bufferAtIndex(index));
    auto* b = static_cast<uint8_t*>(other.bufferAtIndex(otherIndex));
    if (!a || !b)
        return false;
    const uint32_t lengthA = entry(_list, index).mDataByteSize;
    const uint32_t lengthB = entry(other._list, otherIndex).mDataByteSize;
    // The m bytes that trade sides wait on the stack when they fit, as they do for render-sized blocks; longer
    // exchanges are done in place by swapping them and rotating the longer buffer into order.
    constexpr uint32_t stackBytes = 4096;
    if (lengthB <= lengthA) {
        const uint32_t m = lengthB;
        if (m <= stackBytes) {
            uint8_t saved[stackBytes];
            std::memcpy(saved, a + (lengthA - m), m);
            std::memmove(a + m, a, lengthA - m);
            std::memmove(a, b, m);
            std::memcpy(b, saved, m);
        } else {
            std::swap_ranges(b, b + m, a + (lengthA - m));
            std::rotate(a, a + (lengthA - m), a + lengthA);
        }
    } else {
        const uint32_t m = lengthA;
        if (m <= stackBytes) {
            uint8_t saved[stackBytes];
            std::memcpy(saved, a, m);
            std::memmove(a, b, m);
            std::memmove(b, b + m, lengthB - m);
            std::memcpy(b + (lengthB - m), saved, m);
        } else {
            std::swap_ranges(a, a + m, b);
            std::rotate(b, b + m, b + lengthB);
        }
    }
    return true;
}

bool ZRAudioBuffer::appendToFiles(const std::vector<std::string>& paths, ZRErrorPtr* error)
{
    if (paths.size() != count())
        return false;
    for (uint32_t index = 0; index < count(); ++index) {
        std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(paths[index], error);
        if (!file || !file->moveToEnd(error))
            return false;
        const AudioBuffer& buffer = entry(_list, index);
        if (buffer.mData && !file->writeBuffer(buffer.mData, buffer.mDataByteSize, error))
            return false;
    }
    return true;
}

int64_t ZRAudioBuffer::readFromFiles(std::span<ZRFile* const> files, int64_t length, ZRErrorPtr* error)
{
    if (files.size() != count())
        return 0;
    clear();
    if (length >= 0 && length >= this->length())
        length = this->length();
    for (uint32_t index = 0; index < count(); ++index) {
        const AudioBuffer& buffer = entry(_list, index);
        // A negative length stands for the largest 32-bit count; the buffer still takes no more than it holds.
        const uint32_t bytes = buffer.mData ? std::min(uint32_t(length), buffer.mDataByteSize) : 0;
        if (!files[index] || !files[index]->_readToBuffer(buffer.mData, bytes, error))
            return 0;
    }
    return length;
}

bool ZRAudioBuffer::_ownsData(uint32_t index) const noexcept
{
    return index < _blocks.size() && _blocks[index] && index < count() && entry(_list, index).mData == _blocks[index];
}

void ZRAudioBuffer::_freeBlock(uint32_t index) noexcept
{
    if (index >= _blocks.size() || !_blocks[index])
        return;
    if (index < count() && entry(_list, index).mData == _blocks[index])
        entry(_list, index).mData = nullptr;
    std::free(_blocks[index]);
    _blocks[index] = nullptr;
}

void ZRAudioBuffer::_adoptBlock(uint32_t index, void* block)
{
    if (_blocks.size() <= index)
        _blocks.resize(size_t(index) + 1, nullptr);
    // A block of ours that the entry no longer points at (after a render reset or setToAudioBuffer) goes now.
    if (_blocks[index] && _blocks[index] != block)
        std::free(_blocks[index]);
    _blocks[index] = block;
}

bool ZRAudioBuffer::_makeListOwn(uint32_t count) noexcept
{
    auto* list = static_cast<AudioBufferList*>(std::calloc(1, ZRAudioBufferListSize(count)));
    if (!list)
        return false;
    const uint32_t kept = std::min(count, this->count());
    std::copy_n(_list->mBuffers, kept, list->mBuffers);
    list->mNumberBuffers = kept;
    _list = list;
    _freeBufferListWhenDone = true;
    return true;
}
