#include "file/ZRFile.h"

#include "core/ZRFileError.h"
#include "file/ZRFileManagerHandler.h"
#include "host/foundation/ZRLocalizedString.h"
#include "host/foundation/ZRStringWithFormat.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr const char* ZRFinderInfoAttribute = "user.com.apple.FinderInfo";
constexpr size_t ZRFinderInfoLength = 32;

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

std::string homeFolderOf(std::string_view user)
{
    if (user.empty()) {
        if (const char* home = std::getenv("HOME"); home && *home)
            return home;
    }
    std::array<char, 4096> buffer;
    passwd entry;
    passwd* result = nullptr;
    if (user.empty())
        getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &result);
    else
        getpwnam_r(std::string(user).c_str(), &entry, buffer.data(), buffer.size(), &result);
    return result && result->pw_dir ? result->pw_dir : std::string();
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

std::array<uint8_t, ZRFinderInfoLength> finderInfoAtPath(const std::string& path)
{
    std::array<uint8_t, ZRFinderInfoLength> info {};
    std::array<uint8_t, ZRFinderInfoLength> read {};
    if (getxattr(path.c_str(), ZRFinderInfoAttribute, read.data(), read.size()) == ZRFinderInfoLength)
        info = read;
    return info;
}

uint32_t finderInfoCode(const std::string& path, size_t offset)
{
    const std::array<uint8_t, ZRFinderInfoLength> info = finderInfoAtPath(ZRFile::conformPath(path));
    return uint32_t(info[offset]) << 24 | uint32_t(info[offset + 1]) << 16 | uint32_t(info[offset + 2]) << 8
        | info[offset + 3];
}

void setFinderInfoCode(const std::string& path, size_t offset, uint32_t code)
{
    const std::string conformed = ZRFile::conformPath(path);
    std::array<uint8_t, ZRFinderInfoLength> info = finderInfoAtPath(conformed);
    for (size_t index = 0; index < 4; ++index)
        info[offset + index] = static_cast<uint8_t>(code >> (24 - 8 * index));
    setxattr(conformed.c_str(), ZRFinderInfoAttribute, info.data(), info.size(), 0);
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

std::string ZRFile::conformPath(const std::string& path)
{
    if (path.empty() || path.front() != '~')
        return path;
    const size_t slash = path.find('/');
    const std::string_view user = std::string_view(path).substr(1, slash == std::string::npos ? slash : slash - 1);
    std::string home = homeFolderOf(user);
    // "~name" of a user who does not exist stays as it is, as the shell leaves it.
    if (home.empty())
        return path;
    if (slash != std::string::npos)
        home.append(path, slash);
    return home;
}

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
        if (std::rename(from.c_str(), to.c_str()) == 0)
            return true;
        // This branch names the file without its extension, unlike the handler's sentence below.
        if (error)
            *error = ZRFileError::errorWithCode(
                errno, ZRStringWithFormat(ZRLocalizedString("Moving '%@'"), ZRExtension::filename(from)));
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
    std::filesystem::copy(
        from, to, std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks, code);
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

std::optional<ZRDate> ZRFile::modificationDateOfFileAtPath(const std::string& path)
{
    struct stat status;
    if (stat(conformPath(path).c_str(), &status) != 0)
        return std::nullopt;
    const auto sinceEpoch
        = std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return ZRDate(std::chrono::duration_cast<ZRDate::duration>(sinceEpoch));
}

uint32_t ZRFile::typeCodeAtPath(const std::string& path) { return finderInfoCode(path, 0); }
void ZRFile::setTypeCode(uint32_t code, const std::string& path) { setFinderInfoCode(path, 0, code); }
uint32_t ZRFile::creatorCodeAtPath(const std::string& path) { return finderInfoCode(path, 4); }
void ZRFile::setCreatorCode(uint32_t code, const std::string& path) { setFinderInfoCode(path, 4, code); }
