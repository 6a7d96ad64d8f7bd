#include <zrbase/host/system/ZRResourceFork.h>

#include <zrbase/host/system/ZRAppleDouble.h>
#include <zrbase/host/system/ZRFileBytesPrivate.h>
#include <zrbase/host/system/ZRFinderInfo.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

void setError(int* errorNumber, int value)
{
    if (errorNumber)
        *errorNumber = value;
}

}

std::optional<ZRData> ZRResourceFork::read(const std::string& path, Location* location)
{
    if (location)
        *location = Location::None;
    // The attribute may change size between the two calls; try again when it grew.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = getxattr(path.c_str(), attributeName, nullptr, 0);
        if (size <= 0)
            break;
        ZRData bytes(static_cast<size_t>(size));
        const ssize_t read = getxattr(path.c_str(), attributeName, bytes.data(), bytes.size());
        if (read < 0 && errno == ERANGE)
            continue;
        if (read <= 0)
            break;
        bytes.resize(static_cast<size_t>(read));
        if (location)
            *location = Location::Attribute;
        return bytes;
    }
    const std::optional<ZRData> companion = ZRFileBytes::contentsOfFile(ZRAppleDouble::companionPath(path));
    if (!companion)
        return std::nullopt;
    const std::optional<ZRAppleDouble> appleDouble = ZRAppleDouble::appleDoubleWithData(*companion);
    const ZRData* fork = appleDouble ? appleDouble->entry(ZRAppleDouble::resourceForkEntry) : nullptr;
    if (!fork || fork->empty())
        return std::nullopt;
    if (location)
        *location = Location::Companion;
    return *fork;
}

bool ZRResourceFork::write(const std::string& path, std::span<const uint8_t> bytes, int* errorNumber)
{
    Location location;
    const bool companionHoldsFork = read(path, &location) && location == Location::Companion;
    if (setxattr(path.c_str(), attributeName, bytes.data(), bytes.size(), 0) == 0)
        return !companionHoldsFork || _writeCompanion(path, bytes, errorNumber);
    const int failure = errno;
    // No user attributes here, or none this large: the companion takes the fork.
    if (failure == ENOTSUP || failure == E2BIG || failure == ENOSPC || failure == ERANGE) {
        if (!_writeCompanion(path, bytes, errorNumber))
            return false;
        // An older, smaller fork left in the attribute would hide the companion's.
        removexattr(path.c_str(), attributeName);
        return true;
    }
    setError(errorNumber, failure);
    return false;
}

bool ZRResourceFork::_writeCompanion(const std::string& path, std::span<const uint8_t> bytes, int* errorNumber)
{
    const std::string companion = ZRAppleDouble::companionPath(path);
    std::optional<ZRAppleDouble> appleDouble;
    if (const std::optional<ZRData> existing = ZRFileBytes::contentsOfFile(companion))
        appleDouble = ZRAppleDouble::appleDoubleWithData(*existing);
    if (!appleDouble) {
        appleDouble.emplace();
        appleDouble->setEntry(ZRAppleDouble::finderInfoEntry, ZRFinderInfo::infoAtPath(path).bytes());
    }
    appleDouble->setEntry(ZRAppleDouble::resourceForkEntry, bytes);
    const ZRData data = appleDouble->data();

    // Written beside the companion and renamed over it, so that a failure never leaves half a companion.
    const std::string temporary = companion + ".zrwrite";
    const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        setError(errorNumber, errno);
        return false;
    }
    const bool complete = ZRFileBytes::writeAll(descriptor, data);
    const int failure = errno;
    if (::close(descriptor) != 0 || !complete || std::rename(temporary.c_str(), companion.c_str()) != 0) {
        setError(errorNumber, complete ? errno : failure);
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool ZRResourceFork::isWritable(const std::string& path)
{
    Location location;
    if (access(path.c_str(), W_OK) != 0)
        return false;
    if (read(path, &location) && location == Location::Companion)
        return access(ZRAppleDouble::companionPath(path).c_str(), W_OK) == 0;
    return true;
}
