#pragma once

#include <zrbase/core/ZRError.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

class ZRNativeAudioBuffer;

namespace zr {

class AudioSource;

// Reads an input block after block on a thread of its own, one block ahead of the caller, so that reading and
// decoding overlap with whatever the caller does with the previous block. Two blocks take turns.
class BlockPrefetcher {
public:
    static std::unique_ptr<BlockPrefetcher> prefetcherWithSource(AudioSource& source, ZRErrorPtr* error = nullptr);
    ~BlockPrefetcher();
    BlockPrefetcher(const BlockPrefetcher&) = delete;
    BlockPrefetcher& operator=(const BlockPrefetcher&) = delete;

    // The next block, valid until the following call; null at the end, and on a failure with the error.
    const ZRNativeAudioBuffer* next(ZRErrorPtr* error = nullptr);

private:
    explicit BlockPrefetcher(AudioSource& source);
    void _run();

    AudioSource& _source;
    std::unique_ptr<ZRNativeAudioBuffer> _blocks[2];
    std::mutex _lock;
    std::condition_variable _changed;
    // Blocks counted from the start: read, handed to the caller, and given back by it; block n lives in
    // _blocks[n % 2]. Then how reading ended.
    uint64_t _read = 0;
    uint64_t _taken = 0;
    uint64_t _released = 0;
    bool _ended = false;
    bool _stopping = false;
    ZRErrorPtr _error;
    std::thread _reader;
};

}
