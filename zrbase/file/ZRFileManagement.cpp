#include <zrbase/file/ZRFile.h>

#include <zrbase/core/ZRFileError.h>
#include <zrbase/file/ZRFileManagerHandler.h>
#include <zrbase/file/ZRFilePrivate.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>
#include <zrbase/host/system/ZRFileCopier.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace {

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b,
        [](char x, char y) { return (x >= 'A' && x <= 'Z' ? x + 32 : x) == (y >= 'A' && y <= 'Z' ? y + 32 : y); });
}

// Runs the failure of a file-management operation through a handler, as the operations that report through one
// do; answers false.
bool failThroughHandler(
    ZRErrorPtr* error, std::string_view actionTemplate, std::string_view name, int code, std::string_view path)
{
    if (error) {
        ZRFileManagerHandler handler(ZRStringWithFormat(ZRLocalizedString(actionTemplate), name));
        handler.shouldProceedAfterError(ZRFileManagerHandler::errorInfoForCode(code, path));
        *error = handler.error();
    }
    return false;
}

ZRDate dateOf(const timespec& time)
{
    const auto sinceEpoch = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return ZRDate(std::chrono::duration_cast<ZRDate::duration>(sinceEpoch));
}

ZRDate dateOf(const statx_timestamp& time)
{
    return dateOf(timespec { static_cast<time_t>(time.tv_sec), static_cast<long>(time.tv_nsec) });
}

}

std::string ZRFile::conformPath(const std::string& path) { return ZRConformPath(path); }

bool ZRFile::existsAtPath(const std::string& path)
{
    struct stat status;
    return stat(conformPath(path).c_str(), &status) == 0;
}

