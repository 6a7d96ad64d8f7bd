#pragma once

#include <zrbase/core/ZRError.h>

// Failures of describing an audio stream format.
class ZR_EXPORT ZRAudioStreamDescriptionError : public ZRErrorDomain<ZRAudioStreamDescriptionError> {
public:
    static constexpr const char* className = "ZRAudioStreamDescriptionError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRAudioStreamDescriptionError>;
};
