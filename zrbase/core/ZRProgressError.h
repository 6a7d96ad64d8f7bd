#pragma once

#include <zrbase/core/ZRError.h>
#include <zrbase/host/foundation/ZRModalResponse.h>

// A progress that the user stopped (ZRModalResponseStop) or aborted (ZRModalResponseAbort): the code is the modal
// response of the progress panel, which runs with ZRModalResponseContinue.
class ZR_EXPORT ZRProgressError : public ZRErrorDomain<ZRProgressError> {
public:
    static constexpr const char* className = "ZRProgressError";
    static std::string errorDomain();
    static std::optional<std::string> failureReasonForError(int32_t code);
    static std::string alertMessage();

    // Shows nothing for a stopped or aborted progress: the interruption was the user's own doing.
    void alert() const override;

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<ZRProgressError>;
};
