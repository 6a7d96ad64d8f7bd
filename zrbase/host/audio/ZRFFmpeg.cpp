#include <zrbase/host/audio/ZRFFmpegPrivate.h>

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <mutex>

namespace {

struct PCMCodec {
    AVCodecID codec;
    uint32_t bits;
    bool isFloat;
    bool isSigned;
    bool isBigEndian;
};

constexpr std::array<PCMCodec, 18> pcmCodecs { {
    { AV_CODEC_ID_PCM_S8, 8, false, true, false },
    { AV_CODEC_ID_PCM_U8, 8, false, false, false },
    { AV_CODEC_ID_PCM_S16LE, 16, false, true, false },
    { AV_CODEC_ID_PCM_S16BE, 16, false, true, true },
    { AV_CODEC_ID_PCM_U16LE, 16, false, false, false },
    { AV_CODEC_ID_PCM_U16BE, 16, false, false, true },
    { AV_CODEC_ID_PCM_S24LE, 24, false, true, false },
    { AV_CODEC_ID_PCM_S24BE, 24, false, true, true },
    { AV_CODEC_ID_PCM_U24LE, 24, false, false, false },
    { AV_CODEC_ID_PCM_U24BE, 24, false, false, true },
    { AV_CODEC_ID_PCM_S32LE, 32, false, true, false },
    { AV_CODEC_ID_PCM_S32BE, 32, false, true, true },
    { AV_CODEC_ID_PCM_S64LE, 64, false, true, false },
    { AV_CODEC_ID_PCM_S64BE, 64, false, true, true },
    { AV_CODEC_ID_PCM_F32LE, 32, true, true, false },
    { AV_CODEC_ID_PCM_F32BE, 32, true, true, true },
    { AV_CODEC_ID_PCM_F64LE, 64, true, true, false },
    { AV_CODEC_ID_PCM_F64BE, 64, true, true, true },
} };

struct CompressedCodec {
    AVCodecID codec;
    AudioFormatID format;
};

constexpr std::array<CompressedCodec, 12> compressedCodecs { {
    { AV_CODEC_ID_AAC, kAudioFormatMPEG4AAC },
    { AV_CODEC_ID_ALAC, kAudioFormatAppleLossless },
    { AV_CODEC_ID_MP3, kAudioFormatMPEGLayer3 },
    { AV_CODEC_ID_MP2, kAudioFormatMPEGLayer2 },
    { AV_CODEC_ID_MP1, kAudioFormatMPEGLayer1 },
    { AV_CODEC_ID_AC3, kAudioFormatAC3 },
    { AV_CODEC_ID_PCM_MULAW, kAudioFormatULaw },
    { AV_CODEC_ID_PCM_ALAW, kAudioFormatALaw },
    { AV_CODEC_ID_ADPCM_IMA_QT, kAudioFormatAppleIMA4 },
    { AV_CODEC_ID_FLAC, kAudioFormatFLAC },
    { AV_CODEC_ID_VORBIS, kAudioFormatVorbis },
    { AV_CODEC_ID_OPUS, kAudioFormatOpus },
} };

uint32_t readBigEndian32(std::span<const uint8_t> bytes, size_t at) noexcept
{
    return (uint32_t(bytes[at]) << 24) | (uint32_t(bytes[at + 1]) << 16) | (uint32_t(bytes[at + 2]) << 8)
        | uint32_t(bytes[at + 3]);
}

// The default frames per packet of a compressed codec when the stream does not say.
uint32_t framesPerPacket(const AVCodecParameters& parameters) noexcept
{
    switch (parameters.codec_id) {
    case AV_CODEC_ID_AAC:
        return 1024;
    case AV_CODEC_ID_MP3:
        return parameters.sample_rate > 0 && parameters.sample_rate < 32000 ? 576 : 1152;
    case AV_CODEC_ID_MP2:
        return 1152;
    case AV_CODEC_ID_MP1:
        return 384;
    case AV_CODEC_ID_AC3:
        return 1536;
    case AV_CODEC_ID_ALAC:
        // The 'alac' atom: size, tag, version and flags, then the frame length.
        if (parameters.extradata_size >= 16)
            return readBigEndian32({ parameters.extradata, size_t(parameters.extradata_size) }, 12);
        return 4096;
    case AV_CODEC_ID_OPUS:
        return 960;
    case AV_CODEC_ID_PCM_MULAW:
    case AV_CODEC_ID_PCM_ALAW:
        return 1;
    case AV_CODEC_ID_ADPCM_IMA_QT:
        return 64;
    default:
        return 0;
    }
}

// An MPEG-4 descriptor: the tag and a length in 7-bit groups, written here always in four bytes.
void appendDescriptor(ZRData& out, uint8_t tag, const ZRData& body)
{
    out.push_back(tag);
    const size_t size = body.size();
    out.push_back(uint8_t(0x80 | ((size >> 21) & 0x7F)));
    out.push_back(uint8_t(0x80 | ((size >> 14) & 0x7F)));
    out.push_back(uint8_t(0x80 | ((size >> 7) & 0x7F)));
    out.push_back(uint8_t(size & 0x7F));
    out.insert(out.end(), body.begin(), body.end());
}

// The decoder-specific information inside descriptors starting at `at`: the payload of tag 5, found through the
// elementary-stream (3) and decoder-configuration (4) descriptors. Empty when the bytes hold none.
std::span<const uint8_t> decoderSpecificInfo(std::span<const uint8_t> bytes, int depth = 0)
{
    size_t at = 0;
    while (depth < 4 && at + 2 <= bytes.size()) {
        const uint8_t tag = bytes[at++];
        size_t length = 0;
        for (int i = 0; i < 4 && at < bytes.size(); ++i) {
            const uint8_t byte = bytes[at++];
            length = (length << 7) | (byte & 0x7F);
            if ((byte & 0x80) == 0)
                break;
        }
        if (length > bytes.size() - at)
            return {};
        const std::span<const uint8_t> body = bytes.subspan(at, length);
        if (tag == 5)
            return body;
        size_t skip = 0;
        if (tag == 3 && body.size() >= 3) {
            const uint8_t flags = body[2];
            skip = 3 + ((flags & 0x80) ? 2 : 0) + ((flags & 0x20) ? 2 : 0);
            if ((flags & 0x40) && skip < body.size())
                skip += 1 + body[skip];
        } else if (tag == 4) {
            skip = 13;
        }
        if ((tag == 3 || tag == 4) && skip <= body.size()) {
            const std::span<const uint8_t> inner = decoderSpecificInfo(body.subspan(skip), depth + 1);
            if (!inner.empty())
                return inner;
        }
        at += length;
    }
    return {};
}

} // namespace

