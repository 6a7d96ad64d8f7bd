#include <zrbase/codec/ZRCoreAudioFile.h>

#include <zrbase/codec/ZRCodecStatusPrivate.h>
#include <zrbase/core/ZRCoreAudioFileError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <algorithm>
#include <climits>

namespace {

constexpr auto succeeded = ZRCodecSucceeded<ZRCoreAudioFileError>;

void alertFailure(OSStatus status, const char* action)
{
    ZRErrorPtr error;
    if (!succeeded(status, action, &error))
        error->alert();
}

} // namespace

ZRCoreAudioFile::ZRCoreAudioFile(AudioFileID file) noexcept
    : _audioFile(file)
{
}

ZRCoreAudioFile::~ZRCoreAudioFile()
{
    if (_audioFile)
        ZRAudioFileService::close(_audioFile);
}

std::unique_ptr<ZRCoreAudioFile> ZRCoreAudioFile::fileWithPath(const std::string& path, ZRErrorPtr* error)
{
    AudioFileID file = nullptr;
    if (!succeeded(ZRAudioFileService::open(path, file), "Opening an audio file", error))
        return nullptr;
    return std::unique_ptr<ZRCoreAudioFile>(new ZRCoreAudioFile(file));
}

std::unique_ptr<ZRCoreAudioFile> ZRCoreAudioFile::fileWithPath(
    const std::string& path, AudioFileTypeID type, const ZRAudioStreamDescription& description, ZRErrorPtr* error)
{
    const size_t slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, std::max<size_t>(slash, 1));
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    AudioFileID file = nullptr;
    if (!succeeded(ZRAudioFileService::create(folder, name, type, *description.description(), file),
            "Creating an audio file", error))
        return nullptr;
    return std::unique_ptr<ZRCoreAudioFile>(new ZRCoreAudioFile(file));
}

bool ZRCoreAudioFile::readNumberOfPackets(uint32_t* count, ZRErrorPtr* error)
{
    // Room for the packets the file still has, however many are asked for.
    const uint32_t total = numberOfPackets();
    const uint32_t wanted = std::min(*count, total > _currentPacket ? total - _currentPacket : 0);
    _packetDescriptions.assign(wanted, {});
    if (!_readBuffer) {
        _readBuffer = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 0, error);
        if (!_readBuffer)
            return false;
    }
    const uint64_t room = uint64_t(wanted) * maximumPacketSize();
    if (room > UINT32_MAX || !_readBuffer->setLength(uint32_t(room), error))
        return succeeded(kAudioFileBadPropertySizeError, "Reading from an audio file", error);
    uint32_t bytes = uint32_t(room);
    uint32_t packets = wanted;
    const OSStatus status = ZRAudioFileService::readPackets(
        _audioFile, _currentPacket, packets, bytes, _readBuffer->buffer(), _packetDescriptions.data());
    if (!succeeded(status, "Reading from an audio file", error))
        return false;
    _readBuffer->setLength(bytes);
    _currentPacket += packets;
    *count = packets;
    return true;
}

bool ZRCoreAudioFile::writeNumberOfPackets(
    uint32_t count, const ZRAudioBuffer& buffer, const AudioStreamPacketDescription* descriptions, ZRErrorPtr* error)
{
    if (count == 0)
        return true;
    uint32_t written = count;
    const OSStatus status = ZRAudioFileService::writePackets(
        _audioFile, _currentPacket, written, buffer.length(), buffer.buffer(), descriptions);
    if (!succeeded(status, "Writing to an audio file", error))
        return false;
    _currentPacket += written;
    return true;
}

ZRAudioStreamDescription ZRCoreAudioFile::audioFormat() const noexcept
{
    ZRAudioStreamDescription format;
    format.clear();
    ZRAudioFileService::dataFormat(_audioFile, *format.description());
    return format;
}

std::string ZRCoreAudioFile::fileFormat() const
{
    AudioFileTypeID type = 0;
    ZRAudioFileService::fileFormat(_audioFile, type);
    switch (type) {
    case kAudioFileSoundDesigner2Type:
        return "Sound Designer II Audio File";
    case kAudioFileAIFCType:
    case kAudioFileAIFFType:
        return "AIFF Audio File";
    case kAudioFileMP1Type:
        return "MP1 Audio File";
    case kAudioFileMP2Type:
        return "MP2 Audio File";
    case kAudioFileMP3Type:
        return "MP3 Audio File";
    case kAudioFileWAVEType:
        return "WAVE Audio File";
    case kAudioFileAC3Type:
        return "AC-3 Audio File";
    case kAudioFileCAFType:
        return "CAF Audio File";
    case kAudioFileM4AType:
        return "M4A Audio File";
    case kAudioFileMPEG4Type:
        return "MPEG4 Audio File";
    default:
        return "unknown";
    }
}

uint32_t ZRCoreAudioFile::numberOfPackets() const noexcept
{
    uint64_t count = 0;
    ZRAudioFileService::packetCount(_audioFile, count);
    return uint32_t(count);
}

uint32_t ZRCoreAudioFile::maximumPacketSize() const noexcept
{
    uint32_t size = 0;
    ZRAudioFileService::maximumPacketSize(_audioFile, size);
    return size;
}

std::unique_ptr<ZRChannelLayout> ZRCoreAudioFile::channelLayout() const
{
    return ZRChannelLayout::layoutForCoreAudioFile(_audioFile);
}

std::optional<ZRDictionary> ZRCoreAudioFile::properties() const
{
    ZRDictionary info;
    if (ZRAudioFileService::infoDictionary(_audioFile, info) != noErr || info.empty())
        return std::nullopt;
    return info;
}

void ZRCoreAudioFile::setProperties(const ZRDictionary& properties)
{
    if (!properties.empty())
        alertFailure(
            ZRAudioFileService::setInfoDictionary(_audioFile, properties), "Setting the properties to the audio file");
}

std::optional<ZRData> ZRCoreAudioFile::magicCookie() const
{
    ZRData cookie;
    if (ZRAudioFileService::magicCookie(_audioFile, cookie) != noErr)
        return std::nullopt;
    return cookie;
}

void ZRCoreAudioFile::setMagicCookie(const ZRData& cookie)
{
    alertFailure(ZRAudioFileService::setMagicCookie(_audioFile, cookie), "Setting the magic cookie to the audio file");
}

bool ZRCoreAudioFile::close(ZRErrorPtr* error)
{
    const OSStatus status = _audioFile ? ZRAudioFileService::close(_audioFile) : noErr;
    _audioFile = nullptr;
    return succeeded(status, "Closing an audio file", error);
}
