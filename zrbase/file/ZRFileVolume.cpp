#include <zrbase/file/ZRFile.h>

#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

// "/Volumes/<volume>/.velmora_temp/" for a path on a volume whose folder exists. On Linux nothing mounts there by
// itself, so a missing volume folder is not made.
std::optional<std::string> volumeTempFolder(const std::string& path)
{
    constexpr std::string_view volumes = "/Volumes/";
    if (!path.starts_with(volumes))
        return std::nullopt;
    const std::string volume = path.substr(volumes.size(), path.find('/', volumes.size()) - volumes.size());
    if (volume.empty() || !ZRFile::directoryExistsAtPath(std::string(volumes) + volume))
        return std::nullopt;
    return ZRStringWithFormat("/Volumes/%@/.velmora_temp/", volume);
}

// "<mount point>/.velmora_temp/" when the path lies on another file system than the home folder. The mount point is
// the highest folder above the path's nearest existing folder that is still on the same device, so links on the
// way lead to the file system the path really uses.
std::optional<std::string> mountPointTempFolder(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code code;
    fs::path folder = fs::absolute(path, code).lexically_normal();
    if (code)
        return std::nullopt;
    struct stat status;
    while (stat(folder.c_str(), &status) != 0) {
        if (!folder.has_relative_path())
            return std::nullopt;
        folder = folder.parent_path();
    }
    struct stat home;
    if (stat(ZRHomeDirectory().c_str(), &home) != 0 || home.st_dev == status.st_dev)
        return std::nullopt;
    while (folder.has_relative_path()) {
        const fs::path parent = folder.parent_path();
        struct stat parentStatus;
        if (stat(parent.c_str(), &parentStatus) != 0 || parentStatus.st_dev != status.st_dev)
            break;
        folder = parent;
    }
    std::string mountPoint = folder.string();
    while (mountPoint.ends_with('/'))
        mountPoint.pop_back();
    return mountPoint + "/.velmora_temp/";
}

}

std::optional<std::string> ZRFile::tempDirectoryForPath(const std::string& path)
{
    const std::string conformed = conformPath(path);
    for (const std::optional<std::string>& candidate :
        { volumeTempFolder(conformed), mountPointTempFolder(conformed) }) {
        // A folder someone else made there may exist without being ours to write in.
        if (candidate && createDirectoryAtPath(*candidate) && access(candidate->c_str(), W_OK | X_OK) == 0)
            return candidate;
    }
    std::string folder = ZRSupportDirectory() + "Temp/";
    if (!createDirectoryAtPath(folder))
        return std::nullopt;
    return folder;
}

bool ZRFile::isReadOnlyVolumeAtPath(const std::string& path)
{
    struct statvfs status;
    return statvfs(conformPath(path).c_str(), &status) == 0 && (status.f_flag & ST_RDONLY);
}

uint64_t ZRFile::availableBytesOnVolumeAtPath(const std::string& path)
{
    // The fragment size is the unit the block counts are in; the block size is only the preferred I/O size.
    struct statvfs status;
    if (statvfs(conformPath(path).c_str(), &status) != 0)
        return 0;
    return static_cast<uint64_t>(status.f_bavail) * status.f_frsize;
}