AVCodecID ZRCodecIDForDescription(const AudioStreamBasicDescription& format) noexcept
{
    if (format.mFormatID == kAudioFormatLinearPCM) {
        const bool isFloat = format.mFormatFlags & kAudioFormatFlagIsFloat;
        const bool isSigned = isFloat || (format.mFormatFlags & kAudioFormatFlagIsSignedInteger);
        const bool isBigEndian = format.mFormatFlags & kAudioFormatFlagIsBigEndian;
        const bool nonInterleaved = format.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
        const uint32_t samples = nonInterleaved ? 1 : format.mChannelsPerFrame;
        for (const PCMCodec& pcm : pcmCodecs) {
            if (pcm.bits == format.mBitsPerChannel && pcm.isFloat == isFloat && pcm.isSigned == isSigned
                && (pcm.bits == 8 || pcm.isBigEndian == isBigEndian)
                && (format.mBytesPerFrame == 0 || format.mBytesPerFrame == pcm.bits / 8 * samples))
                return pcm.codec;
        }
        return AV_CODEC_ID_NONE;
    }
    for (const CompressedCodec& compressed : compressedCodecs) {
        if (compressed.format == format.mFormatID)
            return compressed.codec;
    }
    return AV_CODEC_ID_NONE;
}

bool ZRDescriptionForCodecParameters(const AVCodecParameters& parameters, AudioStreamBasicDescription& format) noexcept
{
    AudioStreamBasicDescription result {};
    result.mSampleRate = parameters.sample_rate;
    result.mChannelsPerFrame = uint32_t(std::max(parameters.ch_layout.nb_channels, 0));
    for (const PCMCodec& pcm : pcmCodecs) {
        if (pcm.codec != parameters.codec_id)
            continue;
        result.mFormatID = kAudioFormatLinearPCM;
        result.mFormatFlags = kAudioFormatFlagIsPacked | (pcm.isFloat ? kAudioFormatFlagIsFloat : 0)
            | (pcm.isSigned && !pcm.isFloat ? kAudioFormatFlagIsSignedInteger : 0)
            | (pcm.isBigEndian ? kAudioFormatFlagIsBigEndian : 0);
        result.mBitsPerChannel = pcm.bits;
        result.mBytesPerFrame = pcm.bits / 8 * result.mChannelsPerFrame;
        result.mBytesPerPacket = result.mBytesPerFrame;
        result.mFramesPerPacket = 1;
        format = result;
        return true;
    }
    for (const CompressedCodec& compressed : compressedCodecs) {
        if (compressed.codec != parameters.codec_id)
            continue;
        result.mFormatID = compressed.format;
        result.mFramesPerPacket = parameters.frame_size > 0 && compressed.codec != AV_CODEC_ID_ALAC
            ? uint32_t(parameters.frame_size)
            : framesPerPacket(parameters);
        switch (compressed.codec) {
        case AV_CODEC_ID_PCM_MULAW:
        case AV_CODEC_ID_PCM_ALAW:
            result.mBitsPerChannel = 8;
            result.mBytesPerFrame = result.mChannelsPerFrame;
            result.mBytesPerPacket = result.mChannelsPerFrame;
            break;
        case AV_CODEC_ID_ADPCM_IMA_QT:
            result.mBytesPerPacket = 34 * result.mChannelsPerFrame;
            break;
        case AV_CODEC_ID_ALAC:
            switch (parameters.bits_per_raw_sample) {
            case 16:
                result.mFormatFlags = 1;
                break;
            case 20:
                result.mFormatFlags = 2;
                break;
            case 24:
                result.mFormatFlags = 3;
                break;
            case 32:
                result.mFormatFlags = 4;
                break;
            default:
                break;
            }
            break;
        default:
            break;
        }
        format = result;
        return true;
    }
    return false;
}

