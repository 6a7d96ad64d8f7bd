#pragma once

#include <zrbase/core/ZRError.h>

// Failures of the XML reader: the codes are expat's error codes, the reasons its messages.
class ZR_EXPORT ZRXMLParserError : public ZRErrorDomain<ZRXMLParserError> {
public:
    static constexpr const char* className = "ZRXMLParserError";
    // The document nests its dictionaries and arrays more than 512 levels deep.
    static constexpr int32_t nestingTooDeep = 1000;
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRXMLParserError>;
};
