#include <zrbase/host/audio/ZRAudioFileService.h>

#include <zrbase/host/audio/ZRFFmpegPrivate.h>
#include <zrbase/host/audio/ZRSoundDesignerIIPrivate.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr OSStatus dupFNErr = -48;
constexpr AudioChannelLayoutTag kAudioChannelLayoutTag_UseChannelBitmap = 1U << 16;

struct Container {
    AudioFileTypeID type;
    const char* muxer;
};

// Sound Designer II has no muxer of its own: its data fork goes through the raw writer of its sample size.
constexpr std::array<Container, 11> writableContainers { {
    { kAudioFileWAVEType, "wav" },
    { kAudioFileAIFFType, "aiff" },
    { kAudioFileAIFCType, "aiff" },
    { kAudioFileCAFType, "caf" },
    { kAudioFileM4AType, "ipod" },
    { kAudioFileMPEG4Type, "mp4" },
    { kAudioFileMP3Type, "mp3" },
    { kAudioFileMP2Type, "mp2" },
    { kAudioFileMP1Type, "mp2" },
    { kAudioFileAC3Type, "ac3" },
    { kAudioFileSoundDesigner2Type, nullptr },
} };

// The information-dictionary keys and the names FFmpeg gives the containers' tags (ID3, RIFF INFO, MPEG-4 items,
// Vorbis comments, AIFF's text chunks); the first name of a key is the one written. CAF's information chunk holds
// the dictionary's own keys, which are written as they stand.
constexpr std::array<std::pair<std::string_view, std::string_view>, 12> infoKeys { {
    { kAFInfoDictionary_Title, "title" },
    { kAFInfoDictionary_Artist, "artist" },
    { kAFInfoDictionary_Artist, "author" },
    { kAFInfoDictionary_Album, "album" },
    { kAFInfoDictionary_Genre, "genre" },
    { kAFInfoDictionary_Year, "date" },
    { kAFInfoDictionary_Comments, "comment" },
    { kAFInfoDictionary_Composer, "composer" },
    { kAFInfoDictionary_TrackNumber, "track" },
    { kAFInfoDictionary_Copyright, "copyright" },
    { kAFInfoDictionary_Lyricist, "lyricist" },
    { kAFInfoDictionary_EncodingApplication, "encoder" },
} };

// What FFmpeg reports beside the tags about the container's own structure, which is no tag of the file.
constexpr std::array<std::string_view, 6> structureKeys { "major_brand", "minor_version", "compatible_brands",
    "handler_name", "vendor_id", "language" };

OSStatus statusForErrno(int code) noexcept
{
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return kAudioFileNotFoundError;
    case EACCES:
    case EPERM:
    case EROFS:
        return kAudioFilePermissionsError;
    case EEXIST:
        return dupFNErr;
    default:
        return kAudioFileUnspecifiedError;
    }
}

OSStatus statusForAVError(int error) noexcept
{
    if (error == AVERROR_EOF)
        return kAudioFileEndOfFileError;
    if (error == AVERROR_INVALIDDATA)
        return kAudioFileInvalidFileError;
    if (error == AVERROR_PATCHWELCOME || error == AVERROR(ENOSYS))
        return kAudioFileOperationNotSupportedError;
    if (error < 0 && error > -4096)
        return statusForErrno(-error);
    return kAudioFileUnspecifiedError;
}

// The four-character tag at a byte of the file's first bytes; empty past them.
std::string_view headTag(std::span<const uint8_t> head, size_t at) noexcept
{
    return head.size() >= at + 4 ? std::string_view(reinterpret_cast<const char*>(head.data()) + at, 4)
                                 : std::string_view();
}

// The container type of a demuxer, told apart further by the first bytes where one demuxer reads several.
std::optional<AudioFileTypeID> typeForDemuxer(std::string_view name, std::span<const uint8_t> head, AVCodecID codec)
{
    if (name == "wav")
        return kAudioFileWAVEType;
    if (name == "aiff")
        return headTag(head, 8) == "AIFC" ? kAudioFileAIFCType : kAudioFileAIFFType;
    if (name == "caf")
        return kAudioFileCAFType;
    if (name.starts_with("mov,mp4"))
        return headTag(head, 8) == "M4A " ? kAudioFileM4AType : kAudioFileMPEG4Type;
    if (name == "mp3") {
        if (codec == AV_CODEC_ID_MP1)
            return kAudioFileMP1Type;
        return codec == AV_CODEC_ID_MP2 ? kAudioFileMP2Type : kAudioFileMP3Type;
    }
    if (name == "ac3")
        return kAudioFileAC3Type;
    if (name == "flac" || name == "ogg")
        return kAudioFileUnknownType;
    return std::nullopt;
}

