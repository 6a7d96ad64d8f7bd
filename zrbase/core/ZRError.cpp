#include <zrbase/core/ZRError.h>

#include <zrbase/host/foundation/ZRAlertPresenter.h>
#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <atomic>
#include <stdexcept>

namespace {

std::atomic<ZRErrorSentenceSink> sentenceSink { nullptr };

std::optional<std::string> stringForKey(const ZRDictionary& userInfo, std::string_view key)
{
    const ZRPropertyList* value = ZRDictionaryObject(userInfo, key);
    if (!value || !value->string())
        return std::nullopt;
    return *value->string();
}

}

ZRError::ZRError(const ZRErrorClass& errorClass, int32_t code, ZRDictionary userInfo)
    : _class(&errorClass)
    , _domain(errorClass.domain())
    , _code(code)
    , _userInfo(std::move(userInfo))
{
}

ZRError::~ZRError() = default;

std::string ZRError::errorDomain() { return "ZRErrorDomain"; }

std::optional<std::string> ZRError::failureReasonForError(int32_t code)
{
    return ZRStringWithFormat(ZRLocalizedString("an undefined error occurred: %d"), code);
}

std::string ZRError::alertMessage() { return ZRLocalizedString("An error occurred"); }

const ZRErrorClass& ZRError::errorClassObject()
{
    static const ZRErrorClass errorClass { "ZRError", &ZRError::errorDomain, &ZRError::failureReasonForError,
        &ZRError::alertMessage, &ZRError::recoveryOptions };
    return errorClass;
}

std::shared_ptr<ZRError> ZRError::errorWithCode(int32_t code, std::string_view action)
{
    const ZRErrorClass& errorClass = errorClassObject();
    return std::shared_ptr<ZRError>(new ZRError(errorClass, code, _userInfoForCode(errorClass, code, action)));
}

ZRErrorSentenceSink ZRError::setSentenceSink(ZRErrorSentenceSink sink) noexcept
{
    return sentenceSink.exchange(sink, std::memory_order_acq_rel);
}

ZRDictionary ZRError::_userInfoForCode(const ZRErrorClass& errorClass, int32_t code, std::string_view action)
{
    std::optional<std::string> reason = errorClass.failureReasonForError(code);
    // A code without a reason is the caller's mistake; the sentence still reaches the log before the raise, with
    // the text a missing object formats to.
    std::string sentence
        = ZRStringWithFormat(ZRLocalizedString("%@ failed because %@"), action, reason ? *reason : "(null)");
    if (ZRErrorSentenceSink sink = sentenceSink.load(std::memory_order_acquire))
        sink(sentence);
    if (!reason)
        throw std::invalid_argument(ZRStringWithFormat(
            "%s: code %d of %@ has no failure reason (%@)", errorClass.name, code, errorClass.domain(), sentence));

    ZRDictionary userInfo;
    userInfo.emplace(ZRLocalizedDescriptionKey, std::move(sentence));
    userInfo.emplace(ZRLocalizedFailureReasonErrorKey, std::move(*reason));
    if (std::optional<std::vector<std::string>> options = errorClass.recoveryOptions()) {
        ZRArray array(options->begin(), options->end());
        userInfo.emplace(ZRLocalizedRecoveryOptionsErrorKey, std::move(array));
    }
    return userInfo;
}

std::optional<std::string> ZRError::localizedDescription() const
{
    return stringForKey(_userInfo, ZRLocalizedDescriptionKey);
}

std::optional<std::string> ZRError::localizedFailureReason() const
{
    return stringForKey(_userInfo, ZRLocalizedFailureReasonErrorKey);
}

std::vector<std::string> ZRError::localizedRecoveryOptions() const
{
    std::vector<std::string> options;
    const ZRPropertyList* value = ZRDictionaryObject(_userInfo, ZRLocalizedRecoveryOptionsErrorKey);
    if (value && value->array()) {
        for (const ZRPropertyList& option : *value->array())
            options.push_back(option.stringValue());
    }
    return options;
}

void ZRError::alert() const { alertWithMessage(_class->alertMessage()); }

void ZRError::alertWithMessage(std::string_view title) const
{
    ZRAlert alert;
    alert.messageText = title;
    if (std::optional<std::string> description = localizedDescription())
        alert.informativeText = std::move(*description);
    else
        alert.informativeText = ZRStringWithFormat(
            ZRLocalizedString("This error does not have a detailed description: (%@ error code %d)"), _domain, _code);
    alert.buttons = localizedRecoveryOptions();
    if (alert.buttons.empty())
        alert.buttons.push_back(ZRLocalizedString("OK"));

    int response = ZRAlertPresenter::current().runModal(alert);
    attemptRecoveryOption(static_cast<uint32_t>(response - ZRAlertFirstButtonReturn));
}

void ZRError::attemptRecoveryOption(uint32_t) const { }

void ZRError::log() const { ZRConsoleLog("%s: %@", className(), localizedDescription().value_or("(null)")); }
