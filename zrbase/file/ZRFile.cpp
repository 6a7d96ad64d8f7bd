#include <zrbase/file/ZRFile.h>

#include <zrbase/core/ZRFileError.h>
#include <zrbase/core/ZRSecurityError.h>
#include <zrbase/file/ZRFileManagerHandler.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>
#include <zrbase/host/system/ZRFileCopier.h>
#include <zrbase/host/system/ZRFinderInfo.h>
#include <zrbase/host/system/ZRPrivilegedTool.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

// Builds the error of a failed C library call, only when the caller asked for one.
bool fail(ZRErrorPtr* error, int code, const char* action)
{
    if (error)
        *error = ZRFileError::errorWithCode(code, ZRLocalizedString(action));
    return false;
}

// Shows the error of a failed operation whose caller gave no error slot.
void alertIfSet(const ZRErrorPtr& error)
{
    if (error)
        error->alert();
}

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

// Builds the error of a privileged operation, its action filled with the file name without extension.
bool failWithStatus(ZRErrorPtr* error, int32_t status, std::string_view action, const std::string& path)
{
    if (error)
        *error = ZRSecurityError::errorWithCode(status, ZRStringWithFormat(action, ZRExtension::filename(path)));
    return false;
}

// A path as the privileged tools get it. pkexec starts its program in root's home folder, so a relative path is made
// absolute. A path that would still begin with "-" (when the working folder is gone) would be read by the tool as
// an option, "-rf" among them; "./" in front names the same file and is no option.
std::string toolArgument(const std::string& path)
{
    std::error_code code;
    std::string argument = path.empty() ? path : std::filesystem::absolute(path, code).string();
    if (code)
        argument = path;
    if (argument.starts_with('-'))
        argument.insert(0, "./");
    return argument;
}

// Runs a privileged tool with "-f" and the paths (the first one names the item in the sentences).
bool runPrivilegedTool(const char* tool, const std::vector<std::string>& paths, std::string_view creationAction,
    std::string_view runAction, ZRErrorPtr* error)
{
    if (const int32_t status = ZRPrivilegedTool::createAuthorization(); status != 0)
        return failWithStatus(error, status, creationAction, paths.front());
    std::vector<std::string> arguments { "-f" };
    for (const std::string& path : paths)
        arguments.push_back(toolArgument(path));
    if (const int32_t status = ZRPrivilegedTool::executeWithPrivileges(tool, arguments); status != 0)
        return failWithStatus(error, status, runAction, paths.front());
    return true;
}

