#pragma once

#include <zrbase/audio/ZRAudioBuffer.h>
#include <zrbase/audio/ZRAudioStreamDescription.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/host/audio/ZRAudioConverterService.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

// One audio converter between a source and a destination format, converting raw memory, audio buffers and native
// float buffers. Conversion, reset, property changes and destruction hold the converter's lock, so several threads
// may drive one converter; property and description reads do not take it. Failures are ZRConverterError objects
// with the converter service's code.
class ZR_EXPORT ZRConverter {
public:
    ~ZRConverter();
    ZRConverter(const ZRConverter&) = delete;
    ZRConverter& operator=(const ZRConverter&) = delete;

    // "Creating the converter".
    static std::unique_ptr<ZRConverter> converterWithSourceFormat(const ZRAudioStreamDescription& source,
        const ZRAudioStreamDescription& destination, ZRErrorPtr* error = nullptr);

    AudioConverterRef converter() const noexcept { return _converter; }
    // The input procedure and its user data for convertToNativeBufferUsingCallback.
    void setCallback(AudioConverterComplexInputDataProc callback, void* userData) noexcept;
    // Forgets buffered audio between unrelated streams: "Resetting the converter".
    bool reset(ZRErrorPtr* error = nullptr);

    // 'xops', 'brat' and 'srcq'; 0 when the converter has none.
    uint32_t maximumOutputPacketSize() const noexcept;
    uint32_t bitrate() const noexcept;
    uint32_t quality() const noexcept;
    // "Setting the converter bit rate", "Setting the converter quality".
    bool setBitrate(uint32_t bitrate, ZRErrorPtr* error = nullptr);
    bool setQuality(uint32_t quality, ZRErrorPtr* error = nullptr);
    ZRAudioStreamDescription inputDescription() const noexcept;
    ZRAudioStreamDescription outputDescription() const noexcept;
    // The decoder's cookie; empty data does nothing: "Setting the magic cookie to the audio convertor".
    bool setMagicCookie(const ZRData& cookie, ZRErrorPtr* error = nullptr);
    // The encoder's cookie (not the one set above); a failure shows "Retrieving the magic cookie" at once.
    std::optional<ZRData> magicCookie() const;

    // All of the input at once, between linear PCM formats of one rate: "Converting audio". The bytes produced
    // are not reported.
    bool convertInput(
        const void* input, uint32_t inBytes, void* output, uint32_t outBytes, ZRErrorPtr* error = nullptr);
    bool convertInput(
        const float* input, uint32_t inFrames, float* output, uint32_t outFrames, ZRErrorPtr* error = nullptr);
    bool convertInPlace(float* buffer, uint32_t frames, ZRErrorPtr* error = nullptr);
    // Buffer i of the source to buffer i of the destination; different counts fail without an error.
    bool convertBuffer(const ZRAudioBuffer& source, ZRAudioBuffer& destination, ZRErrorPtr* error = nullptr);
    bool convertBufferInPlace(ZRAudioBuffer& buffer, ZRErrorPtr* error = nullptr);

    // Pull conversions, answering the packets produced (0 on failure, "Converting audio"). The source is handed
    // over whole at every request of the converter, so the request must be one that a single pass over it fills:
    // the destination's frames into a native buffer, the source's frames out of one.
    uint32_t convertBufferToNativeBuffer(
        const ZRAudioBuffer& source, ZRNativeAudioBuffer& destination, ZRErrorPtr* error = nullptr);
    uint32_t convertNativeBuffer(
        const ZRNativeAudioBuffer& source, ZRAudioBuffer& destination, ZRErrorPtr* error = nullptr);
    // Through the procedure of setCallback, for the destination's frames.
    uint32_t convertToNativeBufferUsingCallback(ZRNativeAudioBuffer& destination, ZRErrorPtr* error = nullptr);

    // Equal when the input formats are, whatever the outputs.
    bool isEqualToConverter(const ZRConverter& other) const noexcept;
    bool isEqual(const ZRConverter* other) const noexcept;

private:
    explicit ZRConverter(AudioConverterRef converter) noexcept;
    uint32_t _fill(AudioConverterComplexInputDataProc procedure, void* userData, uint32_t packets,
        AudioBufferList* destination, ZRErrorPtr* error);

    AudioConverterRef _converter;
    std::mutex _lock;
    AudioConverterComplexInputDataProc _callback = nullptr;
    void* _userData = nullptr;
};
