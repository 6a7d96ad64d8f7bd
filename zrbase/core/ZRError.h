#pragma once

#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The keys of an error's user information, with the host's values.
inline constexpr std::string_view ZRLocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr std::string_view ZRLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";
inline constexpr std::string_view ZRLocalizedRecoveryOptionsErrorKey = "NSLocalizedRecoveryOptions";

// What a class of errors supplies: its name, domain, code-to-reason table, alert title and recovery options.
struct ZRErrorClass {
    const char* name;
    std::string (*domain)();
    std::optional<std::string> (*failureReasonForError)(int32_t code);
    std::string (*alertMessage)();
    std::optional<std::vector<std::string>> (*recoveryOptions)();
};

// Where the sentence of every error made goes, at the moment it is made; the application log installs itself here
// when it opens. The sink may be called from any thread.
using ZRErrorSentenceSink = void (*)(std::string_view sentence);

// A failure described for the user: a domain, a signed 32-bit code and user information holding the sentence
// "<action> failed because <reason>". Errors are immutable once handed out and may cross threads.
//
// Class-level operations are static members that every domain class supplies for itself (errorDomain,
// failureReasonForError, alertMessage, recoveryOptions); errorWithCode, inherited through ZRErrorDomain, always
// uses the table of the class it is called on.
class ZR_EXPORT ZRError {
public:
    virtual ~ZRError();

    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();
    static std::optional<std::vector<std::string>> recoveryOptions() { return std::nullopt; }
    static const ZRErrorClass& errorClassObject();

    // Builds the error: the reason from the class's table, the sentence handed to the sentence sink (the
    // application log writes it at error level), the user information filled. A code whose reason is none is a
    // programming error: the sentence is logged with "(null)" as reason and std::invalid_argument is thrown.
    static std::shared_ptr<ZRError> errorWithCode(int32_t code, std::string_view action);
    // Installs the sink of the sentences (null for none) and answers the previous one.
    static ZRErrorSentenceSink setSentenceSink(ZRErrorSentenceSink sink) noexcept;
    // The failure of an operation: fills the slot, when one is given, with the error of the code and the localised
    // action, and answers false, so that `return ZRFileError::fail(error, errno, "Opening a file");` reports it.
    static bool fail(ZRErrorPtr* error, int32_t code, std::string_view action)
    {
        return _fail<ZRError>(error, code, action);
    }

    const std::string& domain() const noexcept { return _domain; }
    int32_t code() const noexcept { return _code; }
    const ZRDictionary& userInfo() const noexcept { return _userInfo; }
    std::optional<std::string> localizedDescription() const;
    std::optional<std::string> localizedFailureReason() const;
    std::vector<std::string> localizedRecoveryOptions() const;
    // The name of the error's class, e.g. "ZRFileError". A domain class's own static className hides this
    // member, so through a pointer to a domain class write errorClass().name.
    const char* className() const noexcept { return _class->name; }
    const ZRErrorClass& errorClass() const noexcept { return *_class; }

    // Shows the error modally with its class's alert title and then calls attemptRecoveryOption with the
    // zero-based index of the button chosen.
    virtual void alert() const;
    void alertWithMessage(std::string_view title) const;
    virtual void attemptRecoveryOption(uint32_t index) const;
    // Writes "<class name>: <description>" to the console.
    virtual void log() const;

protected:
    ZRError(const ZRErrorClass& errorClass, int32_t code, ZRDictionary userInfo);

    // Steps of errorWithCode shared by every class: the user information of a code and action.
    static ZRDictionary _userInfoForCode(const ZRErrorClass& errorClass, int32_t code, std::string_view action);
    template <typename Class> static bool _fail(ZRErrorPtr* error, int32_t code, std::string_view action)
    {
        if (error)
            *error = Class::errorWithCode(code, ZRLocalizedString(action));
        return false;
    }

    template <typename Derived, typename Base> friend class ZRErrorDomain;

private:
    const ZRErrorClass* _class;
    std::string _domain;
    int32_t _code;
    ZRDictionary _userInfo;
};

// The base of every domain class: gives Derived its class object and the constructors that use Derived's own
// domain and table. Derived supplies the static className, errorDomain, failureReasonForError and alertMessage,
// inherits the constructors (using ZRErrorDomain::ZRErrorDomain) and befriends ZRErrorDomain<Derived>.
template <typename Derived, typename Base = ZRError> class ZRErrorDomain : public Base {
public:
    static const ZRErrorClass& errorClassObject()
    {
        static const ZRErrorClass errorClass { Derived::className, &Derived::errorDomain,
            &Derived::failureReasonForError, &Derived::alertMessage, &Derived::recoveryOptions };
        return errorClass;
    }

    static std::shared_ptr<Derived> errorWithCode(int32_t code, std::string_view action)
    {
        const ZRErrorClass& errorClass = errorClassObject();
        return std::shared_ptr<Derived>(
            new Derived(errorClass, code, ZRError::_userInfoForCode(errorClass, code, action)));
    }

    static bool fail(ZRErrorPtr* error, int32_t code, std::string_view action)
    {
        return ZRError::_fail<Derived>(error, code, action);
    }

    // An error of this class with user information of the caller's own, built without the table.
    static std::shared_ptr<Derived> errorWithUserInfo(int32_t code, ZRDictionary userInfo)
    {
        return std::shared_ptr<Derived>(new Derived(errorClassObject(), code, std::move(userInfo)));
    }

protected:
    using Base::Base;
};
