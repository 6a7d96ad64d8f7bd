#include <zrbase/host/system/ZRPrivilegedTool.h>

#include <atomic>
#include <cerrno>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

enum class Runner { none, direct, pkexec };

// The process-wide authorization: how tools are run, chosen on first use and kept.
std::atomic<Runner> sharedRunner { Runner::none };

constexpr const char* pkexecPath = "/usr/bin/pkexec";

// pkexec's own exit statuses: 126 when the user dismissed the authentication dialog, 127 when the caller is not
// authorised or no authorisation could be obtained.
constexpr int pkexecDismissed = 126;
constexpr int pkexecNotAuthorized = 127;

}

int32_t ZRPrivilegedTool::createAuthorization()
{
    if (sharedRunner.load() != Runner::none)
        return errAuthorizationSuccess;
    if (geteuid() == 0)
        sharedRunner = Runner::direct;
    else if (access(pkexecPath, X_OK) == 0)
        sharedRunner = Runner::pkexec;
    else
        return errAuthorizationToolExecuteFailure;
    return errAuthorizationSuccess;
}

int32_t ZRPrivilegedTool::executeWithPrivileges(const std::string& tool, const std::vector<std::string>& arguments)
{
    if (const int32_t status = createAuthorization(); status != errAuthorizationSuccess)
        return status;
    const Runner runner = sharedRunner.load();

    std::vector<char*> argv;
    if (runner == Runner::pkexec)
        argv.push_back(const_cast<char*>("pkexec"));
    argv.push_back(const_cast<char*>(tool.c_str()));
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    pid_t child = 0;
    const char* program = runner == Runner::pkexec ? pkexecPath : tool.c_str();
    if (posix_spawn(&child, program, nullptr, nullptr, argv.data(), environ) != 0)
        return errAuthorizationToolExecuteFailure;
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return errAuthorizationToolEnvironmentError;
    }
    if (!WIFEXITED(status))
        return errAuthorizationToolEnvironmentError;
    const int exitStatus = WEXITSTATUS(status);
    if (exitStatus == 0)
        return errAuthorizationSuccess;
    if (runner == Runner::pkexec && exitStatus == pkexecDismissed)
        return errAuthorizationCanceled;
    if (runner == Runner::pkexec && exitStatus == pkexecNotAuthorized)
        return errAuthorizationDenied;
    return errAuthorizationToolEnvironmentError;
}
