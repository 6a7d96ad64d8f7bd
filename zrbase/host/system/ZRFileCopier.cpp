#include <zrbase/host/system/ZRFileCopier.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace {

// The one buffer of a copy, used only where the kernel cannot copy between the two files itself.
constexpr size_t bufferLength = size_t(1) << 20;

std::error_code lastError() { return { errno, std::generic_category() }; }

struct Descriptor {
    int fd;
    ~Descriptor()
    {
        if (fd >= 0)
            close(fd);
    }
};

// One copy operation: the state its items share.
class Copy {
public:
    std::error_code item(const std::string& source, const std::string& destination, bool top);
    bool madeDestination() const noexcept { return _madeDestination; }

private:
    std::error_code _file(
        const std::string& source, const std::string& destination, const struct stat& status, bool top);
    std::error_code _folder(
        const std::string& source, const std::string& destination, const struct stat& status, bool top);
    std::error_code _link(
        const std::string& source, const std::string& destination, const struct stat& status, bool top);
    std::error_code _data(int in, int out, off_t length);
    std::error_code _range(int in, int out, off_t offset, off_t length);
    static void _copyAttributes(const std::string& source, const std::string& destination);
    static void _copyModeAndTimes(const std::string& destination, const struct stat& status);

    std::vector<uint8_t> _buffer;
    bool _kernelCopyFails = false;
    bool _madeDestination = false;
    bool _knowsDestinationFolder = false;
    dev_t _destinationDevice = 0;
    ino_t _destinationInode = 0;
};

std::error_code Copy::item(const std::string& source, const std::string& destination, bool top)
{
    struct stat status;
    if (lstat(source.c_str(), &status) != 0)
        return lastError();
    // Reaching the copy's own top folder means the destination lies inside the source.
    if (_knowsDestinationFolder && status.st_dev == _destinationDevice && status.st_ino == _destinationInode)
        return std::make_error_code(std::errc::invalid_argument);
    if (S_ISDIR(status.st_mode))
        return _folder(source, destination, status, top);

    if (S_ISREG(status.st_mode))
        return _file(source, destination, status, top);
    if (S_ISLNK(status.st_mode))
        return _link(source, destination, status, top);
    return std::make_error_code(std::errc::not_supported);
}

std::error_code Copy::_file(
    const std::string& source, const std::string& destination, const struct stat& status, bool top)
{
    const Descriptor in { open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW) };
    if (in.fd < 0)
        return lastError();
    const Descriptor out { open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600) };
    if (out.fd < 0)
        return lastError();
    _madeDestination |= top;
    if (std::error_code error = _data(in.fd, out.fd, status.st_size))
        return error;
    _copyAttributes(source, destination);
    _copyModeAndTimes(destination, status);
    return {};
}

std::error_code Copy::_data(int in, int out, off_t length)
{
    // Only the parts that hold data are copied; the holes of a sparse file stay holes.
    for (off_t offset = 0; offset < length;) {
        off_t start = lseek(in, offset, SEEK_DATA);
        off_t end = length;
        if (start < 0) {
            if (errno == ENXIO)
                break;
            start = offset;
        } else if (const off_t hole = lseek(in, start, SEEK_HOLE); hole >= 0) {
            end = std::min(hole, length);
        }
        if (start >= length)
            break;
        if (std::error_code error = _range(in, out, start, end - start))
            return error;
        offset = end;
    }
    // Sets the length past a trailing hole, and keeps it when the source shrank meanwhile.
    if (ftruncate(out, length) != 0)
        return lastError();
    return {};
}

std::error_code Copy::_range(int in, int out, off_t offset, off_t length)
{
    while (length > 0) {
        if (!_kernelCopyFails) {
            loff_t inOffset = offset;
            loff_t outOffset = offset;
            const ssize_t copied = copy_file_range(in, &inOffset, out, &outOffset, static_cast<size_t>(length), 0);
            if (copied == 0)
                return {};
            if (copied > 0) {
                offset += copied;
                length -= copied;
                continue;
            }
            if (errno == EINTR)
                continue;
            // Between file systems, and on older kernels, the kernel declines; the buffer does it then.
            if (errno != EXDEV && errno != ENOSYS && errno != EOPNOTSUPP && errno != EINVAL)
                return lastError();
            _kernelCopyFails = true;
        }
        if (_buffer.empty())
            _buffer.resize(bufferLength);
        const ssize_t read = pread(in, _buffer.data(), std::min<size_t>(_buffer.size(), length), offset);
        if (read < 0 && errno == EINTR)
            continue;
        if (read < 0)
            return lastError();
        if (read == 0)
            return {};
        for (ssize_t written = 0; written < read;) {
            const ssize_t result = pwrite(out, _buffer.data() + written, read - written, offset + written);
            if (result < 0 && errno != EINTR)
                return lastError();
            written += std::max<ssize_t>(result, 0);
        }
        offset += read;
        length -= read;
    }
    return {};
}

