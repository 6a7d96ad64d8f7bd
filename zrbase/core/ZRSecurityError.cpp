#include <zrbase/core/ZRSecurityError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRSecurityError::errorDomain() { return "NSSecurityErrorDomain"; }

std::optional<std::string> ZRSecurityError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 0:
        return ZRLocalizedString("no error actually occurred (?!)");
    case -60001:
        return ZRLocalizedString("the authorization rights are invalid.");
    case -60002:
        return ZRLocalizedString("the authorization reference is invalid.");
    case -60003:
        return ZRLocalizedString("the authorization tag is invalid.");
    case -60004:
        return ZRLocalizedString("the returned authorization is invalid.");
    case -60005:
        return ZRLocalizedString("the authorization was denied.");
    case -60006:
        return ZRLocalizedString("the authorization was cancelled by the user.");
    case -60007:
        return ZRLocalizedString("the authorization was denied since no user interaction was possible.");
    case -60008:
        return ZRLocalizedString("an authorization for this operation was not able to be obtained.");
    case -60009:
        return ZRLocalizedString("the authorization is not allowed to be converted to an external format.");
    case -60010:
        return ZRLocalizedString("the authorization is not allowed to be created from an external format.");
    case -60011:
        return ZRLocalizedString("the provided option flag(s) are invalid for this authorization operation.");
    case -60031:
        return ZRLocalizedString("the specified program could not be executed.");
    case -60032:
        return ZRLocalizedString("an invalid status was returned during execution of a privileged tool.");
    case -60033:
        return ZRLocalizedString("the requested socket address is invalid (must be 0-1023 inclusive).");
    default:
        return ZRError::failureReasonForError(code);
    }
}

std::string ZRSecurityError::alertMessage() { return ZRLocalizedString("A security error occurred"); }
