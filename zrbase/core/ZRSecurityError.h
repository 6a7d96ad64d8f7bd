#pragma once

#include <zrbase/core/ZRError.h>

// Failures of authorisation and of privileged tools, by the authorisation services' result code.
class ZR_EXPORT ZRSecurityError : public ZRErrorDomain<ZRSecurityError> {
public:
    static constexpr const char* className = "ZRSecurityError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRSecurityError>;
};
