#include <zrbase/core/ZRXMLParserError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <expat.h>

std::string ZRXMLParserError::errorDomain() { return "ZRXMLParserErrorDomain"; }

std::optional<std::string> ZRXMLParserError::failureReasonForError(int32_t code)
{
    if (code == nestingTooDeep)
        return ZRLocalizedString("its collections nest more than 512 levels deep.");
    if (const XML_LChar* message = XML_ErrorString(static_cast<XML_Error>(code)))
        return ZRLocalizedString(message);
    return ZRError::failureReasonForError(code);
}

std::string ZRXMLParserError::alertMessage() { return ZRLocalizedString("An XML document could not be read"); }
