#include <zrbase/host/audio/ZRExtAudioFileService.h>

#include <algorithm>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

// The status the write side's input procedure answers once the caller's frames are handed over: the conversion
// stops with what it could make and keeps the rest for the next write or the close.
constexpr OSStatus inputUsedUp = static_cast<OSStatus>(ZRFourCharCode("zrIU"));
// Packets moved per call between the converter and the file.
constexpr uint32_t packetRun = 64;
// Frames of linear PCM moved per call.
constexpr uint32_t frameRun = 4096;
// Bytes of linear PCM read from the file at a time, however small the caller's reads, so that a read costs no call to
// the system each. Against read() of the same bytes in 64 KB, runs of 256 KB came out 5 to 10 % faster than runs of
// 64 KB, and runs of 16 KB a fifth slower.
constexpr uint32_t readAheadBytes = 1 << 18;
// Frames decoded ahead of a seek's target, so that the decoder's overlapping transforms, filter banks and MP3's bit
// reservoir have settled when the target comes; Opus's predictors take about this long to come within 50 dB.
constexpr int64_t seekPreroll = 8192;

bool isPCM(const AudioStreamBasicDescription& format) noexcept { return format.mFormatID == kAudioFormatLinearPCM; }

} // namespace

struct OpaqueExtAudioFile {
    std::string path;
    AudioFileTypeID type = 0;
    AudioStreamBasicDescription fileFormat {};
    AudioStreamBasicDescription clientFormat {};
    bool hasClientFormat = false;
    bool writing = false;
    AudioFileID file = nullptr;
    AudioConverterRef converter = nullptr;
    std::vector<uint8_t> block;
    std::vector<AudioStreamPacketDescription> descriptions;

    // Reading: the next packet for the converter, the frames of the client format given out so far and those the
    // decoder makes before them that are to be dropped.
    int64_t nextPacket = 0;
    int64_t position = 0;
    int64_t skip = 0;
    AudioFilePacketTableInfo table {};
    // Linear PCM read ahead into `block`: the packets from `aheadStart` on.
    int64_t aheadStart = 0;
    uint32_t aheadPackets = 0;

    // Writing: the caller's frames for the input procedure, and what has gone into the file.
    const AudioBufferList* pending = nullptr;
    uint32_t pendingFrames = 0;
    bool started = false;
    int64_t framesWritten = 0;
    int64_t packetsWritten = 0;

    ~OpaqueExtAudioFile()
    {
        if (converter)
            ZRAudioConverterService::dispose(converter);
        if (file)
            ZRAudioFileService::close(file);
    }

    static OSStatus readInput(AudioConverterRef, uint32_t* ioPackets, AudioBufferList* data,
        AudioStreamPacketDescription** descriptions, void* userData);
    OSStatus readAhead(uint32_t& ioPackets, AudioBufferList* data);
    static OSStatus writeInput(AudioConverterRef, uint32_t* ioPackets, AudioBufferList* data,
        AudioStreamPacketDescription** descriptions, void* userData);
    OSStatus convertAndWrite(AudioConverterComplexInputDataProc proc);
    OSStatus readFrames(uint32_t& ioFrames, AudioBufferList* data);
};

OSStatus OpaqueExtAudioFile::readInput(AudioConverterRef, uint32_t* ioPackets, AudioBufferList* data,
    AudioStreamPacketDescription** descriptions, void* userData)
{
    auto& self = *static_cast<OpaqueExtAudioFile*>(userData);
    uint32_t maximum = 0;
    if (const OSStatus status = ZRAudioFileService::maximumPacketSize(self.file, maximum); status != noErr)
        return status;
    // Linear PCM whose packets are its frames, as the file holds them.
    if (isPCM(self.fileFormat) && maximum > 0 && maximum == self.fileFormat.mBytesPerPacket)
        return self.readAhead(*ioPackets, data);
    uint32_t packets = std::clamp<uint32_t>(*ioPackets, 1, isPCM(self.fileFormat) ? frameRun : packetRun);
    self.block.resize(size_t(packets) * std::max<uint32_t>(maximum, 1));
    self.descriptions.resize(packets);
    uint32_t bytes = uint32_t(self.block.size());
    if (const OSStatus status = ZRAudioFileService::readPackets(
            self.file, self.nextPacket, packets, bytes, self.block.data(), self.descriptions.data());
        status != noErr)
        return status;
    self.nextPacket += packets;
    data->mBuffers[0] = { self.fileFormat.mChannelsPerFrame, bytes, self.block.data() };
    *ioPackets = packets;
    if (descriptions)
        *descriptions = self.descriptions.data();
    return noErr;
}

