#include <zrbase/core/ZRProgressError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRProgressError::errorDomain() { return "ZRProgressErrorDomain"; }

std::optional<std::string> ZRProgressError::failureReasonForError(int32_t code)
{
    switch (code) {
    case ZRModalResponseStop:
        return ZRLocalizedString("the progress was stopped.");
    case ZRModalResponseAbort:
        return ZRLocalizedString("the progress was aborted.");
    default:
        return std::nullopt;
    }
}

std::string ZRProgressError::alertMessage() { return ZRLocalizedString("Progress was interrupted"); }

void ZRProgressError::alert() const
{
    if (code() == ZRModalResponseStop || code() == ZRModalResponseAbort)
        return;
    ZRError::alert();
}