std::error_code Copy::_folder(
    const std::string& source, const std::string& destination, const struct stat& status, bool top)
{
    // Owner-only until the contents are in, so that nobody else sees a half-made folder open.
    if (mkdir(destination.c_str(), 0700) != 0)
        return lastError();
    if (top) {
        _madeDestination = true;
        struct stat made;
        if (lstat(destination.c_str(), &made) == 0) {
            _knowsDestinationFolder = true;
            _destinationDevice = made.st_dev;
            _destinationInode = made.st_ino;
        }
    }

    // The names are read first and the folder closed, so that deep trees do not hold a descriptor per level.
    std::vector<std::string> names;
    {
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(source.c_str()), closedir);
        if (!folder)
            return lastError();
        errno = 0;
        while (const dirent* entry = readdir(folder.get())) {
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                names.emplace_back(name);
        }
        if (errno != 0)
            return lastError();
    }
    for (const std::string& name : names) {
        if (std::error_code error = item(source + "/" + name, destination + "/" + name, false))
            return error;
    }
    _copyAttributes(source, destination);
    _copyModeAndTimes(destination, status);
    return {};
}

std::error_code Copy::_link(
    const std::string& source, const std::string& destination, const struct stat& status, bool top)
{
    // A link's size is its target's length, except on file systems that report 0; then the buffer grows.
    std::string target(static_cast<size_t>(status.st_size) + 1, '\0');
    if (target.size() < 256)
        target.resize(256);
    for (;;) {
        const ssize_t length = readlink(source.c_str(), target.data(), target.size());
        if (length < 0)
            return lastError();
        if (static_cast<size_t>(length) < target.size()) {
            target.resize(static_cast<size_t>(length));
            break;
        }
        target.resize(target.size() * 2);
    }
    if (symlink(target.c_str(), destination.c_str()) != 0)
        return lastError();
    _madeDestination |= top;
    const timespec times[2] = { status.st_atim, status.st_mtim };
    utimensat(AT_FDCWD, destination.c_str(), times, AT_SYMLINK_NOFOLLOW);
    return {};
}

void Copy::_copyAttributes(const std::string& source, const std::string& destination)
{
    const ssize_t listLength = llistxattr(source.c_str(), nullptr, 0);
    if (listLength <= 0)
        return;
    std::vector<char> list(static_cast<size_t>(listLength));
    const ssize_t listed = llistxattr(source.c_str(), list.data(), list.size());
    if (listed <= 0)
        return;
    std::vector<uint8_t> value;
    for (size_t start = 0; start < static_cast<size_t>(listed);) {
        const std::string_view name(list.data() + start);
        start += name.size() + 1;
        // Only user attributes: the others belong to the system (security labels, access lists) and the
        // destination keeps its own.
        if (!name.starts_with("user."))
            continue;
        const ssize_t valueLength = lgetxattr(source.c_str(), name.data(), nullptr, 0);
        if (valueLength < 0)
            continue;
        value.resize(static_cast<size_t>(valueLength));
        const ssize_t read = lgetxattr(source.c_str(), name.data(), value.data(), value.size());
        if (read >= 0)
            lsetxattr(destination.c_str(), name.data(), value.data(), static_cast<size_t>(read), 0);
    }
}

void Copy::_copyModeAndTimes(const std::string& destination, const struct stat& status)
{
    chmod(destination.c_str(), status.st_mode & 07777);
    const timespec times[2] = { status.st_atim, status.st_mtim };
    utimensat(AT_FDCWD, destination.c_str(), times, 0);
}

}

std::error_code ZRFileCopier::copyItem(const std::string& source, const std::string& destination)
{
    Copy copy;
    const std::error_code error = copy.item(source, destination, true);
    if (error && copy.madeDestination()) {
        std::error_code ignored;
        std::filesystem::remove_all(destination, ignored);
    }
    return error;
}
