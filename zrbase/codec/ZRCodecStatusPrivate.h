#pragma once

// A status of the audio services as the result of a codec class's operation.

#include <zrbase/core/ZRError.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

// True for noErr; otherwise false, with an error of the domain holding the status and the localised action when
// one is asked for.
template <typename Domain> bool ZRCodecSucceeded(OSStatus status, const char* action, ZRErrorPtr* error)
{
    if (status == noErr)
        return true;
    if (error)
        *error = Domain::errorWithCode(status, ZRLocalizedString(action));
    return false;
}
