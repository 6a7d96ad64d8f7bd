#include <zrbase/codec/ZRExtCoreAudioFile.h>

#include <zrbase/codec/ZRCodecStatusPrivate.h>
#include <zrbase/core/ZRCoreAudioFileError.h>
#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

namespace {

constexpr auto succeeded = ZRCodecSucceeded<ZRCoreAudioFileError>;

// The library's native float layout for a file's rate and channels.
ZRAudioStreamDescription clientFormat(double rate, uint32_t channels)
{
    return ZRAudioStreamDescription(rate, channels);
}

} // namespace

ZRExtCoreAudioFile::ZRExtCoreAudioFile(ExtAudioFileRef file) noexcept
    : _audioFile(file)
{
    ZRExtAudioFileService::audioFile(_audioFile, _audioFileID);
}

ZRExtCoreAudioFile::~ZRExtCoreAudioFile()
{
    if (_audioFile)
        ZRExtAudioFileService::dispose(_audioFile);
}

std::unique_ptr<ZRExtCoreAudioFile> ZRExtCoreAudioFile::createWithPath(const std::string& path, AudioFileTypeID type,
    AudioFormatID format, uint32_t rate, uint32_t depth, uint32_t channels, ZRErrorPtr* error)
{
    ZRAudioStreamDescription fileFormat;
    fileFormat.clear();
    fileFormat.setChannels(channels);
    fileFormat.setFormat(format);
    if (format == kAudioFormatAppleLossless) {
        fileFormat.setRate(rate);
        switch (depth) {
        case 16:
            fileFormat.setFlags(1);
            break;
        case 20:
            fileFormat.setFlags(2);
            break;
        case 24:
            fileFormat.setFlags(3);
            break;
        case 32:
            fileFormat.setFlags(4);
            break;
        default:
            break;
        }
    }
    fileFormat.complete();
    ExtAudioFileRef file = nullptr;
    OSStatus status = ZRExtAudioFileService::create(path, type, *fileFormat.description(), file);
    if (status == noErr) {
        status = ZRExtAudioFileService::setClientDataFormat(file, *clientFormat(rate, channels).description());
        if (status != noErr)
            ZRExtAudioFileService::dispose(file);
    }
    if (status != noErr) {
        if (error)
            ZRConsoleLog("error");
        return nullptr;
    }
    return std::unique_ptr<ZRExtCoreAudioFile>(new ZRExtCoreAudioFile(file));
}

std::unique_ptr<ZRExtCoreAudioFile> ZRExtCoreAudioFile::openWithPath(const std::string& path, ZRErrorPtr* error)
{
    ExtAudioFileRef file = nullptr;
    if (ZRExtAudioFileService::open(path, file) != noErr) {
        if (error)
            ZRConsoleLog("error");
        return nullptr;
    }
    std::unique_ptr<ZRExtCoreAudioFile> opened(new ZRExtCoreAudioFile(file));
    if (opened->format().format() == kAudioFormatLinearPCM)
        return nullptr;
    return opened;
}

std::unique_ptr<ZRExtCoreAudioFile> ZRExtCoreAudioFile::openForReadingWithPath(
    const std::string& path, ZRErrorPtr* error)
{
    ExtAudioFileRef file = nullptr;
    if (!succeeded(ZRExtAudioFileService::open(path, file), "Opening an audio file", error))
        return nullptr;
    std::unique_ptr<ZRExtCoreAudioFile> opened(new ZRExtCoreAudioFile(file));
    const ZRAudioStreamDescription format = opened->format();
    const OSStatus status = ZRExtAudioFileService::setClientDataFormat(
        file, *clientFormat(format.rate(), format.channels()).description());
    if (!succeeded(status, "Opening an audio file", error))
        return nullptr;
    return opened;
}

int64_t ZRExtCoreAudioFile::framesLong() const noexcept
{
    int64_t frames = 0;
    ZRExtAudioFileService::fileLengthFrames(_audioFile, frames);
    return frames;
}

ZRAudioStreamDescription ZRExtCoreAudioFile::format() const noexcept
{
    AudioStreamBasicDescription format {};
    ZRExtAudioFileService::fileDataFormat(_audioFile, format);
    return ZRAudioStreamDescription(format);
}

std::string ZRExtCoreAudioFile::fileFormatName() const
{
    switch (format().format()) {
    case kAudioFormatMPEGLayer3:
        return ZRLocalizedString("MP3 Audio File");
    case kAudioFormatMPEG4AAC:
        return ZRLocalizedString("AAC Audio File");
    case kAudioFormatAC3:
        return ZRLocalizedString("AC-3 Audio File");
    case kAudioFormatAppleLossless:
        return ZRLocalizedString("Apple Lossless File");
    default:
        return ZRLocalizedString("unknown format");
    }
}

