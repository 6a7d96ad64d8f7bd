#pragma once

#include <zrbase/audio/ZRAudioStreamDescription.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRExtAudioFileService.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

// An audio file with a converter of its own, for compressed files: one made here takes the library's native float
// buffers and encodes them into its format as they arrive; an existing one answers packet and frame arithmetic,
// packet reads, its magic cookie and its tags. openWithPath turns linear PCM files away by design (ZRCoreAudioFile
// handles them); openForReadingWithPath takes any file and reads it as native float.
//
// The factories and operations of the compressed-file API report little: a failed creation or opening logs "error"
// to the console when an error parameter is given and leaves that parameter untouched, packet reads and buffer
// writes answer false without an error. The reading API added for every file reports ZRCoreAudioFileError objects.
class ZR_EXPORT ZRExtCoreAudioFile {
public:
    ~ZRExtCoreAudioFile();
    ZRExtCoreAudioFile(const ZRExtCoreAudioFile&) = delete;
    ZRExtCoreAudioFile& operator=(const ZRExtCoreAudioFile&) = delete;

    // A new file at `path` (never replacing one) of container `type` holding data format `format`, written from
    // native float buffers of `rate` and `channels`. Only Apple Lossless takes the rate, and the depth of its
    // source (16, 20, 24 or 32 bits); the other encoders run at the client's rate or their nearest one.
    static std::unique_ptr<ZRExtCoreAudioFile> createWithPath(const std::string& path, AudioFileTypeID type,
        AudioFormatID format, uint32_t rate, uint32_t depth, uint32_t channels, ZRErrorPtr* error = nullptr);
    // An existing compressed file; null for linear PCM (without a log line).
    static std::unique_ptr<ZRExtCoreAudioFile> openWithPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // An existing file of any format, read as native float at its own rate and channels: "Opening an audio file".
    static std::unique_ptr<ZRExtCoreAudioFile> openForReadingWithPath(
        const std::string& path, ZRErrorPtr* error = nullptr);

    // The plain audio file beneath, owned by this object.
    AudioFileID audioFileID() const noexcept { return _audioFileID; }
    // The frames of the file without the encoder's delay and padding, low 32 bits; framesLong gives all 64.
    uint32_t frames() const noexcept { return uint32_t(framesLong()); }
    int64_t framesLong() const noexcept;
    // The file's data format.
    ZRAudioStreamDescription format() const noexcept;
    // "MP3 Audio File", "AAC Audio File", "AC-3 Audio File", "Apple Lossless File" or "unknown format", localised.
    std::string fileFormatName() const;
    // The first frame of a packet (the packet itself when packets have no fixed length); the packet holding a
    // frame and the frame's place in it.
    uint32_t frameAtPacket(uint32_t packet) const noexcept;
    uint32_t packetForFrame(uint32_t frame) const noexcept;
    uint32_t offsetInPacketForFrame(uint32_t frame) const noexcept;
    uint32_t maximumPacketSize() const noexcept;
    uint32_t numberOfPackets() const noexcept;
    std::optional<ZRDictionary> properties() const;
    // Tags for a created file, set before its first write; an empty dictionary does nothing. A failure shows
    // "Setting the properties to the audio file" at once.
    void setProperties(const ZRDictionary& properties);
    std::optional<ZRData> magicCookie() const;
    // The encoder's bit rate in bits per second, before the first write; a failure is logged.
    void setBitrate(uint32_t bitrate);

    // *length packets from `packet` into `buffer`, which holds *length times maximumPacketSize() bytes; *length and
    // *bytes receive what was read. The error parameter is not used.
    bool readPacketsFrom(int64_t packet, uint32_t* length, void* buffer, uint32_t* bytes,
        AudioStreamPacketDescription* descriptions, ZRErrorPtr* error = nullptr);
    // Appends the buffer's frames. The error parameter is not used.
    bool writeBuffer(const ZRNativeAudioBuffer& buffer, ZRErrorPtr* error = nullptr);

    // Reading a file opened for reading: up to buffer.frames() frames into the buffer, whose channels match the
    // file's; *frames receives the count, 0 at the end. "Reading from an audio file".
    bool readBuffer(ZRNativeAudioBuffer& buffer, uint32_t* frames, ZRErrorPtr* error = nullptr);
    // Moves the next readBuffer to a frame. "Reading from an audio file".
    bool seekToFrame(int64_t frame, ZRErrorPtr* error = nullptr);
    // Finishes a written file now (the destructor does it otherwise, without a report): "Closing an audio file".
    bool close(ZRErrorPtr* error = nullptr);

private:
    explicit ZRExtCoreAudioFile(ExtAudioFileRef file) noexcept;

    ExtAudioFileRef _audioFile;
    AudioFileID _audioFileID = nullptr;
};
