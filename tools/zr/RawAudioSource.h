#pragma once

#include "AudioSource.h"

#include <vector>

namespace zr {

// Raw interleaved 32-bit float samples in the machine's byte order, the library's own sample type, from a file or
// standard input. A partial frame at the end is ignored.
class RawAudioSource final : public AudioSource {
public:
    static std::unique_ptr<RawAudioSource> open(
        const std::string& path, uint32_t rate, uint32_t channels, ZRErrorPtr* error = nullptr);
    ~RawAudioSource() override;

    const std::string& path() const noexcept override { return _path; }
    double sampleRate() const noexcept override { return _rate; }
    uint32_t channels() const noexcept override { return _channels; }
    std::optional<uint64_t> frames() const noexcept override { return _frames; }
    std::optional<uint32_t> read(ZRNativeAudioBuffer& block, ZRErrorPtr* error = nullptr) override;

private:
    RawAudioSource(std::string path, int descriptor, uint32_t rate, uint32_t channels);

    std::string _path;
    int _descriptor;
    uint32_t _rate;
    uint32_t _channels;
    std::optional<uint64_t> _frames;
    std::vector<float> _interleaved;
    // Bytes of a frame that a read left incomplete, kept for the next one.
    size_t _pendingBytes = 0;
};

}
