#pragma once

#include "core/ZRError.h"

// The modal responses of a progress panel: running, stopped by its stop button, aborted.
inline constexpr int32_t ZRProgressRunningResponse = -1002;
inline constexpr int32_t ZRProgressStoppedResponse = -1000;
inline constexpr int32_t ZRProgressAbortedResponse = -1001;

// A progress that the user stopped (-1000) or aborted (-1001), by the modal response of the progress panel.
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
