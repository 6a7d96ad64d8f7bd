#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

// Runs a program as a child process in a process group of its own, collects what it writes to standard output,
// and waits at most a time limit for it; a child that takes longer is killed with its whole group.
class ZR_EXPORT ZRChildProcess {
public:
    struct Result {
        bool started = false;
        bool timedOut = false;
        // The exit status, or -1 when the child ended by a signal (then `signal` names it) or never started.
        int exitStatus = -1;
        int signal = 0;
        // Standard output, cut after the limit given.
        ZRData output;
    };

    // The program is an absolute path, run with the arguments as they are (no shell); standard input is empty and
    // standard error the caller's.
    static Result run(const std::string& program, const std::vector<std::string>& arguments,
        std::chrono::milliseconds timeLimit, size_t outputLimit = 1 << 20);
};