bool ZRFile::fileExistsAtPath(const std::string& path)
{
    struct stat status;
    return stat(conformPath(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool ZRFile::directoryExistsAtPath(const std::string& path)
{
    struct stat status;
    return stat(conformPath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool ZRFile::createFileAtPath(const std::string& path, ZRErrorPtr* error)
{
    std::FILE* file = std::fopen(conformPath(path).c_str(), "a");
    if (!file)
        return ZRFileError::fail(error, errno, "Creating a file");
    std::fclose(file);
    return true;
}

bool ZRFile::createFileAtPath(const std::string& path, std::span<const uint8_t> contents, ZRErrorPtr* error)
{
    if (!createFileAtPath(path, error))
        return false;
    const std::unique_ptr<ZRFile> file = fileWithPath(path, error);
    if (!file || !file->writeData(contents, error))
        return false;
    // A failed flush is reported as the write it is; the flush's own code has no sentence.
    if (!file->synchronize())
        return ZRFileError::fail(error, errno, "Writing to a file");
    return true;
}

bool ZRFile::createDirectoryAtPath(const std::string& path, ZRErrorPtr* error)
{
    const std::string conformed = conformPath(path);
    if (conformed.empty())
        return ZRFileError::fail(error, ENOENT, "Creating a directory");
    // Every prefix that ends before a "/" is one component more; the whole path is the last one.
    for (size_t end = conformed.find('/', 1);; end = conformed.find('/', end + 1)) {
        const std::string prefix = conformed.substr(0, end);
        if (!directoryExistsAtPath(prefix) && mkdir(prefix.c_str(), 0755) != 0) {
            const int code = errno;
            // Someone else may have made the same folder in between.
            if (code != EEXIST || !directoryExistsAtPath(prefix))
                return ZRFileError::fail(error, code, "Creating a directory");
        }
        if (end == std::string::npos)
            return true;
    }
}

bool ZRFile::movePath(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    const std::string from = ZRFileItemPath(conformPath(source));
    const std::string to = ZRFileItemPath(conformPath(destination));
    if (from == to)
        return true;
    if (equalIgnoringCase(from, to)) {
        // Where letter case tells names apart, the other spelling may be another item, which rename would replace.
        struct stat fromStatus, toStatus;
        const bool otherItem = lstat(from.c_str(), &fromStatus) == 0 && lstat(to.c_str(), &toStatus) == 0
            && (fromStatus.st_dev != toStatus.st_dev || fromStatus.st_ino != toStatus.st_ino);
        if (!otherItem && std::rename(from.c_str(), to.c_str()) == 0)
            return true;
        // This branch names the file without its extension, unlike the handler's sentence below.
        if (error)
            *error = ZRFileError::errorWithCode(otherItem ? EEXIST : errno,
                ZRStringWithFormat(ZRLocalizedString("Moving '%@'"), ZRExtension::filename(from)));
        return false;
    }

    const std::string name = ZRExtension::lastPathComponent(from);
    // Like a file manager, a move never replaces an item, and it copies across file systems.
    std::error_code code;
    if (std::filesystem::symlink_status(to, code).type() != std::filesystem::file_type::not_found)
        return failThroughHandler(error, "Moving '%@'", name, EEXIST, to);
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return true;
    if (errno != EXDEV)
        return failThroughHandler(error, "Moving '%@'", name, errno, from);
    // A copy that fails removes itself, leaving the source as it was; a source that cannot be removed after a
    // complete copy stays beside the copy, so that nothing is lost either way.
    code = ZRFileCopier::copyItem(from, to);
    if (!code)
        std::filesystem::remove_all(from, code);
    if (code)
        return failThroughHandler(error, "Moving '%@'", name, code.value(), from);
    return true;
}

bool ZRFile::deleteFileAtPath(const std::string& path, ZRErrorPtr* error)
{
    const std::string item = ZRFileItemPath(conformPath(path));
    const std::string name = item.substr(item.rfind('/') + 1);
    // "…/." and "…/.." name a folder by a way round; like rm, a delete refuses them rather than guess.
    if (name == "." || name == "..")
        return failThroughHandler(error, "Deleting '%@'", name, EINVAL, item);
    struct stat status;
    // A dangling link counts as something to delete, unlike for existsAtPath.
    if (lstat(item.c_str(), &status) != 0)
        return true;
    std::error_code code;
    std::filesystem::remove_all(item, code);
    if (code)
        return failThroughHandler(error, "Deleting '%@'", ZRExtension::lastPathComponent(item), code.value(), item);
    return true;
}

bool ZRFile::copyPath(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    const std::string from = ZRFileItemPath(conformPath(source));
    if (const std::error_code code = ZRFileCopier::copyItem(from, ZRFileItemPath(conformPath(destination))))
        return failThroughHandler(error, "Copying '%@'", ZRExtension::lastPathComponent(from), code.value(), from);
    return true;
}

bool ZRFile::renamePath(const std::string& path, const std::string& name, ZRErrorPtr* error)
{
    std::string destination = path;
    ZRExtension::replaceLastPathComponent(destination, name);
    if (ZRExtension::pathExtension(name).empty())
        ZRExtension::setPathExtension(destination, ZRExtension::pathExtension(path));
    return movePath(path, destination, error);
}

bool ZRFile::copyItemsInDirectory(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    if (!createDirectoryAtPath(destination, error))
        return false;
    const std::optional<std::vector<std::string>> names = contentsOfDirectoryAtPath(source, error);
    if (!names)
        return false;
    for (const std::string& name : *names) {
        std::string sourceItem = source;
        std::string destinationItem = destination;
        ZRExtension::appendPathComponent(sourceItem, name);
        ZRExtension::appendPathComponent(destinationItem, name);
        if (!fileExistsAtPath(destinationItem) && !copyPath(sourceItem, destinationItem, error))
            return false;
    }
    return true;
}

bool ZRFile::emptyDirectoryAtPath(const std::string& path, ZRErrorPtr* error)
{
    const std::optional<std::vector<std::string>> names = contentsOfDirectoryAtPath(path, error);
    if (!names)
        return false;
    for (const std::string& name : *names) {
        std::string item = path;
        ZRExtension::appendPathComponent(item, name);
        if (!deleteFileAtPath(item, error))
            return false;
    }
    return true;
}

std::optional<std::vector<std::string>> ZRFile::contentsOfDirectoryAtPath(const std::string& path, ZRErrorPtr* error)
{
    const std::string conformed = conformPath(path);
    std::vector<std::string> names;
    std::error_code code;
    for (std::filesystem::directory_iterator entry(conformed, code), end; !code && entry != end; entry.increment(code))
        names.push_back(entry->path().filename().string());
    if (code) {
        failThroughHandler(error, "Listing '%@'", ZRExtension::lastPathComponent(conformed), code.value(), conformed);
        return std::nullopt;
    }
    std::ranges::sort(names);
    return names;
}

uint64_t ZRFile::sizeOfDirectoryAtPath(const std::string& path)
{
    uint64_t size = 0;
    std::error_code code;
    std::filesystem::recursive_directory_iterator entry(
        conformPath(path), std::filesystem::directory_options::skip_permission_denied, code);
    for (const std::filesystem::recursive_directory_iterator end; !code && entry != end; entry.increment(code)) {
        struct stat status;
        if (lstat(entry->path().c_str(), &status) == 0 && !S_ISDIR(status.st_mode))
            size += static_cast<uint64_t>(status.st_size);
    }
    return size;
}

uint64_t ZRFile::lengthOfFileAtPath(const std::string& path)
{
    struct stat status;
    return lstat(conformPath(path).c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

std::optional<ZRDate> ZRFile::modificationDateOfFileAtPath(const std::string& path)
{
    struct stat status;
    if (stat(conformPath(path).c_str(), &status) != 0)
        return std::nullopt;
    return dateOf(status.st_mtim);
}

std::optional<ZRDate> ZRFile::creationDateOfFileAtPath(const std::string& path)
{
    struct statx status;
    if (statx(AT_FDCWD, conformPath(path).c_str(), 0, STATX_BTIME | STATX_CTIME, &status) != 0)
        return std::nullopt;
    return dateOf((status.stx_mask & STATX_BTIME) ? status.stx_btime : status.stx_ctime);
}
