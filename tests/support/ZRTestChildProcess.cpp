#include "support/ZRTestChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

bool ZRTestRunInChildProcess(const std::function<bool()>& body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body() ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