// Reads the Finder information, changes it and writes it back; where the file system keeps no user attributes,
// nothing is kept.
template <typename Change> void changeFinderInfo(const std::string& path, Change&& change)
{
    ZRFinderInfo info = ZRFinderInfo::infoAtPath(path);
    change(info);
    info.writeToPath(path);
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

ZRFile::ZRFile(std::string path)
    : _path(std::move(path))
{
}

std::unique_ptr<ZRFile> ZRFile::fileWithPath(const std::string& path, ZRErrorPtr* error)
{
    std::unique_ptr<ZRFile> file(new ZRFile(conformPath(path)));
    if (!file->_open(error))
        return nullptr;
    return file;
}

ZRFile::~ZRFile()
{
    _close();
    if (_deleteOnDestruction)
        std::remove(_path.c_str());
}

bool ZRFile::_open(ZRErrorPtr* error)
{
    const int errorBefore = errno;
    _isWritable = true;
    _file = std::fopen(_path.c_str(), "r+");
    if (!_file) {
        _isWritable = false;
        _file = std::fopen(_path.c_str(), "r");
        if (!_file)
            return fail(error, errno, "Opening a file");
        // The refused read-write attempt is no failure of this handle: later short reads look at errno.
        errno = errorBefore;
    }
    return true;
}

void ZRFile::_close() noexcept
{
    if (_file) {
        std::fclose(_file);
        _file = nullptr;
    }
}

bool ZRFile::setPath(const std::string& path, ZRErrorPtr* error)
{
    std::string conformed = conformPath(path);
    if (conformed == _path)
        return true;
    _close();
    if (!movePath(_path, conformed, error))
        return false;
    _path = std::move(conformed);
    return _open(error);
}

void ZRFile::setPath(const std::string& path)
{
    ZRErrorPtr error;
    if (!setPath(path, &error))
        alertIfSet(error);
}

void ZRFile::setEnableCaching(bool enable) { _cachingDisabled = !enable; }

void ZRFile::_dropCachedPages() noexcept
{
    if (_cachingDisabled && _file)
        posix_fadvise(fileno(_file), 0, 0, POSIX_FADV_DONTNEED);
}

std::optional<int64_t> ZRFile::position(ZRErrorPtr* error)
{
    if (!_file) {
        fail(error, EBADF, "Retrieving the position in a file");
        return std::nullopt;
    }
    const int64_t position = ftello(_file);
    if (position == -1) {
        fail(error, errno, "Retrieving the position in a file");
        return std::nullopt;
    }
    return position;
}

int64_t ZRFile::position() { return position(nullptr).value_or(-1); }

bool ZRFile::moveTo(int64_t position, ZRErrorPtr* error)
{
    if (!_file)
        return fail(error, EBADF, "Moving the file pointer");
    if (fseeko(_file, position, SEEK_SET) != 0)
        return fail(error, errno, "Moving the file pointer");
    return true;
}

bool ZRFile::moveBy(int64_t delta, ZRErrorPtr* error)
{
    const std::optional<int64_t> current = position(error);
    return current && moveTo(*current + delta, error);
}

bool ZRFile::moveToEnd(ZRErrorPtr* error)
{
    if (!_file)
        return fail(error, EBADF, "Moving the file pointer to the end");
    if (fseeko(_file, 0, SEEK_END) != 0)
        return fail(error, errno, "Moving the file pointer to the end");
    return true;
}

bool ZRFile::moveToBeginning(ZRErrorPtr* error) { return moveTo(0, error); }

std::optional<int64_t> ZRFile::length(ZRErrorPtr* error)
{
    const int64_t current = position();
    if (!moveToEnd(error))
        return std::nullopt;
    const std::optional<int64_t> end = position(error);
    if (!end || !moveTo(current, error))
        return std::nullopt;
    _fileLength = *end;
    return end;
}

int64_t ZRFile::length() { return length(nullptr).value_or(_fileLength); }

bool ZRFile::setLength(int64_t length, ZRErrorPtr* error)
{
    const int64_t current = this->length();
    bool success = true;
    if (current > length) {
        const int64_t position = this->position();
        // Buffered bytes must reach the file before it is cut, and bytes read ahead from the cut part must go.
        if (!_file || std::fflush(_file) != 0 || ftruncate(fileno(_file), length) != 0)
            success = fail(error, _file ? errno : EBADF, "Truncating a file");
        else
            fseeko(_file, position, SEEK_SET);
    } else {
        // The gap is written in blocks of a fixed size, so that a large extension never needs a large buffer.
        static const std::array<uint8_t, 65536> zeros {};
        success = moveToEnd(error);
        for (int64_t remaining = length - current; success && remaining > 0;) {
            const auto block = static_cast<uint32_t>(std::min<int64_t>(remaining, zeros.size()));
            success = writeBuffer(zeros.data(), block, error);
            remaining -= block;
        }
    }
    _fileLength = 0;
    return success;
}

void ZRFile::setLength(int64_t length)
{
    ZRErrorPtr error;
    if (!setLength(length, &error))
        alertIfSet(error);
}

bool ZRFile::_readToBuffer(void* buffer, uint32_t length, ZRErrorPtr* error)
{
    if (length == 0)
        return true;
    if (!_file)
        return fail(error, EBADF, "Reading from a file");
    const bool complete = std::fread(buffer, length, 1, _file) == 1;
    const int code = errno;
    _dropCachedPages();
    // A short read leaves errno alone at the end of the file; that case counts as success on purpose.
    if (complete || code == 0)
        return true;
    return fail(error, code, "Reading from a file");
}

std::optional<ZRData> ZRFile::readDataOfLength(uint32_t length)
{
    ZRData data(length);
    ZRErrorPtr error;
    if (!_readToBuffer(data.data(), length, &error)) {
        alertIfSet(error);
        return std::nullopt;
    }
    return data;
}

std::optional<ZRData> ZRFile::readDataOfLength(uint32_t length, int64_t position)
{
    ZRErrorPtr error;
    if (!moveTo(position, &error))
        alertIfSet(error);
    return readDataOfLength(length);
}

template <typename Value> Value ZRFile::_readValue()
{
    Value value {};
    ZRErrorPtr error;
    if (!_readToBuffer(&value, sizeof(Value), &error))
        alertIfSet(error);
    return value;
}

template <typename Value> Value ZRFile::_readValueAtPosition(int64_t position)
{
    ZRErrorPtr error;
    if (!moveTo(position, &error))
        alertIfSet(error);
    return _readValue<Value>();
}

int64_t ZRFile::readLongLongValue() { return _readValue<int64_t>(); }
int32_t ZRFile::readIntValue() { return _readValue<int32_t>(); }
int16_t ZRFile::readShortValue() { return _readValue<int16_t>(); }
int8_t ZRFile::readCharValue() { return _readValue<int8_t>(); }
int64_t ZRFile::readLongLongValueAtPosition(int64_t position) { return _readValueAtPosition<int64_t>(position); }
int32_t ZRFile::readIntValueAtPosition(int64_t position) { return _readValueAtPosition<int32_t>(position); }
int16_t ZRFile::readShortValueAtPosition(int64_t position) { return _readValueAtPosition<int16_t>(position); }
int8_t ZRFile::readCharValueAtPosition(int64_t position) { return _readValueAtPosition<int8_t>(position); }

ZRUUID ZRFile::readUUIDValue() { return ZRUUID::uuidWithData(readDataOfLength(ZRUUID::length()).value_or(ZRData())); }

bool ZRFile::writeBuffer(const void* bytes, uint32_t length, ZRErrorPtr* error)
{
    if (!_isWritable || !_file)
        return false;
    if (std::fwrite(bytes, 1, length, _file) == length || errno == 0)
        return true;
    return fail(error, errno, "Writing to a file");
}

bool ZRFile::writeData(std::span<const uint8_t> data, ZRErrorPtr* error)
{
    return writeBuffer(data.data(), static_cast<uint32_t>(data.size()), error);
}

bool ZRFile::writeString(std::string_view string, ZRStringEncoding encoding, ZRErrorPtr* error)
{
    return writeData(ZRExtension::lossyDataUsingEncoding(string, encoding), error);
}

bool ZRFile::writeLongLongValue(int64_t value, ZRErrorPtr* error) { return writeBuffer(&value, sizeof value, error); }

bool ZRFile::writeIntValue(int32_t value, ZRErrorPtr* error) { return writeBuffer(&value, sizeof value, error); }

bool ZRFile::writeLongLongValueToPosition(int64_t value, int64_t position, ZRErrorPtr* error)
{
    return moveTo(position, error) && writeLongLongValue(value, error);
}

bool ZRFile::writeIntValueToPosition(int32_t value, int64_t position, ZRErrorPtr* error)
{
    return moveTo(position, error) && writeIntValue(value, error);
}

void ZRFile::writeIntValueToPosition(int32_t value, int64_t position)
{
    ZRErrorPtr error;
    if (!writeIntValueToPosition(value, position, &error))
        alertIfSet(error);
}

bool ZRFile::synchronize(ZRErrorPtr* error)
{
    const int result = _file ? std::fflush(_file) : EOF;
    if (result == 0)
        return true;
    // The code is the flush call's own result; the file table has no reason for it (see the header).
    return fail(error, result, "Synchronizing a file");
}

std::optional<ZRDate> ZRFile::modificationDate() const { return modificationDateOfFileAtPath(_path); }
uint32_t ZRFile::typeCode() const { return typeCodeAtPath(_path); }
void ZRFile::setTypeCode(uint32_t code) const { setTypeCode(code, _path); }
uint32_t ZRFile::creatorCode() const { return creatorCodeAtPath(_path); }
void ZRFile::setCreatorCode(uint32_t code) const { setCreatorCode(code, _path); }

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
        return fail(error, errno, "Creating a file");
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
        return fail(error, errno, "Writing to a file");
    return true;
}

