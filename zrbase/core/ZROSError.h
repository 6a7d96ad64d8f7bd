#pragma once

#include <zrbase/core/ZRError.h>

// Failures of the operating system's services, by their status code.
class ZR_EXPORT ZROSError : public ZRErrorDomain<ZROSError> {
public:
    static constexpr const char* className = "ZROSError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZROSError>;
};