// Whether the first bytes are those of a chunked container, which FFmpeg does not recognise when the file ends
// within its header.
bool startsLikeChunkedContainer(std::span<const uint8_t> head) noexcept
{
    const std::string_view form = headTag(head, 8);
    return ((headTag(head, 0) == "RIFF" || headTag(head, 0) == "RF64") && form == "WAVE")
        || (headTag(head, 0) == "FORM" && (form == "AIFF" || form == "AIFC")) || headTag(head, 0) == "caff";
}

// Input contexts read through a reader of their own, which closing the context leaves open.
struct FormatContextClose {
    void operator()(AVFormatContext* context) const noexcept
    {
        AVIOContext* io = context->pb;
        avformat_close_input(&context);
        avio_closep(&io);
    }
};

} // namespace

struct OpaqueAudioFileID {
    std::string path;
    AudioFileTypeID type = 0;
    AudioStreamBasicDescription format {};
    bool writing = false;

    // Reading through the demuxer: the stream, and the packet the next read of the demuxer gives.
    std::unique_ptr<AVFormatContext, FormatContextClose> input;
    int streamIndex = -1;
    uint64_t nextPacket = 0;
    ZRAVPacket pending;
    // Whether opening read packets to learn what the header left out.
    bool analysed = false;
    // Reading constant packets straight from the file's data.
    int descriptor = -1;
    bool direct = false;
    int64_t dataStart = 0;
    // What a pass over the packets found.
    uint64_t packetCount = 0;
    uint32_t maximumPacketSize = 0;
    uint32_t priming = 0;
    uint32_t remainder = 0;
    int64_t totalFrames = 0;

    // Writing: the muxer, what goes into its header, and the last packet, held back until the next one or the close
    // says whether it ends the file.
    AVFormatContext* output = nullptr;
    bool headerWritten = false;
    ZRDictionary info;
    int64_t nextTimestamp = 0;
    ZRAVPacket held;

    ~OpaqueAudioFileID()
    {
        if (descriptor >= 0)
            ::close(descriptor);
        if (output) {
            avio_closep(&output->pb);
            avformat_free_context(output);
        }
    }

    OSStatus openInput();
    OSStatus scanPackets();
    OSStatus readDirect(int64_t start, uint32_t& ioNumPackets, uint32_t& ioNumBytes, void* buffer,
        AudioStreamPacketDescription* descriptions);
    OSStatus readDemuxed(int64_t start, uint32_t& ioNumPackets, uint32_t& ioNumBytes, void* buffer,
        AudioStreamPacketDescription* descriptions);
    // The next packet of the stream into `pending`; false at the end or on a failure (`status`).
    bool fillPending(OSStatus& status);
    OSStatus writeHeader();
    OSStatus writeHeld(bool last);
};

OSStatus OpaqueAudioFileID::openInput()
{
    input.reset();
    pending.reset();
    nextPacket = 0;
    AVIOContext* io = nullptr;
    if (const int result = avio_open(&io, path.c_str(), AVIO_FLAG_READ); result < 0)
        return statusForAVError(result);
    const AVInputFormat* demuxer = nullptr;
    // No name goes with the bytes, so that the container is known by its contents alone.
    if (av_probe_input_buffer2(io, &demuxer, "", nullptr, 0, 0) < 0 || !demuxer) {
        avio_closep(&io);
        return kAudioFileUnsupportedFileTypeError;
    }
    AVFormatContext* context = avformat_alloc_context();
    if (!context) {
        avio_closep(&io);
        return kAudioFileUnspecifiedError;
    }
    context->pb = io;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    if (const int result = avformat_open_input(&context, "", demuxer, nullptr); result < 0) {
        avio_closep(&io);
        // The container was recognised, so what keeps it from opening is its contents, unless the system says why.
        const OSStatus status = statusForAVError(result);
        return status == kAudioFileUnspecifiedError || status == kAudioFileEndOfFileError ? kAudioFileInvalidFileError
                                                                                          : status;
    }
    input = std::unique_ptr<AVFormatContext, FormatContextClose>(context);
    // Most containers describe their audio in the header (linear PCM completely, compressed formats but for the
    // channel order that the codec's configuration gives); only the others are worth decoding the start of.
    const auto described = [](const AVStream* stream) {
        const AVCodecParameters* parameters = stream->codecpar;
        return parameters->codec_type != AVMEDIA_TYPE_AUDIO
            || (parameters->codec_id != AV_CODEC_ID_NONE && parameters->sample_rate > 0
                && parameters->ch_layout.nb_channels > 0
                && (parameters->ch_layout.order != AV_CHANNEL_ORDER_UNSPEC
                    || av_get_exact_bits_per_sample(parameters->codec_id) > 0));
    };
    analysed = !std::all_of(context->streams, context->streams + context->nb_streams, described);
    if (analysed && avformat_find_stream_info(context, nullptr) < 0)
        return kAudioFileInvalidFileError;
    streamIndex = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (streamIndex < 0)
        return kAudioFileUnsupportedDataFormatError;
    return noErr;
}

