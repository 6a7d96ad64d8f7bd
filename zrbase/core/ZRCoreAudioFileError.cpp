#include <zrbase/core/ZRCoreAudioFileError.h>

#include <zrbase/core/ZROSError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRCoreAudioFileError::errorDomain() { return "ZRCoreAudioFileErrorDomain"; }

std::optional<std::string> ZRCoreAudioFileError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 0x2173697A: // '!siz'
        return ZRLocalizedString("a property was given a bad size.");
    case 0x63686B3F: // 'chk?'
        return ZRLocalizedString("a chunk was invalid.");
    case 0x6474613F: // 'dta?'
        return ZRLocalizedString("the file could not be parsed.");
    case 0x666D743F: // 'fmt?'
        return ZRLocalizedString("the format is not supported.");
    case 0x6F66663F: // 'off?'
        return ZRLocalizedString("the file does not allow a 64-bit data size.");
    case 0x6F703F3F: // 'op??'
        return ZRLocalizedString("the operation is not supported.");
    case 0x6F70746D: // 'optm'
        return ZRLocalizedString("the file is not optimized.");
    case 0x70636B3F: // 'pck?'
        return ZRLocalizedString("the packet offset was invalid.");
    case 0x70726D3F: // 'prm?'
        return ZRLocalizedString("a permissions error occurred.");
    case 0x7074793F: // 'pty?'
        return ZRLocalizedString("the property is not supported.");
    case 0x7479703F: // 'typ?'
        return ZRLocalizedString("the file type is not supported.");
    case 0x7768743F: // 'wht?'
        return ZRLocalizedString("an unspecified error occurred.");
    case -43:
        return ZRLocalizedString("the audio file was not found.");
    default:
        // The audio file services also pass on plain operating-system status codes.
        return ZROSError::failureReasonForError(code);
    }
}

std::string ZRCoreAudioFileError::alertMessage() { return ZRLocalizedString("An audio file error occurred"); }
