#pragma once

#include <zrbase/core/ZRError.h>

// Failures of audio buffer operations. The library's own buffers report theirs as plain ZRError;
// this domain and its table are offered to applications.
class ZR_EXPORT ZRAudioBufferError : public ZRErrorDomain<ZRAudioBufferError> {
public:
    static constexpr const char* className = "ZRAudioBufferError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRAudioBufferError>;
};
