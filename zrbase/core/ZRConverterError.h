#pragma once

#include <zrbase/core/ZRError.h>

// Failures of the audio converter, by its result code.
class ZR_EXPORT ZRConverterError : public ZRErrorDomain<ZRConverterError> {
public:
    static constexpr const char* className = "ZRConverterError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRConverterError>;
};
