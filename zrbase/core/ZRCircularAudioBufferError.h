#pragma once

#include <zrbase/core/ZRError.h>

// Failures of storing into and retrieving from the circular audio buffer. The buffer fills in the frames asked
// for and the frames it holds before handing the error out.
class ZR_EXPORT ZRCircularAudioBufferError : public ZRErrorDomain<ZRCircularAudioBufferError> {
public:
    static constexpr const char* className = "ZRCircularAudioBufferError";
    // "ZRCircularAudioBufferError", without the "Domain" suffix: callers compare this string.
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

    // The first sample time and the number of frames requested, and those the buffer holds.
    void setRequestedLocation(uint64_t location) noexcept { _requestedLocation = location; }
    void setRequestedLength(uint32_t length) noexcept { _requestedLength = length; }
    void setAvailableLocation(uint64_t location) noexcept { _availableLocation = location; }
    void setAvailableLength(uint32_t length) noexcept { _availableLength = length; }
    uint64_t requestedLocation() const noexcept { return _requestedLocation; }
    uint32_t requestedLength() const noexcept { return _requestedLength; }
    uint64_t availableLocation() const noexcept { return _availableLocation; }
    uint32_t availableLength() const noexcept { return _availableLength; }

    // Writes "**Error: [first-end] available, asked for [first-end]" to the console, each range as its first
    // frame and one past its last.
    void log() const override;

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRCircularAudioBufferError>;

private:
    uint64_t _requestedLocation = 0;
    uint32_t _requestedLength = 0;
    uint64_t _availableLocation = 0;
    uint32_t _availableLength = 0;
};
