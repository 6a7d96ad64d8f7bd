#pragma once

#include <zrbase/host/foundation/ZRData.h>

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <string>
#include <unistd.h>

// Whole-file reading and writing for the resource-file store.
namespace ZRFileBytes {

// The file's bytes; nullopt and the system's error number when it cannot be read.
inline std::optional<ZRData> contentsOfFile(const std::string& path, int* errorNumber = nullptr)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        if (errorNumber)
            *errorNumber = errno;
        return std::nullopt;
    }
    ZRData bytes;
    uint8_t buffer[65536];
    ssize_t count;
    while ((count = ::read(descriptor, buffer, sizeof buffer)) > 0 || (count < 0 && errno == EINTR))
        if (count > 0)
            bytes.insert(bytes.end(), buffer, buffer + count);
    const int failure = errno;
    ::close(descriptor);
    if (count < 0) {
        if (errorNumber)
            *errorNumber = failure;
        return std::nullopt;
    }
    return bytes;
}

// Writes all the bytes to the descriptor; false when the system refuses some (errno tells why).
inline bool writeAll(int descriptor, const ZRData& bytes)
{
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            if (count == 0)
                errno = EIO;
            return false;
        }
        written += static_cast<size_t>(count);
    }
    return true;
}

}