bool OpaqueAudioFileID::fillPending(OSStatus& status)
{
    if (pending)
        return true;
    ZRAVPacket packet(av_packet_alloc());
    while (true) {
        const int result = av_read_frame(input.get(), packet.get());
        if (result == AVERROR_EOF)
            return false;
        if (result < 0) {
            status = statusForAVError(result);
            return false;
        }
        if (packet->stream_index == streamIndex && packet->size > 0)
            break;
        av_packet_unref(packet.get());
    }
    pending = std::move(packet);
    return true;
}

OSStatus OpaqueAudioFileID::scanPackets()
{
    // The totals count the frames the decoder makes, from which the delay and padding are then taken. Ogg gives the
    // last packet the duration its page's granule position leaves it, with the padding already off; and Vorbis's
    // first packet only primes the decoder's overlap, making no frames of its own whatever its duration.
    const AVStream* stream = input->streams[streamIndex];
    const bool paddingOffDuration = std::string_view(input->iformat->name) == "ogg";
    const bool primesOnly = stream->codecpar->codec_id == AV_CODEC_ID_VORBIS;
    // The frames of the packets before the last (but Vorbis's first), and whether they differ or are unknown.
    std::optional<int64_t> common;
    bool varies = false;
    bool timed = true;
    int64_t previous = 0;
    OSStatus status = noErr;
    while (fillPending(status)) {
        ++packetCount;
        int64_t frames = av_rescale_q(std::max<int64_t>(pending->duration, 0), stream->time_base,
            AVRational { 1, stream->codecpar->sample_rate });
        if (packetCount > 2 || (packetCount == 2 && !primesOnly)) {
            varies = varies || (common && *common != previous);
            timed = timed && previous > 0;
            common = previous;
        }
        previous = frames;
        maximumPacketSize = std::max(maximumPacketSize, uint32_t(pending->size));
        size_t size = 0;
        if (const uint8_t* skip = av_packet_get_side_data(pending.get(), AV_PKT_DATA_SKIP_SAMPLES, &size);
            skip && size >= 8) {
            priming += skip[0] | (skip[1] << 8) | (skip[2] << 16) | (uint32_t(skip[3]) << 24);
            const uint32_t padding = skip[4] | (skip[5] << 8) | (skip[6] << 16) | (uint32_t(skip[7]) << 24);
            remainder += padding;
            if (paddingOffDuration)
                frames += padding;
        }
        totalFrames += primesOnly && packetCount == 1 ? 0 : frames;
        pending.reset();
    }
    // Where the container gives every packet its frames, the packets say how many a packet holds, whatever the
    // codec's header suggests (Opus from 2.5 to 60 ms); packets of varying frames have none to give.
    if (common && timed && format.mFramesPerPacket > 0)
        format.mFramesPerPacket = varies ? 0 : uint32_t(*common);
    return status;
}

