#pragma once

#include <zrbase/codec/ZRCoreAudioFile.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <string>

class ZRAudioBuffer;
class ZRConverter;
class ZRExtCoreAudioFile;
class ZRNativeAudioBuffer;

namespace zr {

// What an output file holds.
struct SinkFormat {
    AudioFileTypeID container = 0;
    AudioFormatID format = 0;
    double rate = 0.0;
    uint32_t channels = 0;
    // Bits per sample of linear PCM (32 is float) and of Apple Lossless' source.
    uint32_t bits = 16;
    // Of the lossy encoders, in bit/s; 0 for the encoder's own choice.
    uint32_t bitRate = 0;
    // Information-dictionary keys.
    ZRDictionary tags;
};

// A new audio file written from native float blocks at its own rate. Linear PCM goes through the plain audio file,
// each block turned into the file's samples by a converter; compressed formats go through the extended audio
// file, whose encoder takes the floats as they are.
class AudioFileSink {
public:
    static std::unique_ptr<AudioFileSink> sinkWithPath(
        const std::string& path, const SinkFormat& format, ZRErrorPtr* error = nullptr);
    ~AudioFileSink();
    AudioFileSink(const AudioFileSink&) = delete;
    AudioFileSink& operator=(const AudioFileSink&) = delete;

    bool write(const ZRNativeAudioBuffer& block, ZRErrorPtr* error = nullptr);
    // Finishes the file: its header and the encoder's last packets.
    bool close(ZRErrorPtr* error = nullptr);

private:
    AudioFileSink() = default;

    std::unique_ptr<ZRCoreAudioFile> _file;
    std::unique_ptr<ZRConverter> _samples;
    std::unique_ptr<ZRAudioBuffer> _bytes;
    uint32_t _bytesPerFrame = 0;
    std::unique_ptr<ZRExtCoreAudioFile> _encodedFile;
};

}
