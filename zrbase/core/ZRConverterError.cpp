#include <zrbase/core/ZRConverterError.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

std::string ZRConverterError::errorDomain() { return "ZRConverterErrorDomain"; }

std::optional<std::string> ZRConverterError::failureReasonForError(int32_t code)
{
    switch (code) {
    case 0x21646174: // '!dat'
    case 0x666D743F: // 'fmt?'
        return ZRLocalizedString("the format is not supported.");
    case 0x21697372: // '!isr'
        return ZRLocalizedString("the input sample rate is out of range.");
    case 0x216F7372: // '!osr'
        return ZRLocalizedString("the output sample rate is out of range.");
    case 0x21706B64: // '!pkd'
        return ZRLocalizedString("the converter requires a packet description.");
    case 0x2173697A: // '!siz'
        return ZRLocalizedString("a property was given a bad size.");
    case 0x21737474: // '!stt'
        return ZRLocalizedString("there was a state error.");
    case 0x696E737A: // 'insz'
        return ZRLocalizedString("the input size is invalid.");
    case 0x6F74737A: // 'otsz'
        return ZRLocalizedString("the output size is invalid.");
    case 0x6E6F7065: // 'nope'
    case 0x6F703F3F: // 'op??'
        return ZRLocalizedString("the operation is not supported.");
    case 0x70726F70: // 'prop'
        return ZRLocalizedString("the property is not supported.");
    case 0x77686174: // 'what'
        return ZRLocalizedString("an unspecified error occurred.");
    case 0x77686F3F: // 'who?'
        return ZRLocalizedString("the property is unknown.");
    default:
        return ZRError::failureReasonForError(code);
    }
}

std::string ZRConverterError::alertMessage() { return ZRLocalizedString("An audio converter error occurred"); }
