#include "BlockPrefetcher.h"

#include "AudioSource.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

namespace zr {

std::unique_ptr<BlockPrefetcher> BlockPrefetcher::prefetcherWithSource(AudioSource& source, ZRErrorPtr* error)
{
    std::unique_ptr<BlockPrefetcher> prefetcher(new BlockPrefetcher(source));
    for (auto& block : prefetcher->_blocks) {
        block = ZRNativeAudioBuffer::bufferWithChannels(source.channels(), blockFrames, error);
        if (!block)
            return nullptr;
    }
    prefetcher->_reader = std::thread([reader = prefetcher.get()] { reader->_run(); });
    return prefetcher;
}

BlockPrefetcher::BlockPrefetcher(AudioSource& source)
    : _source(source)
{
}

BlockPrefetcher::~BlockPrefetcher()
{
    {
        std::lock_guard lock(_lock);
        _stopping = true;
    }
    _changed.notify_all();
    if (_reader.joinable())
        _reader.join();
}

void BlockPrefetcher::_run()
{
    for (;;) {
        uint64_t number = 0;
        {
            // A block is free once the caller has given back the one read two blocks before it.
            std::unique_lock lock(_lock);
            _changed.wait(lock, [&] { return _stopping || _read - _released < 2; });
            if (_stopping)
                return;
            number = _read;
        }
        ZRNativeAudioBuffer& block = *_blocks[number % 2];
        block.setFrames(blockFrames);
        ZRErrorPtr error;
        const std::optional<uint32_t> frames = _source.read(block, &error);
        const bool end = !frames || *frames == 0;
        {
            std::lock_guard lock(_lock);
            if (end) {
                _ended = true;
                _error = error;
            } else {
                _read += 1;
            }
        }
        _changed.notify_all();
        if (end)
            return;
    }
}

const ZRNativeAudioBuffer* BlockPrefetcher::next(ZRErrorPtr* error)
{
    std::unique_lock lock(_lock);
    _released = _taken;
    _changed.notify_all();
    _changed.wait(lock, [&] { return _read > _taken || _ended; });
    if (_read == _taken) {
        if (error && _error)
            *error = _error;
        return nullptr;
    }
    return _blocks[_taken++ % 2].get();
}

}
