#include <zrbase/host/audio/ZRSampleFormatPrivate.h>

#include <zrbase/host/audio/ZRFloatVectorPrivate.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace {

constexpr bool hostIsBigEndian = std::endian::native == std::endian::big;

template <uint32_t Bytes, bool BigEndian> uint64_t loadBits(const uint8_t* p) noexcept
{
    if constexpr (BigEndian == hostIsBigEndian && (Bytes == 2 || Bytes == 4 || Bytes == 8)) {
        if constexpr (Bytes == 2) {
            uint16_t v;
            std::memcpy(&v, p, 2);
            return v;
        } else if constexpr (Bytes == 4) {
            uint32_t v;
            std::memcpy(&v, p, 4);
            return v;
        } else {
            uint64_t v;
            std::memcpy(&v, p, 8);
            return v;
        }
    } else {
        uint64_t v = 0;
        for (uint32_t i = 0; i < Bytes; ++i)
            v |= uint64_t(p[i]) << (8 * (BigEndian ? Bytes - 1 - i : i));
        return v;
    }
}

template <uint32_t Bytes, bool BigEndian> void storeBits(uint8_t* p, uint64_t v) noexcept
{
    if constexpr (BigEndian == hostIsBigEndian && (Bytes == 2 || Bytes == 4 || Bytes == 8)) {
        if constexpr (Bytes == 2) {
            const uint16_t w = uint16_t(v);
            std::memcpy(p, &w, 2);
        } else if constexpr (Bytes == 4) {
            const uint32_t w = uint32_t(v);
            std::memcpy(p, &w, 4);
        } else {
            std::memcpy(p, &v, 8);
        }
    } else {
        for (uint32_t i = 0; i < Bytes; ++i)
            p[i] = uint8_t(v >> (8 * (BigEndian ? Bytes - 1 - i : i)));
    }
}

// Native floats side by side are copied as they stand.
void copySamples(void* destination, const void* source, size_t count) noexcept
{
    if (count > 0)
        std::memcpy(destination, source, count * sizeof(float));
}

using ZRInt16x8 = int16_t __attribute__((vector_size(16)));

// Native signed 16-bit samples, the commonest in files, eight at a time where they lie side by side (mono, or a
// planar channel) or every other one (a channel of stereo); other strides and the last few go one by one.
ZR_VECTOR_CLONES void convertInt16Samples(
    const uint8_t* source, size_t stride, float* destination, size_t count) noexcept
{
    constexpr float scale = 1.0f / 32768.0f;
    size_t i = 0;
    if (stride == 2) {
        for (; i + ZRLanes <= count; i += ZRLanes) {
            ZRInt16x8 samples;
            std::memcpy(&samples, source + 2 * i, sizeof samples);
            const ZRInt8 wide = __builtin_convertvector(samples, ZRInt8);
            ZRStore(destination + i, __builtin_convertvector(wide, ZRFloat8) * scale);
        }
    } else if (stride == 4) {
        // Each sample is the low half of a 32-bit word; shifted to the top it is the sample times 2^16, exactly.
        // The load of eight words reaches two bytes past the eighth sample, which a later frame must hold.
        for (; i + ZRLanes < count; i += ZRLanes) {
            ZRInt8 words;
            std::memcpy(&words, source + 4 * i, sizeof words);
            ZRStore(destination + i, __builtin_convertvector(words << 16, ZRFloat8) * (scale / 65536.0f));
        }
    }
    for (; i < count; ++i) {
        int16_t sample;
        std::memcpy(&sample, source + stride * i, sizeof sample);
        destination[i] = float(sample) * scale;
    }
}

template <uint32_t Bytes, bool Float, bool Signed, bool BigEndian>
void toFloat(const uint8_t* source, size_t stride, float* destination, size_t count) noexcept
{
    if constexpr (Bytes == 2 && !Float && Signed && BigEndian == hostIsBigEndian)
        return convertInt16Samples(source, stride, destination, count);
    if constexpr (Bytes == 4 && Float && BigEndian == hostIsBigEndian) {
        if (stride == 4)
            return copySamples(destination, source, count);
    }
    for (size_t i = 0; i < count; ++i, source += stride) {
        const uint64_t bits = loadBits<Bytes, BigEndian>(source);
        if constexpr (Float && Bytes == 4) {
            destination[i] = std::bit_cast<float>(uint32_t(bits));
        } else if constexpr (Float) {
            destination[i] = float(std::bit_cast<double>(bits));
        } else {
            constexpr uint32_t width = 8 * Bytes;
            constexpr uint64_t half = uint64_t(1) << (width - 1);
            // Unsigned samples centre on half scale; signed ones are sign-extended from their width.
            const int64_t value
                = Signed ? int64_t(bits << (64 - width)) >> (64 - width) : int64_t(bits) - int64_t(half);
            if constexpr (Bytes <= 2)
                destination[i] = float(value) * (1.0f / float(half));
            else
                destination[i] = float(double(value) * (1.0 / double(half)));
        }
    }
}

