#include <zrbase/host/audio/ZRAudioFormatService.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <limits>

namespace {

struct FormatName {
    AudioFormatID format;
    const char* name;
};

constexpr FormatName formatNames[] = {
    { kAudioFormatLinearPCM, "Linear PCM" },
    { kAudioFormatAC3, "AC-3" },
    { ZRFourCharCode("cac3"), "AC-3" },
    { kAudioFormatAppleIMA4, "IMA 4:1 ADPCM" },
    { kAudioFormatMPEG4AAC, "AAC" },
    { ZRFourCharCode("celp"), "MPEG-4 CELP" },
    { ZRFourCharCode("hvxc"), "MPEG-4 HVXC" },
    { ZRFourCharCode("twvq"), "MPEG-4 TwinVQ" },
    { ZRFourCharCode("MAC3"), "MACE 3:1" },
    { ZRFourCharCode("MAC6"), "MACE 6:1" },
    { kAudioFormatULaw, "µLaw" },
    { kAudioFormatALaw, "aLaw" },
    { ZRFourCharCode("QDMC"), "QDesign music" },
    { ZRFourCharCode("QDM2"), "QDesign2 music" },
    { ZRFourCharCode("Qclp"), "QUALCOMM PureVoice" },
    { ZRFourCharCode(".mp1"), "MPEG-1/2, Layer 1" },
    { ZRFourCharCode(".mp2"), "MPEG-1/2, Layer 2" },
    { kAudioFormatMPEGLayer3, "MPEG-1/2, Layer 3" },
    { kAudioFormatAppleLossless, "Apple Lossless" },
    { ZRFourCharCode("aach"), "MPEG-4 High Efficiency AAC" },
    { ZRFourCharCode("aacl"), "MPEG-4 AAC Low Delay" },
    { ZRFourCharCode("aacp"), "MPEG-4 High Efficiency AAC Version 2" },
    { ZRFourCharCode("aacs"), "MPEG-4 Spatial" },
    { ZRFourCharCode("samr"), "AMR Narrow Band" },
};

// The supported formats and the usual number of frames in one of their packets.
struct SupportedFormat {
    AudioFormatID format;
    bool isVBR;
    bool isExternallyFramed;
    uint32_t framesPerPacket;
};

constexpr SupportedFormat supportedFormats[] = {
    { kAudioFormatLinearPCM, false, false, 1 },
    { kAudioFormatMPEG4AAC, true, true, 1024 },
    { kAudioFormatAppleLossless, true, true, 4096 },
    { kAudioFormatMPEGLayer3, true, false, 1152 },
    { kAudioFormatAC3, false, false, 1536 },
    { kAudioFormatULaw, false, false, 1 },
    { kAudioFormatALaw, false, false, 1 },
    { kAudioFormatAppleIMA4, false, false, 64 },
};

// AAC also comes in packets of 960 frames (the broadcast variant).
constexpr uint32_t aacShortFramesPerPacket = 960;
// MPEG layer 3 below 32 kHz is MPEG-2 (or 2.5), whose frames carry half as many samples.
constexpr uint32_t mpeg2Layer3FramesPerPacket = 576;
constexpr double mpeg2Layer3RateLimit = 32000.0;
// An IMA 4:1 packet holds 64 frames of one channel in 34 bytes: a 2-byte header and 32 bytes of 4-bit codes.
constexpr uint32_t ima4BytesPerChannelPacket = 34;

// The packet length of a compressed format: fixed by the format (and for MPEG layer 3 by the rate), or kept where
// the encoder chooses it among lengths the format allows.
uint32_t framesPerPacket(const SupportedFormat& supported, const AudioStreamBasicDescription& format) noexcept
{
    switch (supported.format) {
    case kAudioFormatMPEG4AAC:
        return format.mFramesPerPacket == aacShortFramesPerPacket ? aacShortFramesPerPacket : supported.framesPerPacket;
    case kAudioFormatAppleLossless:
        return format.mFramesPerPacket > 1 ? format.mFramesPerPacket : supported.framesPerPacket;
    case kAudioFormatMPEGLayer3:
        return format.mSampleRate > 0 && format.mSampleRate < mpeg2Layer3RateLimit ? mpeg2Layer3FramesPerPacket
                                                                                   : supported.framesPerPacket;
    default:
        return supported.framesPerPacket;
    }
}

const SupportedFormat* supportedFormat(AudioFormatID format) noexcept
{
    for (const SupportedFormat& supported : supportedFormats) {
        if (supported.format == format)
            return &supported;
    }
    return nullptr;
}

uint32_t channelsPerBuffer(const AudioStreamBasicDescription& format) noexcept
{
    return (format.mFormatFlags & kAudioFormatFlagIsNonInterleaved) ? 1 : format.mChannelsPerFrame;
}

OSStatus completeLinearPCM(AudioStreamBasicDescription& format) noexcept
{
    const bool isFloat = format.mFormatFlags & kAudioFormatFlagIsFloat;
    if (format.mChannelsPerFrame == 0 || format.mFramesPerPacket > 1
        || (isFloat && (format.mFormatFlags & kAudioFormatFlagIsSignedInteger)))
        return ZRAudioFormatUnsupportedError;

    constexpr uint32_t widestSample = 8;
    const uint32_t samples = channelsPerBuffer(format);
    uint32_t existingWidth = format.mBytesPerFrame % samples == 0 ? format.mBytesPerFrame / samples : 0;
    if (existingWidth > widestSample)
        existingWidth = 0;
    uint32_t bits = format.mBitsPerChannel ? format.mBitsPerChannel : existingWidth * 8;
    if (bits == 0 || bits > widestSample * 8 || (isFloat && bits != 32 && bits != 64))
        return ZRAudioFormatUnsupportedError;

    uint32_t width = (bits + 7) / 8;
    if (existingWidth >= width)
        width = existingWidth;
    if (width > std::numeric_limits<uint32_t>::max() / samples)
        return ZRAudioFormatUnsupportedError;

    if (bits == width * 8)
        format.mFormatFlags |= kAudioFormatFlagIsPacked;
    else
        format.mFormatFlags &= ~kAudioFormatFlagIsPacked;
    format.mBitsPerChannel = bits;
    format.mFramesPerPacket = 1;
    format.mBytesPerFrame = width * samples;
    format.mBytesPerPacket = width * samples;
    return noErr;
}

}

