#include <zrbase/core/ZROSError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZROSError::errorDomain() { return "NSOSStatusErrorDomain"; }

std::optional<std::string> ZROSError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 0:
        return ZRLocalizedString("no error actually occurred (?!)");
    case -39:
        return ZRLocalizedString("an attempt was made to read past the end of a file.");
    case -2048:
        return ZRLocalizedString("no valid movie was found.");
    default:
        return ZRError::failureReasonForError(code);
    }
}

std::string ZROSError::alertMessage() { return ZRLocalizedString("An operating system error occurred"); }