uint32_t ZRExtCoreAudioFile::frameAtPacket(uint32_t packet) const noexcept
{
    AudioFramePacketTranslation translation { 0, packet, 0 };
    // A file without fixed packets counts one frame per packet.
    if (ZRAudioFileService::packetToFrame(_audioFileID, translation) != noErr)
        return packet;
    return uint32_t(translation.mFrame);
}

uint32_t ZRExtCoreAudioFile::packetForFrame(uint32_t frame) const noexcept
{
    AudioFramePacketTranslation translation { frame, 0, 0 };
    ZRAudioFileService::frameToPacket(_audioFileID, translation);
    return uint32_t(translation.mPacket);
}

uint32_t ZRExtCoreAudioFile::offsetInPacketForFrame(uint32_t frame) const noexcept
{
    AudioFramePacketTranslation translation { frame, 0, 0 };
    ZRAudioFileService::frameToPacket(_audioFileID, translation);
    return translation.mFrameOffsetInPacket;
}

uint32_t ZRExtCoreAudioFile::maximumPacketSize() const noexcept
{
    uint32_t size = 0;
    ZRAudioFileService::maximumPacketSize(_audioFileID, size);
    return size;
}

uint32_t ZRExtCoreAudioFile::numberOfPackets() const noexcept
{
    uint64_t count = 0;
    ZRAudioFileService::packetCount(_audioFileID, count);
    return uint32_t(count);
}

std::optional<ZRDictionary> ZRExtCoreAudioFile::properties() const
{
    ZRDictionary info;
    if (ZRAudioFileService::infoDictionary(_audioFileID, info) != noErr)
        return std::nullopt;
    return info;
}

void ZRExtCoreAudioFile::setProperties(const ZRDictionary& properties)
{
    ZRErrorPtr error;
    if (!properties.empty()
        && !succeeded(ZRAudioFileService::setInfoDictionary(_audioFileID, properties),
            "Setting the properties to the audio file", &error))
        error->alert();
}

std::optional<ZRData> ZRExtCoreAudioFile::magicCookie() const
{
    ZRData cookie;
    if (ZRAudioFileService::magicCookie(_audioFileID, cookie) != noErr)
        return std::nullopt;
    return cookie;
}

void ZRExtCoreAudioFile::setBitrate(uint32_t bitrate)
{
    AudioConverterRef converter = nullptr;
    OSStatus status = ZRExtAudioFileService::audioConverter(_audioFile, converter);
    if (status == noErr)
        status = ZRAudioConverterService::setBitRate(converter, bitrate);
    if (status != noErr)
        ZRConsoleLog("could not set bitrate: %d", status);
}

bool ZRExtCoreAudioFile::readPacketsFrom(int64_t packet, uint32_t* length, void* buffer, uint32_t* bytes,
    AudioStreamPacketDescription* descriptions, ZRErrorPtr*)
{
    if (!length)
        return false;
    uint32_t room = *length * maximumPacketSize();
    if (ZRAudioFileService::readPackets(_audioFileID, packet, *length, room, buffer, descriptions) != noErr)
        return false;
    if (bytes)
        *bytes = room;
    return true;
}

bool ZRExtCoreAudioFile::writeBuffer(const ZRNativeAudioBuffer& buffer, ZRErrorPtr*)
{
    return buffer.list() && ZRExtAudioFileService::write(_audioFile, buffer.frames(), buffer.list()) == noErr;
}

bool ZRExtCoreAudioFile::readBuffer(ZRNativeAudioBuffer& buffer, uint32_t* frames, ZRErrorPtr* error)
{
    AudioBufferList* list = buffer.list();
    if (!list || buffer.channels() != format().channels())
        return succeeded(kAudioFileUnsupportedDataFormatError, "Reading from an audio file", error);
    // The service reports the bytes it filled in the list, which belongs to the buffer: its length stays.
    const uint32_t length = buffer.length();
    uint32_t count = buffer.frames();
    const OSStatus status = ZRExtAudioFileService::read(_audioFile, count, list);
    for (uint32_t i = 0; i < list->mNumberBuffers; ++i)
        list->mBuffers[i].mDataByteSize = length;
    if (!succeeded(status, "Reading from an audio file", error))
        return false;
    if (frames)
        *frames = count;
    return true;
}

bool ZRExtCoreAudioFile::seekToFrame(int64_t frame, ZRErrorPtr* error)
{
    return succeeded(ZRExtAudioFileService::seek(_audioFile, frame), "Reading from an audio file", error);
}

bool ZRExtCoreAudioFile::close(ZRErrorPtr* error)
{
    const OSStatus status = _audioFile ? ZRExtAudioFileService::dispose(_audioFile) : noErr;
    _audioFile = nullptr;
    _audioFileID = nullptr;
    return succeeded(status, "Closing an audio file", error);
}