OSStatus OpaqueExtAudioFile::readAhead(uint32_t& ioPackets, AudioBufferList* data)
{
    const uint32_t size = fileFormat.mBytesPerPacket;
    if (nextPacket < aheadStart || nextPacket >= aheadStart + aheadPackets) {
        uint32_t packets = std::max<uint32_t>(readAheadBytes / size, 1);
        block.resize(size_t(packets) * size);
        uint32_t bytes = uint32_t(block.size());
        if (const OSStatus status
            = ZRAudioFileService::readPackets(file, nextPacket, packets, bytes, block.data(), nullptr);
            status != noErr)
            return status;
        aheadStart = nextPacket;
        aheadPackets = packets;
    }
    const int64_t offset = nextPacket - aheadStart;
    const uint32_t packets = std::min<uint32_t>(std::max<uint32_t>(ioPackets, 1), uint32_t(aheadPackets - offset));
    data->mBuffers[0] = { fileFormat.mChannelsPerFrame, packets * size, block.data() + offset * size };
    nextPacket += packets;
    ioPackets = packets;
    return noErr;
}

OSStatus OpaqueExtAudioFile::writeInput(
    AudioConverterRef, uint32_t* ioPackets, AudioBufferList* data, AudioStreamPacketDescription**, void* userData)
{
    auto& self = *static_cast<OpaqueExtAudioFile*>(userData);
    if (!self.pending) {
        *ioPackets = 0;
        return self.pendingFrames == 0 ? noErr : inputUsedUp;
    }
    const uint32_t count = std::min(data->mNumberBuffers, self.pending->mNumberBuffers);
    for (uint32_t i = 0; i < count; ++i)
        data->mBuffers[i] = self.pending->mBuffers[i];
    *ioPackets = self.pendingFrames;
    self.pending = nullptr;
    return noErr;
}

OSStatus OpaqueExtAudioFile::convertAndWrite(AudioConverterComplexInputDataProc proc)
{
    AudioStreamBasicDescription output {};
    ZRAudioConverterService::outputDescription(converter, output);
    uint32_t maximum = 0;
    ZRAudioConverterService::maximumOutputPacketSize(converter, maximum);
    const uint32_t run = isPCM(output) ? frameRun : packetRun;
    block.resize(size_t(run) * maximum);
    descriptions.resize(run);
    while (true) {
        AudioBufferList list { 1, { { output.mChannelsPerFrame, uint32_t(block.size()), block.data() } } };
        uint32_t packets = run;
        const OSStatus status = ZRAudioConverterService::fillComplexBuffer(
            converter, proc, this, packets, &list, isPCM(output) ? nullptr : descriptions.data());
        if (packets > 0) {
            if (const OSStatus written = ZRAudioFileService::writePackets(file, packetsWritten, packets,
                    list.mBuffers[0].mDataByteSize, block.data(), isPCM(output) ? nullptr : descriptions.data());
                written != noErr)
                return written;
            packetsWritten += packets;
        }
        if (status == inputUsedUp)
            return noErr;
        if (status != noErr || packets == 0)
            return status;
    }
}

OSStatus OpaqueExtAudioFile::readFrames(uint32_t& ioFrames, AudioBufferList* data)
{
    // The delay the encoder put before the first frame, and the frames a seek decodes ahead of its target.
    std::vector<uint8_t> discard;
    while (skip > 0) {
        const uint32_t frames = uint32_t(std::min<int64_t>(skip, frameRun));
        const bool nonInterleaved = clientFormat.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
        const uint32_t buffers = nonInterleaved ? clientFormat.mChannelsPerFrame : 1;
        const size_t bufferBytes = size_t(frames) * clientFormat.mBytesPerFrame;
        discard.resize(bufferBytes * buffers);
        std::vector<uint8_t> listBlock(ZRAudioBufferListSize(buffers));
        auto* list = reinterpret_cast<AudioBufferList*>(listBlock.data());
        list->mNumberBuffers = buffers;
        for (uint32_t i = 0; i < buffers; ++i)
            list->mBuffers[i] = { nonInterleaved ? 1 : clientFormat.mChannelsPerFrame, uint32_t(bufferBytes),
                discard.data() + i * bufferBytes };
        uint32_t got = frames;
        if (const OSStatus status
            = ZRAudioConverterService::fillComplexBuffer(converter, readInput, this, got, list, nullptr);
            status != noErr)
            return status;
        if (got == 0)
            break;
        skip -= got;
    }
    const int64_t remaining = std::max<int64_t>(table.mNumberValidFrames - position, 0);
    uint32_t frames = uint32_t(std::min<int64_t>(ioFrames, remaining));
    if (frames == 0) {
        ioFrames = 0;
        for (uint32_t i = 0; i < data->mNumberBuffers; ++i)
            data->mBuffers[i].mDataByteSize = 0;
        return noErr;
    }
    const OSStatus status
        = ZRAudioConverterService::fillComplexBuffer(converter, readInput, this, frames, data, nullptr);
    position += frames;
    ioFrames = frames;
    return status;
}

