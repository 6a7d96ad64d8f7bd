#include "core/ZRProgressError.h"

#include "host/foundation/ZRLocalizedString.h"

std::string ZRProgressError::errorDomain() { return "ZRProgressErrorDomain"; }

std::optional<std::string> ZRProgressError::failureReasonForError(int32_t code)
{
    switch (code) {
    case ZRProgressStoppedResponse:
        return ZRLocalizedString("the progress was stopped.");
    case ZRProgressAbortedResponse:
        return ZRLocalizedString("the progress was aborted.");
    default:
        return std::nullopt;
    }
}

std::string ZRProgressError::alertMessage() { return ZRLocalizedString("Progress was interrupted"); }

void ZRProgressError::alert() const
{
    if (code() == ZRProgressStoppedResponse || code() == ZRProgressAbortedResponse)
        return;
    ZRError::alert();
}
