#pragma once

#include "AudioSource.h"

#include <zrbase/host/audio/ZRExtAudioFileService.h>

namespace zr {

// An audio file in any container and format the library reads, decoded to native float through the extended
// audio file service. Standard input works for containers that can be read front to back.
class FileAudioSource final : public AudioSource {
public:
    static std::unique_ptr<FileAudioSource> open(const std::string& path, ZRErrorPtr* error = nullptr);
    ~FileAudioSource() override;

    const std::string& path() const noexcept override { return _path; }
    double sampleRate() const noexcept override { return _format.mSampleRate; }
    uint32_t channels() const noexcept override { return _format.mChannelsPerFrame; }
    std::optional<uint64_t> frames() const noexcept override { return _frames; }
    std::optional<uint32_t> read(ZRNativeAudioBuffer& block, ZRErrorPtr* error = nullptr) override;

    // The file's own data format.
    const AudioStreamBasicDescription& fileFormat() const noexcept { return _format; }

private:
    FileAudioSource(std::string path, ExtAudioFileRef file, const AudioStreamBasicDescription& format);

    std::string _path;
    ExtAudioFileRef _file;
    AudioStreamBasicDescription _format;
    std::optional<uint64_t> _frames;
};

// The path to open for an input: "-" is standard input, which is copied to an unnamed temporary file when it is a
// pipe (the container reader needs to seek); the copy lives as long as the process.
std::optional<std::string> readablePath(const std::string& path, ZRErrorPtr* error = nullptr);

// An error of the audio file service's result code.
ZRErrorPtr audioFileError(OSStatus status, std::string_view action);

// The library's native float layout at a rate and channel count.
AudioStreamBasicDescription nativeFloatFormat(double sampleRate, uint32_t channels);

}
