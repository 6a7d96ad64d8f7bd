#include <zrbase/codec/ZRConverter.h>

#include <zrbase/codec/ZRCodecStatusPrivate.h>
#include <zrbase/core/ZRConverterError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <algorithm>

namespace {

constexpr auto succeeded = ZRCodecSucceeded<ZRConverterError>;

// The library's input procedure: the whole source buffer, every time it is asked.
OSStatus converterCallback(AudioConverterRef converter, uint32_t* ioNumberDataPackets, AudioBufferList* ioData,
    AudioStreamPacketDescription**, void* userData)
{
    const auto& source = *static_cast<const ZRAudioBuffer*>(userData);
    const uint32_t count = std::min(source.count(), ioData->mNumberBuffers);
    for (uint32_t i = 0; i < count; ++i)
        ioData->mBuffers[i] = { source.channelsPerBuffer(), source.length(), source.bufferAtIndex(i) };
    AudioStreamBasicDescription input {};
    ZRAudioConverterService::inputDescription(converter, input);
    // Formats of variable packets have no bytes per packet and are not supported: they give nothing.
    *ioNumberDataPackets = input.mBytesPerPacket ? source.length() / input.mBytesPerPacket : 0;
    return noErr;
}

} // namespace

ZRConverter::ZRConverter(AudioConverterRef converter) noexcept
    : _converter(converter)
{
}

ZRConverter::~ZRConverter()
{
    std::lock_guard lock(_lock);
    ZRAudioConverterService::dispose(_converter);
}

std::unique_ptr<ZRConverter> ZRConverter::converterWithSourceFormat(
    const ZRAudioStreamDescription& source, const ZRAudioStreamDescription& destination, ZRErrorPtr* error)
{
    AudioConverterRef converter = nullptr;
    if (!succeeded(ZRAudioConverterService::create(*source.description(), *destination.description(), converter),
            "Creating the converter", error))
        return nullptr;
    return std::unique_ptr<ZRConverter>(new ZRConverter(converter));
}

void ZRConverter::setCallback(AudioConverterComplexInputDataProc callback, void* userData) noexcept
{
    _callback = callback;
    _userData = userData;
}

bool ZRConverter::reset(ZRErrorPtr* error)
{
    std::lock_guard lock(_lock);
    return succeeded(ZRAudioConverterService::reset(_converter), "Resetting the converter", error);
}

uint32_t ZRConverter::maximumOutputPacketSize() const noexcept
{
    uint32_t size = 0;
    ZRAudioConverterService::maximumOutputPacketSize(_converter, size);
    return size;
}

uint32_t ZRConverter::bitrate() const noexcept
{
    uint32_t bitrate = 0;
    ZRAudioConverterService::bitRate(_converter, bitrate);
    return bitrate;
}

uint32_t ZRConverter::quality() const noexcept
{
    uint32_t quality = 0;
    ZRAudioConverterService::quality(_converter, quality);
    return quality;
}

bool ZRConverter::setBitrate(uint32_t bitrate, ZRErrorPtr* error)
{
    std::lock_guard lock(_lock);
    return succeeded(ZRAudioConverterService::setBitRate(_converter, bitrate), "Setting the converter bit rate", error);
}

bool ZRConverter::setQuality(uint32_t quality, ZRErrorPtr* error)
{
    std::lock_guard lock(_lock);
    return succeeded(ZRAudioConverterService::setQuality(_converter, quality), "Setting the converter quality", error);
}

ZRAudioStreamDescription ZRConverter::inputDescription() const noexcept
{
    AudioStreamBasicDescription format {};
    ZRAudioConverterService::inputDescription(_converter, format);
    return ZRAudioStreamDescription::descriptionWithBasicDescription(format);
}

ZRAudioStreamDescription ZRConverter::outputDescription() const noexcept
{
    AudioStreamBasicDescription format {};
    ZRAudioConverterService::outputDescription(_converter, format);
    return ZRAudioStreamDescription::descriptionWithBasicDescription(format);
}

bool ZRConverter::setMagicCookie(const ZRData& cookie, ZRErrorPtr* error)
{
    if (cookie.empty())
        return true;
    std::lock_guard lock(_lock);
    return succeeded(ZRAudioConverterService::setDecompressionMagicCookie(_converter, cookie),
        "Setting the magic cookie to the audio convertor", error);
}

std::optional<ZRData> ZRConverter::magicCookie() const
{
    ZRData cookie;
    ZRErrorPtr error;
    if (!succeeded(ZRAudioConverterService::compressionMagicCookie(_converter, cookie), "Retrieving the magic cookie",
            &error)) {
        error->alert();
        return std::nullopt;
    }
    return cookie;
}

bool ZRConverter::convertInput(const void* input, uint32_t inBytes, void* output, uint32_t outBytes, ZRErrorPtr* error)
{
    std::lock_guard lock(_lock);
    return succeeded(ZRAudioConverterService::convertBuffer(_converter, inBytes, input, outBytes, output),
        "Converting audio", error);
}

bool ZRConverter::convertInput(
    const float* input, uint32_t inFrames, float* output, uint32_t outFrames, ZRErrorPtr* error)
{
    return convertInput(
        static_cast<const void*>(input), inFrames * 4, static_cast<void*>(output), outFrames * 4, error);
}

bool ZRConverter::convertInPlace(float* buffer, uint32_t frames, ZRErrorPtr* error)
{
    return convertInput(buffer, frames, buffer, frames, error);
}

bool ZRConverter::convertBuffer(const ZRAudioBuffer& source, ZRAudioBuffer& destination, ZRErrorPtr* error)
{
    if (source.count() != destination.count())
        return false;
    for (uint32_t i = 0; i < source.count(); ++i) {
        if (!convertInput(
                source.bufferAtIndex(i), source.length(), destination.bufferAtIndex(i), destination.length(), error))
            return false;
    }
    return true;
}

bool ZRConverter::convertBufferInPlace(ZRAudioBuffer& buffer, ZRErrorPtr* error)
{
    return convertBuffer(buffer, buffer, error);
}

uint32_t ZRConverter::_fill(AudioConverterComplexInputDataProc procedure, void* userData, uint32_t packets,
    AudioBufferList* destination, ZRErrorPtr* error)
{
    std::lock_guard lock(_lock);
    const OSStatus status
        = ZRAudioConverterService::fillComplexBuffer(_converter, procedure, userData, packets, destination, nullptr);
    return succeeded(status, "Converting audio", error) ? packets : 0;
}

uint32_t ZRConverter::convertBufferToNativeBuffer(
    const ZRAudioBuffer& source, ZRNativeAudioBuffer& destination, ZRErrorPtr* error)
{
    return _fill(
        converterCallback, const_cast<ZRAudioBuffer*>(&source), destination.frames(), destination.list(), error);
}

uint32_t ZRConverter::convertNativeBuffer(
    const ZRNativeAudioBuffer& source, ZRAudioBuffer& destination, ZRErrorPtr* error)
{
    return _fill(
        converterCallback, const_cast<ZRNativeAudioBuffer*>(&source), source.frames(), destination.list(), error);
}

uint32_t ZRConverter::convertToNativeBufferUsingCallback(ZRNativeAudioBuffer& destination, ZRErrorPtr* error)
{
    return _fill(_callback, _userData, destination.frames(), destination.list(), error);
}

bool ZRConverter::isEqualToConverter(const ZRConverter& other) const noexcept
{
    return inputDescription().isEqualToDescription(other.inputDescription());
}

bool ZRConverter::isEqual(const ZRConverter* other) const noexcept
{
    return other == this || (other && isEqualToConverter(*other));
}
