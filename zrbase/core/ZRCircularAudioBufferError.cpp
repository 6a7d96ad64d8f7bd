#include <zrbase/core/ZRCircularAudioBufferError.h>

#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRCircularAudioBufferError::errorDomain() { return "ZRCircularAudioBufferError"; }

std::optional<std::string> ZRCircularAudioBufferError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 1:
        return ZRLocalizedString("the number of channels being stored does not match.");
    case 2:
        return ZRLocalizedString("the number of frames being stored is too large.");
    case 3:
        return ZRLocalizedString(
            "the sample time for the given buffer was later than the sample end of the circular buffer.");
    case 4:
        return ZRLocalizedString(
            "the sample time for the given buffer was earlier than the sample end of the circular buffer.");
    case 5:
        return ZRLocalizedString("the sample range requested has already been removed from the circular buffer.");
    case 6:
        return ZRLocalizedString("the sample range requested has partially been removed from the circular buffer.");
    case 7:
        return ZRLocalizedString("the sample range requested hasn't been added to the circular buffer yet.");
    case 8:
        return ZRLocalizedString("the sample range requested has not completely been added to the circular buffer.");
    default:
        return ZRLocalizedString("an unknown error occurred.");
    }
}

std::string ZRCircularAudioBufferError::alertMessage() { return ZRLocalizedString("An audio buffer error occurred"); }

void ZRCircularAudioBufferError::log() const
{
    ZRConsoleLog("**Error: [%qu-%qu] available, asked for [%qu-%qu]", _availableLocation,
        _availableLocation + _availableLength, _requestedLocation, _requestedLocation + _requestedLength);
}