OSStatus OpaqueAudioFileID::readDirect(int64_t start, uint32_t& ioNumPackets, uint32_t& ioNumBytes, void* buffer,
    AudioStreamPacketDescription* descriptions)
{
    const uint32_t size = format.mBytesPerPacket;
    const uint64_t available = uint64_t(start) < packetCount ? packetCount - uint64_t(start) : 0;
    const uint32_t count = uint32_t(std::min<uint64_t>({ ioNumPackets, available, ioNumBytes / size }));
    size_t done = 0;
    const size_t wanted = size_t(count) * size;
    while (done < wanted) {
        const ssize_t got = pread(
            descriptor, static_cast<uint8_t*>(buffer) + done, wanted - done, off_t(dataStart + start * size + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return kAudioFileUnspecifiedError;
        if (got == 0)
            break;
        done += size_t(got);
    }
    ioNumPackets = uint32_t(done / size);
    ioNumBytes = ioNumPackets * size;
    for (uint32_t i = 0; descriptions && i < ioNumPackets; ++i)
        descriptions[i] = { int64_t(i) * size, 0, size };
    return noErr;
}

OSStatus OpaqueAudioFileID::readDemuxed(int64_t start, uint32_t& ioNumPackets, uint32_t& ioNumBytes, void* buffer,
    AudioStreamPacketDescription* descriptions)
{
    OSStatus status = noErr;
    if (uint64_t(start) < nextPacket)
        status = openInput();
    while (status == noErr && nextPacket < uint64_t(start) && fillPending(status)) {
        pending.reset();
        ++nextPacket;
    }
    uint32_t packets = 0;
    uint32_t bytes = 0;
    while (
        status == noErr && packets < ioNumPackets && nextPacket == uint64_t(start) + packets && fillPending(status)) {
        const uint32_t size = uint32_t(pending->size);
        if (size > ioNumBytes - bytes) {
            if (packets == 0)
                status = kAudioFileBadPropertySizeError;
            break;
        }
        std::memcpy(static_cast<uint8_t*>(buffer) + bytes, pending->data, size);
        if (descriptions) {
            const uint32_t frames = format.mFramesPerPacket ? 0 : uint32_t(std::max<int64_t>(pending->duration, 0));
            descriptions[packets] = { bytes, frames, size };
        }
        bytes += size;
        ++packets;
        ++nextPacket;
        pending.reset();
    }
    if (status != noErr)
        return status;
    ioNumPackets = packets;
    ioNumBytes = bytes;
    return noErr;
}

OSStatus ZRAudioFileService::open(const std::string& path, AudioFileID& file)
{
    ZRQuietFFmpeg();
    struct stat info { };
    if (::stat(path.c_str(), &info) != 0)
        return statusForErrno(errno);
    if (!S_ISREG(info.st_mode))
        return kAudioFileInvalidFileError;
    auto opened = std::make_unique<OpaqueAudioFileID>();
    opened->path = path;
    opened->descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened->descriptor < 0)
        return statusForErrno(errno);
    // The resource fork, not the name or the bytes, makes a Sound Designer II file: PCM from its first byte.
    std::optional<AudioStreamBasicDescription> described;
    if (const OSStatus status = ZRSoundDesignerIIFormatOfFile(path, described); status != noErr)
        return status;
    if (described) {
        opened->type = kAudioFileSoundDesigner2Type;
        opened->format = *described;
        opened->direct = true;
        opened->packetCount = uint64_t(info.st_size) / described->mBytesPerPacket;
        opened->totalFrames = int64_t(opened->packetCount);
        opened->maximumPacketSize = opened->packetCount > 0 ? described->mBytesPerPacket : 0;
        file = opened.release();
        return noErr;
    }
    std::array<uint8_t, 12> head {};
    const ssize_t headSize = pread(opened->descriptor, head.data(), head.size(), 0);
    if (headSize <= 0)
        return kAudioFileInvalidFileError;
    if (const OSStatus status = opened->openInput(); status != noErr) {
        const bool cut = status == kAudioFileUnsupportedFileTypeError
            && startsLikeChunkedContainer({ head.data(), size_t(headSize) });
        return cut ? kAudioFileInvalidFileError : status;
    }
    const AVStream* stream = opened->input->streams[opened->streamIndex];
    const AVCodecParameters& parameters = *stream->codecpar;
    const auto type
        = typeForDemuxer(opened->input->iformat->name, { head.data(), size_t(headSize) }, parameters.codec_id);
    if (!type)
        return kAudioFileUnsupportedFileTypeError;
    opened->type = *type;
    if (!ZRDescriptionForCodecParameters(parameters, opened->format))
        return kAudioFileUnsupportedDataFormatError;
    if (opened->format.mSampleRate <= 0 || opened->format.mChannelsPerFrame == 0)
        return kAudioFileInvalidFileError;
    const bool chunked = *type == kAudioFileWAVEType || *type == kAudioFileAIFFType || *type == kAudioFileAIFCType
        || *type == kAudioFileCAFType;
    if (chunked && opened->format.mBytesPerPacket > 0 && opened->format.mFramesPerPacket > 0) {
        // Constant packets lie one after another from the first one on; the header's length is believed as far as
        // the file reaches.
        // The data starts where the demuxer left its header, when it reads packets of the size read here (it reads
        // none of a size it does not know). Reading the first packet to learn that would have FFmpeg look through
        // the start of the data for other codecs hidden in PCM, which costs more than reading the whole file.
        OSStatus status = noErr;
        opened->direct = true;
        const bool headerEndsAtData
            = !opened->analysed && uint32_t(parameters.block_align) == opened->format.mBytesPerPacket;
        opened->dataStart = headerEndsAtData ? avio_tell(opened->input->pb)
            : opened->fillPending(status)    ? opened->pending->pos
                                             : -1;
        if (opened->dataStart < 0 || opened->dataStart > info.st_size)
            opened->dataStart = info.st_size;
        const uint64_t inFile = uint64_t(info.st_size - opened->dataStart) / opened->format.mBytesPerPacket;
        uint64_t declared = inFile;
        if (stream->duration > 0 && stream->duration != AV_NOPTS_VALUE) {
            declared = uint64_t(av_rescale_q(
                           stream->duration, stream->time_base, AVRational { 1, int(opened->format.mSampleRate) }))
                / opened->format.mFramesPerPacket;
        }
        opened->packetCount = std::min(declared, inFile);
        opened->totalFrames = int64_t(opened->packetCount * opened->format.mFramesPerPacket);
        // The largest packet the file holds: none when not one whole packet is there, so that a header claiming
        // gigabytes per packet over a few bytes of data never makes a reader size its buffers by the claim.
        opened->maximumPacketSize = opened->packetCount > 0 ? opened->format.mBytesPerPacket : 0;
        // The demuxer stays open for the tags and the channel layout; the packets come from the file itself.
        opened->pending.reset();
    } else {
        if (const OSStatus status = opened->scanPackets(); status != noErr)
            return status;
        // Containers without packet durations (CAF) hold whole packets.
        if (opened->totalFrames == 0)
            opened->totalFrames = int64_t(opened->packetCount * opened->format.mFramesPerPacket);
        if (const OSStatus status = opened->openInput(); status != noErr)
            return status;
        ::close(opened->descriptor);
        opened->descriptor = -1;
    }
    file = opened.release();
    return noErr;
}

OSStatus ZRAudioFileService::create(const std::string& folder, const std::string& name, AudioFileTypeID type,
    const AudioStreamBasicDescription& format, AudioFileID& file)
{
    ZRQuietFFmpeg();
    const auto container = std::find_if(writableContainers.begin(), writableContainers.end(),
        [&](const Container& candidate) { return candidate.type == type; });
    if (container == writableContainers.end())
        return kAudioFileUnsupportedFileTypeError;
    const AVCodecID codec = ZRCodecIDForDescription(format);
    const char* muxerName = container->muxer ? container->muxer : ZRSoundDesignerIIMuxer(format);
    const AVOutputFormat* muxer = muxerName ? av_guess_format(muxerName, nullptr, nullptr) : nullptr;
    // Raw MPEG audio's writer answers the question for pictures only; its own codec it takes.
    if (codec == AV_CODEC_ID_NONE || !muxer
        || (avformat_query_codec(muxer, codec, FF_COMPLIANCE_NORMAL) != 1 && muxer->audio_codec != codec)
        || (format.mFormatFlags & kAudioFormatFlagIsNonInterleaved) || format.mChannelsPerFrame == 0
        || format.mSampleRate < 1 || format.mSampleRate > INT_MAX)
        return kAudioFileUnsupportedDataFormatError;
    // FFmpeg's CAF writer takes no AAC.
    if (type == kAudioFileCAFType && codec == AV_CODEC_ID_AAC)
        return kAudioFileUnsupportedDataFormatError;
    if (type == kAudioFileAIFFType && format.mFormatID == kAudioFormatLinearPCM
        && !(format.mFormatFlags & kAudioFormatFlagIsBigEndian) && format.mBitsPerChannel > 8)
        return kAudioFileUnsupportedDataFormatError;
    struct stat info { };
    if (::stat(folder.c_str(), &info) != 0)
        return statusForErrno(errno);
    const std::string path = folder + (folder.ends_with('/') ? "" : "/") + name;
    if (::lstat(path.c_str(), &info) == 0)
        return dupFNErr;

    auto created = std::make_unique<OpaqueAudioFileID>();
    created->path = path;
    created->type = type;
    created->format = format;
    created->writing = true;
    if (avformat_alloc_output_context2(&created->output, muxer, nullptr, path.c_str()) < 0)
        return kAudioFileUnspecifiedError;
    AVStream* stream = avformat_new_stream(created->output, nullptr);
    if (!stream)
        return kAudioFileUnspecifiedError;
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = codec;
    parameters.sample_rate = int(format.mSampleRate);
    av_channel_layout_default(&parameters.ch_layout, int(format.mChannelsPerFrame));
    parameters.frame_size = int(format.mFramesPerPacket);
    if (format.mFormatID == kAudioFormatLinearPCM) {
        parameters.bits_per_coded_sample = int(format.mBitsPerChannel);
        parameters.block_align = int(format.mBitsPerChannel / 8 * format.mChannelsPerFrame);
        parameters.bit_rate = int64_t(parameters.block_align) * 8 * parameters.sample_rate;
    } else if (format.mFormatID == kAudioFormatAppleLossless) {
        static constexpr std::array<int, 5> depths { 0, 16, 20, 24, 32 };
        parameters.bits_per_raw_sample = format.mFormatFlags < depths.size() ? depths[format.mFormatFlags] : 0;
    }
    stream->time_base = AVRational { 1, parameters.sample_rate };
    if (const int result = avio_open(&created->output->pb, path.c_str(), AVIO_FLAG_WRITE); result < 0)
        return statusForAVError(result);
    file = created.release();
    return noErr;
}

OSStatus OpaqueAudioFileID::writeHeader()
{
    AVDictionary* metadata = nullptr;
    for (const auto& [key, value] : info) {
        const std::string_view name = key;
        std::string_view tag = name;
        const auto known
            = std::find_if(infoKeys.begin(), infoKeys.end(), [name](const auto& entry) { return entry.first == name; });
        if (known != infoKeys.end() && type != kAudioFileCAFType)
            tag = known->second;
        if (key != kAFInfoDictionary_ApproximateDurationInSeconds)
            av_dict_set(&metadata, std::string(tag).c_str(), value.stringValue().c_str(), 0);
    }
    av_dict_free(&output->metadata);
    output->metadata = metadata;
    const AVCodecParameters& parameters = *output->streams[0]->codecpar;
    // MPEG-4 movies count in milliseconds unless told otherwise, which would round the edit list that keeps the
    // encoder's padding: they count in frames here.
    AVDictionary* options = nullptr;
    if (type == kAudioFileM4AType || type == kAudioFileMPEG4Type)
        av_dict_set_int(&options, "movie_timescale", parameters.sample_rate, 0);
    // AIFF's own text chunks hold a title, an author, a copyright and a comment; its ID3 chunk holds every tag.
    if ((type == kAudioFileAIFFType || type == kAudioFileAIFCType) && metadata)
        av_dict_set(&options, "write_id3v2", "1", 0);
    const int result = avformat_write_header(output, &options);
    av_dict_free(&options);
    if (result < 0)
        return result == AVERROR(EINVAL) ? kAudioFileUnsupportedDataFormatError : statusForAVError(result);
    headerWritten = true;
    return noErr;
}

OSStatus OpaqueAudioFileID::writeHeld(bool last)
{
    if (!held)
        return noErr;
    if (last && remainder > 0) {
        // The MP3 encoder tag counts the padding back from the end of the file, so it takes all of it even when the
        // encoder's last packet holds nothing but padding; MPEG-4's edit list ends within the last packet.
        const uint32_t trimmed = uint32_t(std::min<int64_t>(remainder, held->duration));
        const uint32_t padding = type == kAudioFileMP3Type ? remainder : trimmed;
        held->duration -= trimmed;
        if (uint8_t* side = av_packet_new_side_data(held.get(), AV_PKT_DATA_SKIP_SAMPLES, 10)) {
            std::memset(side, 0, 10);
            for (int i = 0; i < 4; ++i)
                side[4 + i] = uint8_t(padding >> (8 * i));
        }
    }
    const int result = av_write_frame(output, held.get());
    held.reset();
    return result < 0 ? statusForAVError(result) : noErr;
}

OSStatus ZRAudioFileService::close(AudioFileID file)
{
    if (!file)
        return kAudioFileInvalidFileError;
    std::unique_ptr<OpaqueAudioFileID> closing(file);
    if (!closing->writing)
        return noErr;
    OSStatus status = closing->headerWritten ? noErr : closing->writeHeader();
    if (status == noErr)
        status = closing->writeHeld(true);
    if (status == noErr && av_write_trailer(closing->output) < 0)
        status = kAudioFileUnspecifiedError;
    if (int failure = 0; status == noErr && closing->type == kAudioFileSoundDesigner2Type
        && !ZRSoundDesignerIIWriteFork(closing->path, closing->format, failure))
        status = statusForErrno(failure);
    return status;
}

OSStatus ZRAudioFileService::readPackets(AudioFileID file, int64_t startPacket, uint32_t& ioNumPackets,
    uint32_t& ioNumBytes, void* buffer, AudioStreamPacketDescription* descriptions)
{
    if (!file || file->writing)
        return kAudioFileOperationNotSupportedError;
    if (startPacket < 0)
        return kAudioFileInvalidPacketOffsetError;
    if (uint64_t(startPacket) >= file->packetCount || ioNumPackets == 0) {
        ioNumPackets = 0;
        ioNumBytes = 0;
        return noErr;
    }
    if (!buffer)
        return kAudioFileBadPropertySizeError;
    return file->direct ? file->readDirect(startPacket, ioNumPackets, ioNumBytes, buffer, descriptions)
                        : file->readDemuxed(startPacket, ioNumPackets, ioNumBytes, buffer, descriptions);
}

OSStatus ZRAudioFileService::writePackets(AudioFileID file, int64_t startPacket, uint32_t& ioNumPackets,
    uint32_t numBytes, const void* buffer, const AudioStreamPacketDescription* descriptions)
{
    if (!file || !file->writing)
        return kAudioFilePermissionsError;
    if (startPacket < 0 || uint64_t(startPacket) != file->packetCount)
        return kAudioFileInvalidPacketOffsetError;
    const AudioStreamBasicDescription& format = file->format;
    if (!descriptions && format.mBytesPerPacket == 0)
        return kAudioFileInvalidPacketOffsetError;
    if (!file->headerWritten) {
        if (const OSStatus status = file->writeHeader(); status != noErr)
            return status;
    }
    const AVRational timeBase = file->output->streams[0]->time_base;
    const auto timestamp = [&](int64_t frames) {
        return av_rescale_q(frames, AVRational { 1, int(format.mSampleRate) }, timeBase);
    };
    // Constant packets go to the muxer in one run; variable ones one by one, with their frame counts.
    const uint32_t runs = descriptions ? ioNumPackets : (ioNumPackets > 0 ? 1 : 0);
    for (uint32_t i = 0; i < runs; ++i) {
        const int64_t offset = descriptions ? descriptions[i].mStartOffset : 0;
        const uint32_t size = descriptions ? descriptions[i].mDataByteSize : ioNumPackets * format.mBytesPerPacket;
        if (offset < 0 || uint64_t(offset) + size > numBytes)
            return kAudioFileInvalidPacketOffsetError;
        const uint32_t frames = descriptions && descriptions[i].mVariableFramesInPacket
            ? descriptions[i].mVariableFramesInPacket
            : (descriptions ? 1 : ioNumPackets) * format.mFramesPerPacket;
        ZRAVPacket packet(av_packet_alloc());
        if (!packet || av_new_packet(packet.get(), int(size)) < 0)
            return kAudioFileUnspecifiedError;
        std::memcpy(packet->data, static_cast<const uint8_t*>(buffer) + offset, size);
        // MPEG-4 learns the delay from timestamps that start before zero; MP3 from the header's encoder tag.
        const bool shifted = file->type == kAudioFileM4AType || file->type == kAudioFileMPEG4Type;
        packet->pts = packet->dts = timestamp(file->nextTimestamp - (shifted ? int64_t(file->priming) : 0));
        packet->duration = timestamp(file->nextTimestamp + frames) - timestamp(file->nextTimestamp);
        file->nextTimestamp += frames;
        // The MP3 writer takes the delay for its encoder tag from the first packet's frames to skip.
        if (file->packetCount == 0 && file->priming > 0 && file->type == kAudioFileMP3Type) {
            if (uint8_t* side = av_packet_new_side_data(packet.get(), AV_PKT_DATA_SKIP_SAMPLES, 10)) {
                std::memset(side, 0, 10);
                for (int shift = 0; shift < 4; ++shift)
                    side[shift] = uint8_t(file->priming >> (8 * shift));
            }
        }
        if (const OSStatus status = file->writeHeld(false); status != noErr)
            return status;
        file->held = std::move(packet);
        file->packetCount += descriptions ? 1 : ioNumPackets;
        file->maximumPacketSize = std::max(file->maximumPacketSize, descriptions ? size : format.mBytesPerPacket);
    }
    return noErr;
}

OSStatus ZRAudioFileService::dataFormat(AudioFileID file, AudioStreamBasicDescription& format)
{
    if (!file)
        return kAudioFileInvalidFileError;
    format = file->format;
    return noErr;
}

OSStatus ZRAudioFileService::fileFormat(AudioFileID file, AudioFileTypeID& type)
{
    if (!file)
        return kAudioFileInvalidFileError;
    type = file->type;
    return noErr;
}

OSStatus ZRAudioFileService::packetCount(AudioFileID file, uint64_t& count)
{
    if (!file)
        return kAudioFileInvalidFileError;
    count = file->packetCount;
    return noErr;
}

OSStatus ZRAudioFileService::maximumPacketSize(AudioFileID file, uint32_t& size)
{
    if (!file)
        return kAudioFileInvalidFileError;
    size = file->maximumPacketSize;
    return noErr;
}

OSStatus ZRAudioFileService::packetToFrame(AudioFileID file, AudioFramePacketTranslation& translation)
{
    if (!file)
        return kAudioFileInvalidFileError;
    if (file->format.mFramesPerPacket == 0 || translation.mPacket < 0)
        return kAudioFileUnsupportedPropertyError;
    translation.mFrame = translation.mPacket * file->format.mFramesPerPacket;
    translation.mFrameOffsetInPacket = 0;
    return noErr;
}

OSStatus ZRAudioFileService::frameToPacket(AudioFileID file, AudioFramePacketTranslation& translation)
{
    if (!file)
        return kAudioFileInvalidFileError;
    if (file->format.mFramesPerPacket == 0 || translation.mFrame < 0)
        return kAudioFileUnsupportedPropertyError;
    translation.mPacket = translation.mFrame / file->format.mFramesPerPacket;
    translation.mFrameOffsetInPacket = uint32_t(translation.mFrame % file->format.mFramesPerPacket);
    return noErr;
}

OSStatus ZRAudioFileService::magicCookie(AudioFileID file, ZRData& cookie)
{
    if (!file)
        return kAudioFileInvalidFileError;
    const AVCodecParameters* parameters = file->writing ? file->output->streams[0]->codecpar
        : file->input                                   ? file->input->streams[file->streamIndex]->codecpar
                                                        : nullptr;
    if (!parameters || parameters->extradata_size <= 0)
        return kAudioFileUnsupportedPropertyError;
    cookie = ZRMagicCookieForExtradata(
        parameters->codec_id, { parameters->extradata, size_t(parameters->extradata_size) });
    return noErr;
}

OSStatus ZRAudioFileService::setMagicCookie(AudioFileID file, const ZRData& cookie)
{
    if (!file || !file->writing)
        return kAudioFilePermissionsError;
    if (file->headerWritten)
        return kAudioFileOperationNotSupportedError;
    AVCodecParameters& parameters = *file->output->streams[0]->codecpar;
    const ZRData extradata = ZRExtradataForMagicCookie(parameters.codec_id, cookie);
    av_freep(&parameters.extradata);
    parameters.extradata_size = 0;
    if (extradata.empty())
        return noErr;
    parameters.extradata = static_cast<uint8_t*>(av_mallocz(extradata.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!parameters.extradata)
        return kAudioFileUnspecifiedError;
    std::memcpy(parameters.extradata, extradata.data(), extradata.size());
    parameters.extradata_size = int(extradata.size());
    return noErr;
}

OSStatus ZRAudioFileService::infoDictionary(AudioFileID file, ZRDictionary& info)
{
    if (!file)
        return kAudioFileInvalidFileError;
    if (file->writing) {
        info = file->info;
        return noErr;
    }
    if (!file->input)
        return kAudioFileUnsupportedPropertyError;
    ZRDictionary result;
    for (const AVDictionary* metadata : { file->input->metadata, file->input->streams[file->streamIndex]->metadata }) {
        const AVDictionaryEntry* entry = nullptr;
        while ((entry = av_dict_get(metadata, "", entry, AV_DICT_IGNORE_SUFFIX))) {
            std::string key = entry->key;
            std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return char(std::tolower(c)); });
            if (std::find(structureKeys.begin(), structureKeys.end(), key) != structureKeys.end())
                continue;
            const auto known = std::find_if(
                infoKeys.begin(), infoKeys.end(), [&](const auto& known) { return known.second == key; });
            result.emplace(known != infoKeys.end() ? std::string(known->first) : key, std::string(entry->value));
        }
    }
    AudioFilePacketTableInfo table {};
    ZRAudioFileService::packetTableInfo(file, table);
    if (table.mNumberValidFrames > 0) {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.3f", double(table.mNumberValidFrames) / file->format.mSampleRate);
        result.emplace(kAFInfoDictionary_ApproximateDurationInSeconds, std::string(seconds));
    }
    info = std::move(result);
    return noErr;
}