OSStatus ZRExtAudioFileService::create(
    const std::string& path, AudioFileTypeID type, const AudioStreamBasicDescription& format, ExtAudioFileRef& file)
{
    const size_t slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, std::max<size_t>(slash, 1));
    struct stat info { };
    if (::stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return kAudioFileNotFoundError;
    if (::lstat(path.c_str(), &info) == 0)
        return -48;
    auto created = std::make_unique<OpaqueExtAudioFile>();
    created->path = path;
    created->type = type;
    created->fileFormat = format;
    created->writing = true;
    // A format whose rate is known makes the file now; one that waits for the client's rate makes it then.
    if (format.mSampleRate > 0) {
        if (const OSStatus status
            = ZRAudioFileService::create(folder, path.substr(slash + 1), type, format, created->file);
            status != noErr)
            return status;
    }
    file = created.release();
    return noErr;
}

OSStatus ZRExtAudioFileService::open(const std::string& path, ExtAudioFileRef& file)
{
    auto opened = std::make_unique<OpaqueExtAudioFile>();
    opened->path = path;
    if (const OSStatus status = ZRAudioFileService::open(path, opened->file); status != noErr)
        return status;
    ZRAudioFileService::fileFormat(opened->file, opened->type);
    ZRAudioFileService::dataFormat(opened->file, opened->fileFormat);
    ZRAudioFileService::packetTableInfo(opened->file, opened->table);
    opened->skip = opened->table.mPrimingFrames;
    file = opened.release();
    return noErr;
}

OSStatus ZRExtAudioFileService::dispose(ExtAudioFileRef file)
{
    if (!file)
        return kAudioFileInvalidFileError;
    std::unique_ptr<OpaqueExtAudioFile> disposing(file);
    if (!disposing->writing || !disposing->converter || !disposing->file)
        return noErr;
    OSStatus status = disposing->convertAndWrite(OpaqueExtAudioFile::writeInput);
    AudioStreamBasicDescription output {};
    ZRAudioConverterService::outputDescription(disposing->converter, output);
    if (status == noErr && !isPCM(output)) {
        // The padding is what the packets hold beyond the delay and the frames given, counted at the file's rate.
        uint32_t priming = 0;
        ZRAudioConverterService::primingFrames(disposing->converter, priming);
        const int64_t given = int64_t(
            double(disposing->framesWritten) * output.mSampleRate / disposing->clientFormat.mSampleRate + 0.5);
        const int64_t held = disposing->packetsWritten * int64_t(output.mFramesPerPacket);
        const AudioFilePacketTableInfo table { given, int32_t(priming),
            int32_t(std::max<int64_t>(held - priming - given, 0)) };
        status = ZRAudioFileService::setPacketTableInfo(disposing->file, table);
    }
    const OSStatus closed = ZRAudioFileService::close(disposing->file);
    disposing->file = nullptr;
    return status != noErr ? status : closed;
}

OSStatus ZRExtAudioFileService::read(ExtAudioFileRef file, uint32_t& ioFrames, AudioBufferList* data)
{
    if (!file || file->writing || !data)
        return kAudioFileOperationNotSupportedError;
    if (!file->converter)
        return kAudioConverterErr_FormatNotSupported;
    return file->readFrames(ioFrames, data);
}

OSStatus ZRExtAudioFileService::write(ExtAudioFileRef file, uint32_t frames, const AudioBufferList* data)
{
    if (!file || !file->writing)
        return kAudioFilePermissionsError;
    if (!file->converter)
        return kAudioConverterErr_FormatNotSupported;
    if (frames == 0)
        return noErr;
    if (!data)
        return kAudioConverterErr_InvalidInputSize;
    if (!file->started) {
        // The codec's cookie and delay go into the container's header, before the first packet.
        ZRData cookie;
        if (ZRAudioConverterService::compressionMagicCookie(file->converter, cookie) == noErr && !cookie.empty()) {
            if (const OSStatus status = ZRAudioFileService::setMagicCookie(file->file, cookie); status != noErr)
                return status;
        }
        uint32_t priming = 0;
        ZRAudioConverterService::primingFrames(file->converter, priming);
        if (const OSStatus status = ZRAudioFileService::setPacketTableInfo(file->file, { 0, int32_t(priming), 0 });
            status != noErr)
            return status;
        file->started = true;
    }
    file->pending = data;
    file->pendingFrames = frames;
    const OSStatus status = file->convertAndWrite(OpaqueExtAudioFile::writeInput);
    file->pending = nullptr;
    file->pendingFrames = 0;
    if (status == noErr)
        file->framesWritten += frames;
    return status;
}