const char* ZRAudioFormatService::formatName(AudioFormatID format) noexcept
{
    for (const FormatName& entry : formatNames) {
        if (entry.format == format)
            return entry.name;
    }
    return nullptr;
}

OSStatus ZRAudioFormatService::name(const AudioStreamBasicDescription& format, std::string& name)
{
    if (!supportedFormat(format.mFormatID))
        return ZRAudioFormatUnsupportedError;

    std::string text = formatName(format.mFormatID);
    const AudioFormatFlags flags = format.mFormatFlags;
    if (format.mFormatID == kAudioFormatLinearPCM && format.mBitsPerChannel) {
        text += ZRStringWithFormat(", %u-bit", format.mBitsPerChannel);
        if (format.mBitsPerChannel > 8)
            text += (flags & kAudioFormatFlagIsBigEndian) ? " big-endian" : " little-endian";
        if (flags & kAudioFormatFlagIsFloat)
            text += " float";
        else if (flags & kAudioFormatFlagIsSignedInteger)
            text += " signed integer";
        else
            text += " unsigned integer";
        if (flags & kAudioFormatFlagIsNonInterleaved)
            text += ", non-interleaved";
    }
    if (format.mChannelsPerFrame == 1)
        text += ", mono";
    else if (format.mChannelsPerFrame == 2)
        text += ", stereo";
    else if (format.mChannelsPerFrame)
        text += ZRStringWithFormat(", %u channels", format.mChannelsPerFrame);
    if (format.mSampleRate > 0)
        text += ZRStringWithFormat(", %.10g Hz", format.mSampleRate);
    name = std::move(text);
    return noErr;
}

OSStatus ZRAudioFormatService::isVBR(const AudioStreamBasicDescription& format, uint32_t& isVBR) noexcept
{
    const SupportedFormat* supported = supportedFormat(format.mFormatID);
    if (!supported)
        return ZRAudioFormatUnsupportedError;
    isVBR = supported->isVBR;
    return noErr;
}

OSStatus ZRAudioFormatService::isExternallyFramed(
    const AudioStreamBasicDescription& format, uint32_t& isExternallyFramed) noexcept
{
    const SupportedFormat* supported = supportedFormat(format.mFormatID);
    if (!supported)
        return ZRAudioFormatUnsupportedError;
    isExternallyFramed = supported->isExternallyFramed;
    return noErr;
}

OSStatus ZRAudioFormatService::complete(AudioStreamBasicDescription& format) noexcept
{
    const SupportedFormat* supported = supportedFormat(format.mFormatID);
    if (!supported)
        return ZRAudioFormatUnsupportedError;
    if (supported->format == kAudioFormatLinearPCM)
        return completeLinearPCM(format);
    if (format.mChannelsPerFrame == 0)
        return ZRAudioFormatUnsupportedError;

    AudioStreamBasicDescription completed = format;
    completed.mFramesPerPacket = framesPerPacket(*supported, format);

    completed.mBitsPerChannel = 0;
    completed.mBytesPerFrame = 0;
    completed.mBytesPerPacket = 0;
    if (supported->format == kAudioFormatULaw || supported->format == kAudioFormatALaw) {
        completed.mBitsPerChannel = 8;
        completed.mBytesPerFrame = channelsPerBuffer(format);
        completed.mBytesPerPacket = completed.mBytesPerFrame;
    } else if (supported->format == kAudioFormatAppleIMA4) {
        if (format.mChannelsPerFrame > std::numeric_limits<uint32_t>::max() / ima4BytesPerChannelPacket)
            return ZRAudioFormatUnsupportedError;
        completed.mBytesPerPacket = ima4BytesPerChannelPacket * format.mChannelsPerFrame;
    }
    format = completed;
    return noErr;
}