OSStatus ZRAudioFileService::setInfoDictionary(AudioFileID file, const ZRDictionary& info)
{
    if (!file || !file->writing)
        return kAudioFilePermissionsError;
    if (file->headerWritten)
        return kAudioFileOperationNotSupportedError;
    file->info = info;
    return noErr;
}

OSStatus ZRAudioFileService::channelLayout(AudioFileID file, ZRData& layout)
{
    if (!file)
        return kAudioFileInvalidFileError;
    const AVCodecParameters* parameters = file->writing ? file->output->streams[0]->codecpar
        : file->input                                   ? file->input->streams[file->streamIndex]->codecpar
                                                        : nullptr;
    if (!parameters || parameters->ch_layout.order != AV_CHANNEL_ORDER_NATIVE)
        return kAudioFileUnsupportedPropertyError;
    // FFmpeg's channel bits are the WAVE channel mask's, which are the channel bitmap's.
    AudioChannelLayout header {};
    header.mChannelLayoutTag = kAudioChannelLayoutTag_UseChannelBitmap;
    header.mChannelBitmap = uint32_t(parameters->ch_layout.u.mask);
    layout.assign(ZRAudioChannelLayoutSize(0), 0);
    std::memcpy(layout.data(), &header, layout.size());
    return noErr;
}

OSStatus ZRAudioFileService::packetTableInfo(AudioFileID file, AudioFilePacketTableInfo& info)
{
    if (!file)
        return kAudioFileInvalidFileError;
    const int64_t frames = file->writing ? file->nextTimestamp : file->totalFrames;
    info.mPrimingFrames = int32_t(file->priming);
    info.mRemainderFrames = int32_t(file->remainder);
    info.mNumberValidFrames = std::max<int64_t>(frames - file->priming - file->remainder, 0);
    return noErr;
}

OSStatus ZRAudioFileService::setPacketTableInfo(AudioFileID file, const AudioFilePacketTableInfo& info)
{
    if (!file || !file->writing)
        return kAudioFilePermissionsError;
    if (info.mPrimingFrames < 0 || info.mRemainderFrames < 0)
        return kAudioFileInvalidPacketOffsetError;
    if (file->headerWritten && uint32_t(info.mPrimingFrames) != file->priming)
        return kAudioFileOperationNotSupportedError;
    file->priming = uint32_t(info.mPrimingFrames);
    file->remainder = uint32_t(info.mRemainderFrames);
    return noErr;
}
