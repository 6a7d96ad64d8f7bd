#include <zrbase/host/system/ZRChildProcess.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

ZRChildProcess::Result ZRChildProcess::run(const std::string& program, const std::vector<std::string>& arguments,
    std::chrono::milliseconds timeLimit, size_t outputLimit)
{
    Result result;
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0)
        return result;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attributes, 0);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);

    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, program.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(pipeEnds[1]);
    if (spawned != 0) {
        ::close(pipeEnds[0]);
        return result;
    }
    result.started = true;

    // Reads until the child closes its output or the time is up. A grandchild that keeps the pipe open is
    // killed with the group when the time is up.
    const auto deadline = std::chrono::steady_clock::now() + timeLimit;
    for (;;) {
        const auto left
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            result.timedOut = true;
            break;
        }
        pollfd descriptor { pipeEnds[0], POLLIN, 0 };
        const int ready = poll(&descriptor, 1, static_cast<int>(std::min<long long>(left.count(), 1000)));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            continue;
        uint8_t buffer[16384];
        const ssize_t count = ::read(pipeEnds[0], buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        const size_t room = outputLimit - std::min(outputLimit, result.output.size());
        result.output.insert(result.output.end(), buffer, buffer + std::min(room, static_cast<size_t>(count)));
    }
    ::close(pipeEnds[0]);

    int status = 0;
    if (result.timedOut) {
        kill(-child, SIGKILL);
        waitpid(child, &status, 0);
    } else {
        // Output closed: the child is ending; wait for it within what is left of the limit.
        for (;;) {
            const pid_t done = waitpid(child, &status, WNOHANG);
            if (done == child || (done < 0 && errno != EINTR))
                break;
            if (std::chrono::steady_clock::now() >= deadline) {
                result.timedOut = true;
                kill(-child, SIGKILL);
                waitpid(child, &status, 0);
                break;
            }
            usleep(2000);
        }
    }
    if (!result.timedOut && WIFEXITED(status))
        result.exitStatus = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    return result;
}
