#pragma once

#include <zrbase/core/ZRError.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class ZRNativeAudioBuffer;

namespace zr {

class AudioSource;

// Reads an input block after block on threads of their own, ahead of the caller, so that reading and decoding
// overlap with whatever the caller does with the blocks before. One thread reads every block in turn; where the
// input can be read at several places at low cost (linear PCM in a file) and the caller asks for more, each of
// several threads reads every n-th block through a reader of its own. The caller gets the blocks in order either
// way. Each thread has two blocks to fill.
class BlockPrefetcher {
public:
    static std::unique_ptr<BlockPrefetcher> prefetcherWithSource(
        AudioSource& source, uint32_t threads = 1, ZRErrorPtr* error = nullptr);
    ~BlockPrefetcher();
    BlockPrefetcher(const BlockPrefetcher&) = delete;
    BlockPrefetcher& operator=(const BlockPrefetcher&) = delete;

    // The next block, valid until the following call; null at the end, and on a failure with the error.
    const ZRNativeAudioBuffer* next(ZRErrorPtr* error = nullptr);

private:
    BlockPrefetcher() = default;
    void _run(uint32_t thread);

    std::vector<std::unique_ptr<AudioSource>> _ownSources;
    // The reader of each thread.
    std::vector<AudioSource*> _sources;
    // Block n lives in _blocks[n % size]; _filled holds n + 1 there once it is read, 0 before.
    std::vector<std::unique_ptr<ZRNativeAudioBuffer>> _blocks;
    std::vector<uint64_t> _filled;
    std::mutex _lock;
    std::condition_variable _changed;
    // Blocks handed to the caller and given back by it; the first block past the input's end or failure, and the
    // failure.
    uint64_t _taken = 0;
    uint64_t _released = 0;
    uint64_t _end = UINT64_MAX;
    ZRErrorPtr _error;
    bool _stopping = false;
    std::vector<std::thread> _threads;
};

}
