#pragma once

// What the audio file and converter services share about FFmpeg: codec identities of basic descriptions, the
// descriptions of FFmpeg's streams, and the magic cookies in their container layouts.

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRData.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstdint>
#include <memory>
#include <span>

inline constexpr AudioFormatID kAudioFormatMPEGLayer1 = ZRFourCharCode(".mp1");
inline constexpr AudioFormatID kAudioFormatMPEGLayer2 = ZRFourCharCode(".mp2");
inline constexpr AudioFormatID kAudioFormatFLAC = ZRFourCharCode("flac");
inline constexpr AudioFormatID kAudioFormatOpus = ZRFourCharCode("opus");
inline constexpr AudioFormatID kAudioFormatVorbis = ZRFourCharCode("vorb");

// The codec of a basic description; AV_CODEC_ID_NONE for one FFmpeg has no codec for (linear PCM of an unusual
// width, for instance).
AVCodecID ZRCodecIDForDescription(const AudioStreamBasicDescription& format) noexcept;

// The basic description of a stream's codec parameters: linear PCM packed and interleaved with one frame per
// packet, compressed formats with their frames per packet and zero byte sizes. False for a codec without a format
// ID of its own.
bool ZRDescriptionForCodecParameters(const AVCodecParameters& parameters, AudioStreamBasicDescription& format) noexcept;

// The magic cookie of a codec's configuration: an 'esds' descriptor around AAC's AudioSpecificConfig, Apple
// Lossless's 'alac' atom as it stands, other extradata unchanged; and back.
ZRData ZRMagicCookieForExtradata(AVCodecID codec, std::span<const uint8_t> extradata);
ZRData ZRExtradataForMagicCookie(AVCodecID codec, std::span<const uint8_t> cookie);

// Keeps FFmpeg's own log to fatal messages, once per process: failures reach callers as statuses.
void ZRQuietFFmpeg();

// Owners of FFmpeg objects.
struct ZRAVPacketFree {
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
};
struct ZRAVFrameFree {
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
};
struct ZRAVCodecContextFree {
    void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
};
using ZRAVPacket = std::unique_ptr<AVPacket, ZRAVPacketFree>;
using ZRAVFrame = std::unique_ptr<AVFrame, ZRAVFrameFree>;
using ZRAVCodecContext = std::unique_ptr<AVCodecContext, ZRAVCodecContextFree>;
