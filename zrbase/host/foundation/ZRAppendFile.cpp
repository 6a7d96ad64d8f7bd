#include <zrbase/host/foundation/ZRAppendFile.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool failWith(int* code, int value) noexcept
{
    if (code)
        *code = value;
    return false;
}

}

ZRAppendFile::ZRAppendFile(std::string path, int descriptor) noexcept
    : _path(std::move(path))
    , _descriptor(descriptor)
{
}

ZRAppendFile::~ZRAppendFile() { ::close(_descriptor); }

std::unique_ptr<ZRAppendFile> ZRAppendFile::open(const std::string& path, int* code)
{
    int descriptor;
    do
        descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        failWith(code, errno);
        return nullptr;
    }
    return std::unique_ptr<ZRAppendFile>(new ZRAppendFile(path, descriptor));
}

bool ZRAppendFile::append(std::span<const uint8_t> bytes, int* code) noexcept
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(_descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return failWith(code, errno);
        }
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return true;
}

bool ZRAppendFile::synchronize(int* code) noexcept { return ::fdatasync(_descriptor) == 0 || failWith(code, errno); }
