#pragma once

// The plain Core Audio structures and constants that the library hands to host services, with the host's own
// names and field names. AudioBufferList and AudioChannelLayout are variable-length: allocate them with the size
// helpers below, which follow the natural layout of this platform.

#include <cstddef>
#include <cstdint>

using OSStatus = int32_t;
using AudioFormatID = uint32_t;
using AudioFormatFlags = uint32_t;
using AudioChannelLabel = uint32_t;
using AudioChannelFlags = uint32_t;
using AudioChannelBitmap = uint32_t;
using AudioChannelLayoutTag = uint32_t;
using AudioUnitScope = uint32_t;
using AudioUnitElement = uint32_t;
using AudioUnitParameterID = uint32_t;
using AudioUnitParameterValue = float;
using AUParameterEventType = uint32_t;

// The 32-bit value of a four-character code, first character in the most significant byte: ZRFourCharCode("lpcm").
constexpr uint32_t ZRFourCharCode(const char (&code)[5]) noexcept
{
    return (uint32_t(uint8_t(code[0])) << 24) | (uint32_t(uint8_t(code[1])) << 16) | (uint32_t(uint8_t(code[2])) << 8)
        | uint32_t(uint8_t(code[3]));
}

inline constexpr OSStatus noErr = 0;

struct AudioStreamBasicDescription {
    double mSampleRate;
    AudioFormatID mFormatID;
    AudioFormatFlags mFormatFlags;
    uint32_t mBytesPerPacket;
    uint32_t mFramesPerPacket;
    uint32_t mBytesPerFrame;
    uint32_t mChannelsPerFrame;
    uint32_t mBitsPerChannel;
    uint32_t mReserved;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

struct AudioStreamPacketDescription {
    int64_t mStartOffset;
    uint32_t mVariableFramesInPacket;
    uint32_t mDataByteSize;
};

struct AudioBuffer {
    uint32_t mNumberChannels;
    uint32_t mDataByteSize;
    void* mData;
};

// mBuffers holds mNumberBuffers entries; the declared single entry only gives the array its place.
struct AudioBufferList {
    uint32_t mNumberBuffers;
    AudioBuffer mBuffers[1];
};

// The bytes of an AudioBufferList of `count` buffers.
constexpr size_t ZRAudioBufferListSize(uint32_t count) noexcept
{
    return offsetof(AudioBufferList, mBuffers) + size_t(count) * sizeof(AudioBuffer);
}

struct AudioChannelDescription {
    AudioChannelLabel mChannelLabel;
    AudioChannelFlags mChannelFlags;
    float mCoordinates[3];
};
static_assert(sizeof(AudioChannelDescription) == 20);

// mChannelDescriptions holds mNumberChannelDescriptions entries.
struct AudioChannelLayout {
    AudioChannelLayoutTag mChannelLayoutTag;
    AudioChannelBitmap mChannelBitmap;
    uint32_t mNumberChannelDescriptions;
    AudioChannelDescription mChannelDescriptions[1];
};

// The bytes of an AudioChannelLayout of `count` channel descriptions (12 + 20 × count).
constexpr size_t ZRAudioChannelLayoutSize(uint32_t count) noexcept
{
    return offsetof(AudioChannelLayout, mChannelDescriptions) + size_t(count) * sizeof(AudioChannelDescription);
}

inline constexpr AUParameterEventType kParameterEvent_Immediate = 1;
inline constexpr AUParameterEventType kParameterEvent_Ramped = 2;

// One parameter change for an audio unit: immediate (a value at an offset) or ramped (a sweep over frames).
struct AudioUnitParameterEvent {
    AudioUnitScope scope;
    AudioUnitElement element;
    AudioUnitParameterID parameter;
    AUParameterEventType eventType;
    union {
        struct {
            int32_t startBufferOffset;
            uint32_t durationInFrames;
            AudioUnitParameterValue startValue;
            AudioUnitParameterValue endValue;
        } ramp;
        struct {
            uint32_t bufferOffset;
            AudioUnitParameterValue value;
        } immediate;
    } eventValues;
};

inline constexpr AudioUnitScope kAudioUnitScope_Global = 0;
inline constexpr AudioUnitScope kAudioUnitScope_Input = 1;
inline constexpr AudioUnitScope kAudioUnitScope_Output = 2;

inline constexpr AudioFormatID kAudioFormatLinearPCM = ZRFourCharCode("lpcm");
inline constexpr AudioFormatID kAudioFormatAC3 = ZRFourCharCode("ac-3");
inline constexpr AudioFormatID kAudioFormatAppleIMA4 = ZRFourCharCode("ima4");
inline constexpr AudioFormatID kAudioFormatMPEG4AAC = ZRFourCharCode("aac ");
inline constexpr AudioFormatID kAudioFormatAppleLossless = ZRFourCharCode("alac");
inline constexpr AudioFormatID kAudioFormatULaw = ZRFourCharCode("ulaw");
inline constexpr AudioFormatID kAudioFormatALaw = ZRFourCharCode("alaw");
inline constexpr AudioFormatID kAudioFormatMPEGLayer3 = ZRFourCharCode(".mp3");

inline constexpr AudioFormatFlags kAudioFormatFlagIsFloat = 1U << 0;
inline constexpr AudioFormatFlags kAudioFormatFlagIsBigEndian = 1U << 1;
inline constexpr AudioFormatFlags kAudioFormatFlagIsSignedInteger = 1U << 2;
inline constexpr AudioFormatFlags kAudioFormatFlagIsPacked = 1U << 3;
inline constexpr AudioFormatFlags kAudioFormatFlagIsAlignedHigh = 1U << 4;
inline constexpr AudioFormatFlags kAudioFormatFlagIsNonInterleaved = 1U << 5;
inline constexpr AudioFormatFlags kAudioFormatFlagIsNonMixable = 1U << 6;
inline constexpr AudioFormatFlags kAudioFormatFlagsAreAllClear = 1U << 31;

inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsFloat = kAudioFormatFlagIsFloat;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsBigEndian = kAudioFormatFlagIsBigEndian;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsSignedInteger = kAudioFormatFlagIsSignedInteger;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsPacked = kAudioFormatFlagIsPacked;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsAlignedHigh = kAudioFormatFlagIsAlignedHigh;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsNonInterleaved = kAudioFormatFlagIsNonInterleaved;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagIsNonMixable = kAudioFormatFlagIsNonMixable;
inline constexpr AudioFormatFlags kLinearPCMFormatFlagsAreAllClear = kAudioFormatFlagsAreAllClear;

// The native-endian flag: set on big-endian machines only.
inline constexpr AudioFormatFlags kAudioFormatFlagsNativeEndian
    = (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) ? kAudioFormatFlagIsBigEndian : 0;
// Packed native-endian 32-bit float, the library's working format (non-interleaved is added where it applies).
inline constexpr AudioFormatFlags kAudioFormatFlagsNativeFloatPacked
    = kAudioFormatFlagIsFloat | kAudioFormatFlagsNativeEndian | kAudioFormatFlagIsPacked;