bool ZRFile::createDirectoryAtPath(const std::string& path, ZRErrorPtr* error)
{
    const std::string conformed = conformPath(path);
    if (conformed.empty())
        return fail(error, ENOENT, "Creating a directory");
    // Every prefix that ends before a "/" is one component more; the whole path is the last one.
    for (size_t end = conformed.find('/', 1);; end = conformed.find('/', end + 1)) {
        const std::string prefix = conformed.substr(0, end);
        if (!directoryExistsAtPath(prefix) && mkdir(prefix.c_str(), 0755) != 0) {
            const int code = errno;
            // Someone else may have made the same folder in between.
            if (code != EEXIST || !directoryExistsAtPath(prefix))
                return fail(error, code, "Creating a directory");
        }
        if (end == std::string::npos)
            return true;
    }
}

bool ZRFile::movePath(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    const std::string from = conformPath(source);
    const std::string to = conformPath(destination);
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
    const std::string conformed = conformPath(path);
    struct stat status;
    // A dangling link counts as something to delete, unlike for existsAtPath.
    if (lstat(conformed.c_str(), &status) != 0)
        return true;
    std::error_code code;
    std::filesystem::remove_all(conformed, code);
    if (code)
        return failThroughHandler(
            error, "Deleting '%@'", ZRExtension::lastPathComponent(conformed), code.value(), conformed);
    return true;
}