OSStatus ZRExtAudioFileService::seek(ExtAudioFileRef file, int64_t frame)
{
    if (!file || file->writing || frame < 0)
        return kAudioFileOperationNotSupportedError;
    if (!file->converter)
        return kAudioConverterErr_FormatNotSupported;
    const int64_t framesPerPacket = std::max<int64_t>(file->fileFormat.mFramesPerPacket, 1);
    const int64_t target = frame + file->table.mPrimingFrames;
    int64_t packet = target / framesPerPacket;
    if (!isPCM(file->fileFormat))
        packet = std::max<int64_t>((target - seekPreroll) / framesPerPacket, 0);
    // Packets of varying frames (FLAC, Vorbis) are decoded from the first.
    if (file->fileFormat.mFramesPerPacket == 0)
        packet = 0;
    ZRAudioConverterService::reset(file->converter);
    file->nextPacket = packet;
    file->skip = int64_t(
        double(target - packet * framesPerPacket) * file->clientFormat.mSampleRate / file->fileFormat.mSampleRate);
    file->position = frame;
    return noErr;
}

OSStatus ZRExtAudioFileService::fileLengthFrames(ExtAudioFileRef file, int64_t& frames)
{
    if (!file)
        return kAudioFileInvalidFileError;
    frames = file->writing ? file->framesWritten : file->table.mNumberValidFrames;
    return noErr;
}

OSStatus ZRExtAudioFileService::fileDataFormat(ExtAudioFileRef file, AudioStreamBasicDescription& format)
{
    if (!file)
        return kAudioFileInvalidFileError;
    format = file->fileFormat;
    return noErr;
}

OSStatus ZRExtAudioFileService::clientDataFormat(ExtAudioFileRef file, AudioStreamBasicDescription& format)
{
    if (!file)
        return kAudioFileInvalidFileError;
    format = file->hasClientFormat ? file->clientFormat : file->fileFormat;
    return noErr;
}

OSStatus ZRExtAudioFileService::setClientDataFormat(ExtAudioFileRef file, const AudioStreamBasicDescription& format)
{
    if (!file)
        return kAudioFileInvalidFileError;
    if (!isPCM(format) || format.mChannelsPerFrame != file->fileFormat.mChannelsPerFrame)
        return kAudioConverterErr_FormatNotSupported;
    if (file->writing && file->started)
        return kAudioFileOperationNotSupportedError;
    AudioConverterRef converter = nullptr;
    const OSStatus status = file->writing ? ZRAudioConverterService::create(format, file->fileFormat, converter)
                                          : ZRAudioConverterService::create(file->fileFormat, format, converter);
    if (status != noErr)
        return status;
    if (!file->writing) {
        ZRData cookie;
        if (ZRAudioFileService::magicCookie(file->file, cookie) == noErr)
            ZRAudioConverterService::setDecompressionMagicCookie(converter, cookie);
        // The delay is dropped at the client's rate.
        file->skip = int64_t(double(file->table.mPrimingFrames) * format.mSampleRate / file->fileFormat.mSampleRate);
        file->table.mNumberValidFrames
            = int64_t(double(file->table.mNumberValidFrames) * format.mSampleRate / file->fileFormat.mSampleRate + 0.5);
        file->nextPacket = 0;
        file->position = 0;
    } else if (!file->file) {
        // The encoder has chosen the rate the file waited for.
        AudioStreamBasicDescription output {};
        ZRAudioConverterService::outputDescription(converter, output);
        const size_t slash = file->path.find_last_of('/');
        const std::string folder = slash == std::string::npos ? "." : file->path.substr(0, std::max<size_t>(slash, 1));
        if (const OSStatus created
            = ZRAudioFileService::create(folder, file->path.substr(slash + 1), file->type, output, file->file);
            created != noErr) {
            ZRAudioConverterService::dispose(converter);
            return created;
        }
        file->fileFormat = output;
    }
    if (file->converter)
        ZRAudioConverterService::dispose(file->converter);
    file->converter = converter;
    file->clientFormat = format;
    file->hasClientFormat = true;
    return noErr;
}

OSStatus ZRExtAudioFileService::audioFile(ExtAudioFileRef file, AudioFileID& audioFile)
{
    if (!file || !file->file)
        return kAudioFileInvalidFileError;
    audioFile = file->file;
    return noErr;
}

OSStatus ZRExtAudioFileService::audioConverter(ExtAudioFileRef file, AudioConverterRef& converter)
{
    if (!file || !file->converter)
        return kAudioConverterErr_PropertyNotSupported;
    converter = file->converter;
    return noErr;
}
