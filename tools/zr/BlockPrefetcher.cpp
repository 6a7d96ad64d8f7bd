#include "BlockPrefetcher.h"

#include "AudioSource.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

namespace zr {

std::unique_ptr<BlockPrefetcher> BlockPrefetcher::prefetcherWithSource(
    AudioSource& source, uint32_t threads, ZRErrorPtr* error)
{
    std::unique_ptr<BlockPrefetcher> prefetcher(new BlockPrefetcher);
    prefetcher->_sources.push_back(&source);
    for (uint32_t thread = 1; thread < threads; ++thread) {
        std::unique_ptr<AudioSource> reader = source.parallelReader();
        if (!reader)
            break;
        prefetcher->_sources.push_back(reader.get());
        prefetcher->_ownSources.push_back(std::move(reader));
    }
    const size_t slots = 2 * prefetcher->_sources.size();
    prefetcher->_filled.assign(slots, 0);
    for (size_t slot = 0; slot < slots; ++slot) {
        prefetcher->_blocks.push_back(ZRNativeAudioBuffer::bufferWithChannels(source.channels(), blockFrames, error));
        if (!prefetcher->_blocks.back())
            return nullptr;
    }
    for (uint32_t thread = 0; thread < prefetcher->_sources.size(); ++thread)
        prefetcher->_threads.emplace_back([reader = prefetcher.get(), thread] { reader->_run(thread); });
    return prefetcher;
}

BlockPrefetcher::~BlockPrefetcher()
{
    {
        std::lock_guard lock(_lock);
        _stopping = true;
    }
    _changed.notify_all();
    for (std::thread& thread : _threads)
        thread.join();
}

void BlockPrefetcher::_run(uint32_t thread)
{
    AudioSource& source = *_sources[thread];
    const size_t threads = _sources.size(), slots = _blocks.size();
    for (uint64_t number = thread;; number += threads) {
        {
            // A block is free once the caller has given back the one that used it before.
            std::unique_lock lock(_lock);
            _changed.wait(lock, [&] { return _stopping || number >= _end || number - _released < slots; });
            if (_stopping || number >= _end)
                return;
        }
        ZRNativeAudioBuffer& block = *_blocks[number % slots];
        block.setFrames(blockFrames);
        ZRErrorPtr error;
        std::optional<uint32_t> frames;
        // A reader of every n-th block skips the others.
        if (threads == 1 || source.seek(number * blockFrames, &error))
            frames = source.read(block, &error);
        const bool end = !frames || *frames == 0;
        {
            std::lock_guard lock(_lock);
            if (!end)
                _filled[number % slots] = number + 1;
            else if (number < _end) {
                _end = number;
                _error = error;
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
    const size_t slot = _taken % _blocks.size();
    _changed.wait(lock, [&] { return _taken >= _end || _filled[slot] == _taken + 1; });
    if (_taken >= _end) {
        if (error && _error)
            *error = _error;
        return nullptr;
    }
    ++_taken;
    return _blocks[slot].get();
}

}
