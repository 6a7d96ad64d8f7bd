#pragma once

#include <zrbase/core/ZRError.h>

// Failures of file access, by errno value; code -1 is reserved for errors built with their own reason.
class ZR_EXPORT ZRFileError : public ZRErrorDomain<ZRFileError> {
public:
    static constexpr const char* className = "ZRFileError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRFileError>;
};
