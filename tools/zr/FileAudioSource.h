#pragma once

#include "AudioSource.h"

#include <zrbase/audio/ZRAudioStreamDescription.h>

class ZRCoreAudioFile;
class ZRExtCoreAudioFile;

namespace zr {

// An audio file in any container and format the library reads, decoded to native float by the extended audio
// file. Standard input works for containers that can be read front to back.
class FileAudioSource final : public AudioSource {
public:
    static std::unique_ptr<FileAudioSource> open(const std::string& path, ZRErrorPtr* error = nullptr);
    ~FileAudioSource() override;

    const std::string& path() const noexcept override { return _path; }
    double sampleRate() const noexcept override { return _format.rate(); }
    uint32_t channels() const noexcept override { return _format.channels(); }
    std::optional<uint64_t> frames() const noexcept override { return _frames; }
    std::optional<uint32_t> read(ZRNativeAudioBuffer& block, ZRErrorPtr* error = nullptr) override;
    // Linear PCM only: its frames lie at known places in the file.
    std::unique_ptr<AudioSource> parallelReader() const override;
    bool seek(uint64_t frame, ZRErrorPtr* error = nullptr) override;

    // The file's own data format.
    const ZRAudioStreamDescription& fileFormat() const noexcept { return _format; }
    // The same file opened for its container's facts: name, packets, channel layout and tags.
    std::unique_ptr<ZRCoreAudioFile> containerFile(ZRErrorPtr* error = nullptr) const;
    // The file's size in bytes, 0 when it is no regular file.
    uint64_t byteSize() const noexcept;

private:
    FileAudioSource(std::string path, std::string location, std::unique_ptr<ZRExtCoreAudioFile> file);

    std::string _path;
    // Where the file is read: the path, or the copy of standard input.
    std::string _location;
    std::unique_ptr<ZRExtCoreAudioFile> _file;
    ZRAudioStreamDescription _format;
    std::optional<uint64_t> _frames;
};

}