template <uint32_t Bytes, bool Float, bool Signed, bool BigEndian>
void fromFloat(const float* source, uint8_t* destination, size_t stride, size_t count) noexcept
{
    if constexpr (Bytes == 4 && Float && BigEndian == hostIsBigEndian) {
        if (stride == 4)
            return copySamples(destination, source, count);
    }
    for (size_t i = 0; i < count; ++i, destination += stride) {
        if constexpr (Float && Bytes == 4) {
            storeBits<Bytes, BigEndian>(destination, std::bit_cast<uint32_t>(source[i]));
        } else if constexpr (Float) {
            storeBits<Bytes, BigEndian>(destination, std::bit_cast<uint64_t>(double(source[i])));
        } else {
            constexpr uint32_t width = 8 * Bytes;
            constexpr double half = double(uint64_t(1) << (width - 1));
            const double scaled = std::nearbyint(double(source[i]) * half);
            // NaN clips to zero.
            const double clipped = scaled == scaled ? std::clamp(scaled, -half, half - 1.0) : 0.0;
            const int64_t value = int64_t(clipped) + (Signed ? 0 : int64_t(half));
            storeBits<Bytes, BigEndian>(destination, uint64_t(value));
        }
    }
}

template <uint32_t Bytes, bool Float> ZRSamplesToFloat toFloatFor(bool isSigned, bool isBigEndian) noexcept
{
    if (isSigned)
        return isBigEndian ? &toFloat<Bytes, Float, true, true> : &toFloat<Bytes, Float, true, false>;
    return isBigEndian ? &toFloat<Bytes, Float, false, true> : &toFloat<Bytes, Float, false, false>;
}

template <uint32_t Bytes, bool Float> ZRSamplesFromFloat fromFloatFor(bool isSigned, bool isBigEndian) noexcept
{
    if (isSigned)
        return isBigEndian ? &fromFloat<Bytes, Float, true, true> : &fromFloat<Bytes, Float, true, false>;
    return isBigEndian ? &fromFloat<Bytes, Float, false, true> : &fromFloat<Bytes, Float, false, false>;
}

} // namespace

ZRSampleFormat ZRSampleFormatForDescription(const AudioStreamBasicDescription& format) noexcept
{
    if (format.mFormatID != kAudioFormatLinearPCM || format.mChannelsPerFrame == 0)
        return {};
    const bool nonInterleaved = format.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
    const uint32_t samples = nonInterleaved ? 1 : format.mChannelsPerFrame;
    if (format.mBytesPerFrame == 0 || format.mBytesPerFrame % samples != 0)
        return {};
    ZRSampleFormat sample;
    sample.bytes = format.mBytesPerFrame / samples;
    sample.isFloat = format.mFormatFlags & kAudioFormatFlagIsFloat;
    sample.isSigned = sample.isFloat || (format.mFormatFlags & kAudioFormatFlagIsSignedInteger);
    sample.isBigEndian = format.mFormatFlags & kAudioFormatFlagIsBigEndian;
    const bool readable = sample.isFloat
        ? (sample.bytes == 4 || sample.bytes == 8) && format.mBitsPerChannel == 8 * sample.bytes
        : sample.bytes >= 1 && sample.bytes <= 4 && format.mBitsPerChannel >= 1
            && format.mBitsPerChannel <= 8 * sample.bytes;
    return readable ? sample : ZRSampleFormat {};
}

ZRSampleFormat ZRNativeSampleFormat(uint32_t bytes, bool isFloat, bool isSigned) noexcept
{
    return { bytes, isFloat, isSigned || isFloat, hostIsBigEndian };
}

ZRSamplesToFloat ZRSamplesToFloatFunction(const ZRSampleFormat& format) noexcept
{
    if (format.isFloat)
        return format.bytes == 4 ? toFloatFor<4, true>(true, format.isBigEndian)
            : format.bytes == 8  ? toFloatFor<8, true>(true, format.isBigEndian)
                                 : nullptr;
    switch (format.bytes) {
    case 1:
        return toFloatFor<1, false>(format.isSigned, false);
    case 2:
        return toFloatFor<2, false>(format.isSigned, format.isBigEndian);
    case 3:
        return toFloatFor<3, false>(format.isSigned, format.isBigEndian);
    case 4:
        return toFloatFor<4, false>(format.isSigned, format.isBigEndian);
    default:
        return nullptr;
    }
}

ZRSamplesFromFloat ZRSamplesFromFloatFunction(const ZRSampleFormat& format) noexcept
{
    if (format.isFloat)
        return format.bytes == 4 ? fromFloatFor<4, true>(true, format.isBigEndian)
            : format.bytes == 8  ? fromFloatFor<8, true>(true, format.isBigEndian)
                                 : nullptr;
    switch (format.bytes) {
    case 1:
        return fromFloatFor<1, false>(format.isSigned, false);
    case 2:
        return fromFloatFor<2, false>(format.isSigned, format.isBigEndian);
    case 3:
        return fromFloatFor<3, false>(format.isSigned, format.isBigEndian);
    case 4:
        return fromFloatFor<4, false>(format.isSigned, format.isBigEndian);
    default:
        return nullptr;
    }
}
