#pragma once

// Linear PCM samples of any width, signedness, endianness and integer or float kind, read into and written from
// 32-bit float (integers scaled so that the full scale of their bytes is ±1, which reads samples of fewer bits aligned
// high as they are; writing rounds and clips).

#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <cstddef>
#include <cstdint>

// Reads `count` samples `stride` bytes apart into consecutive floats.
using ZRSamplesToFloat = void (*)(const uint8_t* source, size_t stride, float* destination, size_t count) noexcept;
// Writes consecutive floats as `count` samples `stride` bytes apart.
using ZRSamplesFromFloat = void (*)(const float* source, uint8_t* destination, size_t stride, size_t count) noexcept;

struct ZRSampleFormat {
    uint32_t bytes = 0;
    bool isFloat = false;
    bool isSigned = false;
    bool isBigEndian = false;
};

// The sample of a linear PCM description; bytes 0 for one that cannot be read (widths other than 1 to 4 bytes of
// integer or 4 and 8 of float).
ZRSampleFormat ZRSampleFormatForDescription(const AudioStreamBasicDescription& format) noexcept;
// Native-endian samples of a width and kind, as FFmpeg's sample formats have them.
ZRSampleFormat ZRNativeSampleFormat(uint32_t bytes, bool isFloat, bool isSigned) noexcept;

ZRSamplesToFloat ZRSamplesToFloatFunction(const ZRSampleFormat& format) noexcept;
ZRSamplesFromFloat ZRSamplesFromFloatFunction(const ZRSampleFormat& format) noexcept;