bool ZRFile::copyPath(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    const std::string from = conformPath(source);
    if (const std::error_code code = ZRFileCopier::copyItem(from, conformPath(destination)))
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

bool ZRFile::deleteFileAtPathWithAuthentication(const std::string& path, ZRErrorPtr* error)
{
    return runPrivilegedTool("/bin/rm", { conformPath(path) },
        ZRLocalizedString("Creating the authorization to delete '%@'"), ZRLocalizedString("Removing '%@'"), error);
}

bool ZRFile::copyPathWithAuthentication(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    return runPrivilegedTool("/bin/cp", { conformPath(source), conformPath(destination) },
        ZRLocalizedString("Creating the authorization to copy '%@'"), ZRLocalizedString("Copying '%@'"), error);
}

bool ZRFile::movePathWithAuthentication(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    // The creation sentence of the move is not localised, unlike its siblings.
    return runPrivilegedTool("/bin/mv", { conformPath(source), conformPath(destination) },
        "Creating the authorization to move '%@'", ZRLocalizedString("Moving '%@'"), error);
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

uint32_t ZRFile::typeCodeAtPath(const std::string& path)
{
    return ZRFinderInfo::infoAtPath(conformPath(path)).typeCode();
}

void ZRFile::setTypeCode(uint32_t code, const std::string& path)
{
    changeFinderInfo(conformPath(path), [code](ZRFinderInfo& info) { info.setTypeCode(code); });
}

uint32_t ZRFile::creatorCodeAtPath(const std::string& path)
{
    return ZRFinderInfo::infoAtPath(conformPath(path)).creatorCode();
}

void ZRFile::setCreatorCode(uint32_t code, const std::string& path)
{
    changeFinderInfo(conformPath(path), [code](ZRFinderInfo& info) { info.setCreatorCode(code); });
}

void ZRFile::hideExtensionAtPath(const std::string& path)
{
    changeFinderInfo(conformPath(path), [](ZRFinderInfo& info) {
        info.setExtendedFinderFlags(info.extendedFinderFlags() | ZRFinderInfo::hasHiddenExtension);
    });
}

uint32_t ZRFile::labelAtPath(const std::string& path)
{
    return (ZRFinderInfo::infoAtPath(path).finderFlags() & ZRFinderInfo::colorMask) >> 1;
}

void ZRFile::setLabel(uint32_t label, const std::string& path)
{
    changeFinderInfo(path, [label](ZRFinderInfo& info) {
        info.setFinderFlags(static_cast<uint16_t>(
            (info.finderFlags() & ~ZRFinderInfo::colorMask) | ((label << 1) & ZRFinderInfo::colorMask)));
    });
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
