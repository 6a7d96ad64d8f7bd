#include <zrbase/core/ZRFileError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cerrno>

std::string ZRFileError::errorDomain() { return "NSPOSIXErrorDomain"; }

std::optional<std::string> ZRFileError::failureReasonForError(int32_t code)
{
    switch (code) {
    case -1:
        return std::nullopt;
    case 0:
        return ZRLocalizedString("no error actually occurred (?!)");
    case EPERM:
        return ZRLocalizedString("an illegal operation was attempted. (EPERM)");
    case ENOENT:
        return ZRLocalizedString("the file or directory was not found. (ENOENT)");
    case EBADF:
        return ZRLocalizedString("a bad file descriptor was given. (EBADF)");
    case EEXIST:
        return ZRLocalizedString("the file or directory already exists. (EEXIST)");
    case ENOSPC:
        return ZRLocalizedString("there is no space left on the device. (ENOSPC)");
    default:
        return ZRStringWithFormat(ZRLocalizedString("an undefined error occurred. (%d)"), code);
    }
}

std::string ZRFileError::alertMessage() { return ZRLocalizedString("A file error occurred"); }
