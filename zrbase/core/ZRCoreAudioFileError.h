#pragma once

#include <zrbase/core/ZRError.h>

// Failures of the audio file services, by their result code; other codes read as operating-system
// status codes.
class ZR_EXPORT ZRCoreAudioFileError : public ZRErrorDomain<ZRCoreAudioFileError> {
public:
    static constexpr const char* className = "ZRCoreAudioFileError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRCoreAudioFileError>;
};
