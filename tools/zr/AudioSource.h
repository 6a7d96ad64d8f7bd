#pragma once

#include <zrbase/core/ZRError.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class ZRNativeAudioBuffer;

namespace zr {

class ProgressBar;

// How an input is to be read: raw interleaved 32-bit float samples at a given rate and channel count, or (with
// no raw format) a file whose container is recognised from its bytes.
struct SourceFormat {
    uint32_t rawRate = 0;
    uint32_t rawChannels = 0;
    bool isRaw() const noexcept { return rawRate > 0; }
};

// Audio read block after block into the library's native float buffers.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    // The input's path as given ("-" for standard input).
    virtual const std::string& path() const noexcept = 0;
    virtual double sampleRate() const noexcept = 0;
    virtual uint32_t channels() const noexcept = 0;
    // The length in frames, when the input knows it before it is read.
    virtual std::optional<uint64_t> frames() const noexcept = 0;
    // Reads up to block.frames() frames into the block (which has channels() channels) and shrinks it to the
    // frames read when fewer arrive. 0 at the end; nothing on failure.
    virtual std::optional<uint32_t> read(ZRNativeAudioBuffer& block, ZRErrorPtr* error = nullptr) = 0;
    // Another reader of the same input with a position of its own, for reading it at several places at once; null
    // where that is not cheap (a pipe, a compressed file that would be decoded twice).
    virtual std::unique_ptr<AudioSource> parallelReader() const { return nullptr; }
    // Moves the next read to a frame; only inputs that give parallel readers can.
    virtual bool seek(uint64_t frame, ZRErrorPtr* error = nullptr);

    // Opens an input; "-" is standard input.
    static std::unique_ptr<AudioSource> open(
        const std::string& path, const SourceFormat& format, ZRErrorPtr* error = nullptr);
};

// The frames of the blocks inputs are read in: large enough that per-block costs vanish, small enough to stay in
// the cache's reach.
constexpr uint32_t blockFrames = 65536;

// Reads the whole input in blocks and hands each to `consume` in order, counting the frames on the progress bar. The
// blocks are read ahead on `threads` threads where the input allows several (see BlockPrefetcher).
bool readAll(AudioSource& source, ProgressBar* progress,
    const std::function<void(const ZRNativeAudioBuffer& block)>& consume, ZRErrorPtr* error = nullptr,
    uint32_t threads = 1);

}
