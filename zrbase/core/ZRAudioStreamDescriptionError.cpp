#include <zrbase/core/ZRAudioStreamDescriptionError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRAudioStreamDescriptionError::errorDomain() { return "ZRAudioStreamDescriptionErrorDomain"; }

std::optional<std::string> ZRAudioStreamDescriptionError::failureReasonForError(int32_t code)
{
    if (code == 0x21646174) // '!dat'
        return ZRLocalizedString("the format is not supported.");
    return ZRError::failureReasonForError(code);
}

std::string ZRAudioStreamDescriptionError::alertMessage()
{
    return ZRLocalizedString("An audio stream description error occurred");
}
