#include <zrbase/host/foundation/ZRConsoleLog.h>

#include <cerrno>
#include <ctime>
#include <unistd.h>

void ZRConsoleLogLine(std::string_view text)
{
    timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local {};
    localtime_r(&now.tv_sec, &local);
    char date[32];
    const size_t dateLength = std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);

    std::string line = ZRStringWithFormat("%s.%03ld %s[%d:%d] ", std::string_view(date, dateLength),
        static_cast<long>(now.tv_nsec / 1000000), program_invocation_short_name, static_cast<int>(getpid()),
        static_cast<int>(gettid()));
    line.append(text);
    line.push_back('\n');

    // One write per line keeps the lines of several threads apart; a short write only continues its own line.
    size_t written = 0;
    while (written < line.size()) {
        const ssize_t result = write(STDERR_FILENO, line.data() + written, line.size() - written);
        if (result < 0 && errno == EINTR)
            continue;
        if (result <= 0)
            return;
        written += static_cast<size_t>(result);
    }
}
