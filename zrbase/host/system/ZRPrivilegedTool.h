#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <string>
#include <vector>

// Runs a system tool with administrator rights the way a Linux desktop grants them: through polkit's pkexec, which
// asks the user to authenticate, or directly when the process already runs as root. Results are the status codes
// of the authorization services.
//
// Unlike the host's services this waits for the tool and answers how it ended, so that a caller that is told the
// operation succeeded finds its result on the disk.
class ZR_EXPORT ZRPrivilegedTool {
public:
    static constexpr int32_t errAuthorizationSuccess = 0;
    static constexpr int32_t errAuthorizationDenied = -60005;
    static constexpr int32_t errAuthorizationCanceled = -60006;
    static constexpr int32_t errAuthorizationToolExecuteFailure = -60031;
    static constexpr int32_t errAuthorizationToolEnvironmentError = -60032;

    // Chooses how tools get their rights, once per process: directly as root, otherwise through pkexec. Answers
    // errAuthorizationToolExecuteFailure, and chooses again next time, when neither is possible.
    static int32_t createAuthorization();
    // Runs the tool (an absolute path) with the arguments, each one argument of its own and never through a shell,
    // and waits for it: success when it exits with status 0; errAuthorizationCanceled or errAuthorizationDenied
    // when pkexec was dismissed or refused; errAuthorizationToolExecuteFailure when it could not be started;
    // errAuthorizationToolEnvironmentError for any other status or a signal. Creates the authorization first if
    // there is none.
    static int32_t executeWithPrivileges(const std::string& tool, const std::vector<std::string>& arguments);
};