ZRData ZRMagicCookieForExtradata(AVCodecID codec, std::span<const uint8_t> extradata)
{
    if (codec != AV_CODEC_ID_AAC || extradata.empty())
        return ZRData(extradata.begin(), extradata.end());
    ZRData decoderConfig { 0x40, 0x15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 };
    appendDescriptor(decoderConfig, 5, ZRData(extradata.begin(), extradata.end()));
    ZRData elementaryStream { 0, 0, 0 };
    appendDescriptor(elementaryStream, 4, decoderConfig);
    appendDescriptor(elementaryStream, 6, ZRData { 2 });
    ZRData cookie;
    appendDescriptor(cookie, 3, elementaryStream);
    return cookie;
}

ZRData ZRExtradataForMagicCookie(AVCodecID codec, std::span<const uint8_t> cookie)
{
    if (codec != AV_CODEC_ID_AAC)
        return ZRData(cookie.begin(), cookie.end());
    // The descriptor may follow the four bytes of version and flags of a whole 'esds' atom body.
    std::span<const uint8_t> info = decoderSpecificInfo(cookie);
    if (info.empty() && cookie.size() > 4)
        info = decoderSpecificInfo(cookie.subspan(4));
    return ZRData(info.begin(), info.end());
}

void ZRQuietFFmpeg()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_FATAL); });
}
