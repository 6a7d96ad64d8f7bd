#pragma once

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <string>

// The status of a question about a format this service does not know, or of a description it cannot complete.
inline constexpr OSStatus ZRAudioFormatUnsupportedError = static_cast<OSStatus>(ZRFourCharCode("!dat"));

// Facts about audio formats, answered from the library's own knowledge of the formats its codecs handle: linear
// PCM (integer of 1 to 64 bits or float of 32 or 64 bits, either endianness, interleaved or not), AAC, Apple
// Lossless, MPEG layer 3, AC-3, µLaw, aLaw and IMA 4:1. Each question answers a host status: noErr, or
// ZRAudioFormatUnsupportedError for any other format; the answer is written only on success.
class ZR_EXPORT ZRAudioFormatService {
public:
    // The English name of a format ID ("Linear PCM", "MPEG-1/2, Layer 3"), null for an ID without one. Names are
    // known for more formats than the service otherwise supports.
    static const char* formatName(AudioFormatID format) noexcept;

    // A name for the whole format, e.g. "Linear PCM, 16-bit little-endian signed integer, stereo, 44100 Hz" or
    // "AAC, 6 channels, 48000 Hz".
    static OSStatus name(const AudioStreamBasicDescription& format, std::string& name);
    // Whether the format's packets vary in size (AAC, Apple Lossless, MPEG layer 3).
    static OSStatus isVBR(const AudioStreamBasicDescription& format, uint32_t& isVBR) noexcept;
    // Whether the format's packets can only be found with packet descriptions from the container (AAC and Apple
    // Lossless; the others have constant packets or frame headers of their own).
    static OSStatus isExternallyFramed(
        const AudioStreamBasicDescription& format, uint32_t& isExternallyFramed) noexcept;

    // Fills in the members a format determines and leaves the rest. Linear PCM needs channels and a bit depth
    // (or bytes per frame to derive it from); it gets one frame per packet, bytes per frame and packet for its
    // sample width (an existing wider width that holds the bits is kept) and the packed flag exactly when the bits
    // fill that width. The compressed formats need channels; they get their frames per packet (AAC 1024, or 960
    // when set so; Apple Lossless 4096 unless set above 1; MPEG layer 3 1152, 576 below 32 kHz; AC-3 1536; IMA 4:1
    // 64 in packets of 34 bytes per channel) and their fixed byte sizes and bit depths (µLaw and aLaw one 8-bit
    // byte per sample), zero where packets vary. Float with the signed-integer flag, or more frames per packet
    // than linear PCM allows, cannot be completed.
    static OSStatus complete(AudioStreamBasicDescription& format) noexcept;
};
