#pragma once

#include <zrbase/audio/ZRAudioBuffer.h>
#include <zrbase/audio/ZRAudioStreamDescription.h>
#include <zrbase/audio/ZRChannelLayout.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A packet-level reader or writer of an audio file: runs of packets with their descriptions from and to a running
// packet position, and the file's format, container name, packet counts, channel layout, magic cookie and tags.
// Failures are ZRCoreAudioFileError objects with the audio file service's code.
class ZR_EXPORT ZRCoreAudioFile {
public:
    ~ZRCoreAudioFile();
    ZRCoreAudioFile(const ZRCoreAudioFile&) = delete;
    ZRCoreAudioFile& operator=(const ZRCoreAudioFile&) = delete;

    // An existing file, opened for reading: "Opening an audio file".
    static std::unique_ptr<ZRCoreAudioFile> fileWithPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // A new file of container `type` holding `description`, in the path's folder under its last component:
    // "Creating an audio file".
    static std::unique_ptr<ZRCoreAudioFile> fileWithPath(const std::string& path, AudioFileTypeID type,
        const ZRAudioStreamDescription& description, ZRErrorPtr* error = nullptr);

    AudioFileID fileID() const noexcept { return _audioFile; }
    // The bytes of the last read (null before the first), their packet descriptions, and where the next read or
    // write starts.
    ZRAudioBuffer* readBuffer() const noexcept { return _readBuffer.get(); }
    const AudioStreamPacketDescription* packetDescriptions() const noexcept { return _packetDescriptions.data(); }
    uint32_t currentPacket() const noexcept { return _currentPacket; }
    void setCurrentPacket(uint32_t packet) noexcept { _currentPacket = packet; }

    // Reads *count packets from currentPacket() into readBuffer(), at most those the file has left; *count receives
    // the packets read (0 at the end) and the position moves past them: "Reading from an audio file".
    bool readNumberOfPackets(uint32_t* count, ZRErrorPtr* error = nullptr);
    // Writes `count` packets held in buffer 0 of `buffer`, described by `descriptions` (null for constant packets),
    // at currentPacket(): "Writing to an audio file".
    bool writeNumberOfPackets(uint32_t count, const ZRAudioBuffer& buffer,
        const AudioStreamPacketDescription* descriptions, ZRErrorPtr* error = nullptr);

    ZRAudioStreamDescription audioFormat() const noexcept;
    // "WAVE Audio File", "AIFF Audio File", ... or "unknown".
    std::string fileFormat() const;
    // The low 32 bits of the packet count.
    uint32_t numberOfPackets() const noexcept;
    uint32_t maximumPacketSize() const noexcept;
    std::unique_ptr<ZRChannelLayout> channelLayout() const;
    // The tags under the information-dictionary keys; none when the file has none.
    std::optional<ZRDictionary> properties() const;
    // Tags for a created file, set before its first packet; an empty dictionary does nothing. A failure shows
    // "Setting the properties to the audio file" at once.
    void setProperties(const ZRDictionary& properties);
    // The codec's configuration in the container's layout; none for formats without one.
    std::optional<ZRData> magicCookie() const;
    // Set on a created file before its first packet. A failure shows "Setting the magic cookie to the audio file".
    void setMagicCookie(const ZRData& cookie);
    // Finishes the file now (the destructor does it otherwise, without a report): "Closing an audio file".
    bool close(ZRErrorPtr* error = nullptr);

private:
    explicit ZRCoreAudioFile(AudioFileID file) noexcept;

    AudioFileID _audioFile;
    std::unique_ptr<ZRAudioBuffer> _readBuffer;
    std::vector<AudioStreamPacketDescription> _packetDescriptions;
    uint32_t _currentPacket = 0;
};
