#include <zrbase/core/ZRAudioBufferError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRAudioBufferError::errorDomain() { return "ZRAudioBufferErrorDomain"; }

std::optional<std::string> ZRAudioBufferError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 1:
        return ZRLocalizedString("the memory could not be allocated.");
    case 2:
        return ZRLocalizedString("the destination buffer index was out of range.");
    case 3:
        return ZRLocalizedString("the source buffer index was out of range.");
    case 4:
        return ZRLocalizedString("the destination range was illegal.");
    case 5:
        return ZRLocalizedString("the source range was illegal.");
    case 6:
        return ZRLocalizedString("the buffer lists are not the same length.");
    case 7:
        return ZRLocalizedString("the buffer lists do not have the same number of buffers.");
    case 8:
        return ZRLocalizedString("the buffer list was not built.");
    default:
        return std::nullopt;
    }
}

std::string ZRAudioBufferError::alertMessage() { return ZRLocalizedString("An audio buffer error occurred"); }
