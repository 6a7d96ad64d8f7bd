#include "OutputFile.h"

#include "ToolError.h"

#include <zrbase/core/ZRFileError.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zr {

ZRErrorPtr fileError(int errnoValue, std::string_view action)
{
    switch (errnoValue) {
    case EPERM:
    case ENOENT:
    case EEXIST:
    case ENOSPC:
        return ZRFileError::errorWithCode(errnoValue, action);
    default:
        break;
    }
    std::string reason = strerror(errnoValue);
    if (!reason.empty())
        reason[0] = char(std::tolower(static_cast<unsigned char>(reason[0])));
    const char* name = strerrorname_np(errnoValue);
    reason += name ? ". (" + std::string(name) + ")" : ".";
    return toolError(action, reason);
}

static bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes.remove_prefix(size_t(written));
    }
    return true;
}

bool writeOutputFile(const std::string& path, std::string_view bytes, ZRErrorPtr* error)
{
    const char* action = "Writing the output file";
    if (path == "-") {
        if (writeAll(STDOUT_FILENO, bytes))
            return true;
        if (error)
            *error = fileError(errno, action);
        return false;
    }

    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string temporary = folder + (slash == std::string::npos ? "/." : ".") + name + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    if (descriptor < 0) {
        if (error)
            *error = fileError(errno, action);
        return false;
    }
    // mkstemp makes the file private; the output gets the permissions any new file of the user gets.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, 0666 & ~mask);

    const bool written = writeAll(descriptor, bytes);
    int failure = written ? 0 : errno;
    if (::close(descriptor) != 0 && !failure)
        failure = errno;
    if (!failure && ::rename(temporary.c_str(), path.c_str()) != 0)
        failure = errno;
    if (failure) {
        ::unlink(temporary.c_str());
        if (error)
            *error = fileError(failure, action);
        return false;
    }
    return true;
}

}
