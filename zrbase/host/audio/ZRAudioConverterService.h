#pragma once

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>

// A converter of the audio converter service.
struct OpaqueAudioConverter;
using AudioConverterRef = OpaqueAudioConverter*;

// Asked by a pull conversion for up to *ioNumberDataPackets packets of input: it points the buffers of ioData at
// them (as many buffers as the input format has), sets the count it supplies (0 for the end of the input) and, for
// variable packets, their descriptions. A non-zero result stops the conversion with that result.
using AudioConverterComplexInputDataProc = OSStatus (*)(AudioConverterRef converter, uint32_t* ioNumberDataPackets,
    AudioBufferList* ioData, AudioStreamPacketDescription** outDataPacketDescription, void* inUserData);

// The service's result codes.
inline constexpr OSStatus kAudioConverterErr_FormatNotSupported = static_cast<OSStatus>(ZRFourCharCode("fmt?"));
inline constexpr OSStatus kAudioConverterErr_OperationNotSupported = static_cast<OSStatus>(ZRFourCharCode("op??"));
inline constexpr OSStatus kAudioConverterErr_PropertyNotSupported = static_cast<OSStatus>(ZRFourCharCode("prop"));
inline constexpr OSStatus kAudioConverterErr_InvalidInputSize = static_cast<OSStatus>(ZRFourCharCode("insz"));
inline constexpr OSStatus kAudioConverterErr_InvalidOutputSize = static_cast<OSStatus>(ZRFourCharCode("otsz"));
inline constexpr OSStatus kAudioConverterErr_UnspecifiedError = static_cast<OSStatus>(ZRFourCharCode("what"));
inline constexpr OSStatus kAudioConverterErr_BadPropertySizeError = static_cast<OSStatus>(ZRFourCharCode("!siz"));
inline constexpr OSStatus kAudioConverterErr_RequiresPacketDescriptionsError
    = static_cast<OSStatus>(ZRFourCharCode("!pkd"));
inline constexpr OSStatus kAudioConverterErr_InputSampleRateOutOfRange = static_cast<OSStatus>(ZRFourCharCode("!isr"));
inline constexpr OSStatus kAudioConverterErr_OutputSampleRateOutOfRange = static_cast<OSStatus>(ZRFourCharCode("!osr"));

// Sample-rate converter qualities ('srcq'): each band selects one of libsoxr's recipes, from quick (below Low) up
// to very high (Max, the default).
inline constexpr uint32_t kAudioConverterQuality_Max = 0x7F;
inline constexpr uint32_t kAudioConverterQuality_High = 0x60;
inline constexpr uint32_t kAudioConverterQuality_Medium = 0x40;
inline constexpr uint32_t kAudioConverterQuality_Low = 0x20;
inline constexpr uint32_t kAudioConverterQuality_Min = 0;

// The audio converter service: linear PCM of any width, endianness, signedness, integer or float and
// interleaving to any other at any rate (the rate changed by libsoxr); decoding AAC, Apple Lossless, MPEG audio,
// AC-3, FLAC, Vorbis, Opus, µLaw, aLaw and IMA 4:1 to linear PCM; encoding linear PCM to AAC, Apple Lossless,
// MP3 and AC-3. Both sides have the same number of channels. A compressed destination with a sample rate of 0
// takes the source's rate, or the encoder's nearest one.
//
// Every call answers noErr or one of the codes above. A converter is used by one thread at a time.
class ZR_EXPORT ZRAudioConverterService {
public:
    static OSStatus create(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
        AudioConverterRef& converter);
    static OSStatus dispose(AudioConverterRef converter);
    // Forgets buffered input and output, so that the next conversion starts a new stream.
    static OSStatus reset(AudioConverterRef converter);

    // Linear PCM to linear PCM at the same rate, all of the input at once: ioOutputBytes gives the room and
    // receives the bytes written. Input and output may be the same memory when their frames have the same size.
    static OSStatus convertBuffer(
        AudioConverterRef converter, uint32_t inputBytes, const void* input, uint32_t& ioOutputBytes, void* output);
    // Fills up to ioOutputPackets packets of `output` (its buffers give the room), pulling input through `proc`;
    // ioOutputPackets receives the packets produced, fewer only at the end of the input or on a failure. Variable
    // output packets need `descriptions`.
    static OSStatus fillComplexBuffer(AudioConverterRef converter, AudioConverterComplexInputDataProc proc,
        void* userData, uint32_t& ioOutputPackets, AudioBufferList* output, AudioStreamPacketDescription* descriptions);

    // 'xops': the largest output packet in bytes.
    static OSStatus maximumOutputPacketSize(AudioConverterRef converter, uint32_t& size);
    // 'brat': the encoder's bit rate in bits per second; only encoders have one, and it is set before the first
    // conversion.
    static OSStatus bitRate(AudioConverterRef converter, uint32_t& bitRate);
    static OSStatus setBitRate(AudioConverterRef converter, uint32_t bitRate);
    // 'srcq'.
    static OSStatus quality(AudioConverterRef converter, uint32_t& quality);
    static OSStatus setQuality(AudioConverterRef converter, uint32_t quality);
    // 'acid' and 'acod'.
    static OSStatus inputDescription(AudioConverterRef converter, AudioStreamBasicDescription& format);
    static OSStatus outputDescription(AudioConverterRef converter, AudioStreamBasicDescription& format);
    // 'dmgc': the decoder's magic cookie (as the audio file service gives it), set before the first conversion.
    static OSStatus setDecompressionMagicCookie(AudioConverterRef converter, const ZRData& cookie);
    // 'cmgc': the encoder's magic cookie, for the file it writes into.
    static OSStatus compressionMagicCookie(AudioConverterRef converter, ZRData& cookie);
    // The encoder's delay: frames of priming its first packets carry before the input's first frame.
    static OSStatus primingFrames(AudioConverterRef converter, uint32_t& frames);
};
