#include <zrbase/file/ZRFile.h>

#include <zrbase/core/ZRFileError.h>
#include <zrbase/file/ZRFilePrivate.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Shows the error of a failed operation whose caller gave no error slot.
void alertIfSet(const ZRErrorPtr& error)
{
    if (error)
        error->alert();
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
    _isWritable = true;
    _file = std::fopen(_path.c_str(), "r+");
    if (!_file) {
        _isWritable = false;
        _file = std::fopen(_path.c_str(), "r");
        if (!_file)
            return ZRFileError::fail(error, errno, "Opening a file");
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
    // The path the file is moved to, as movePath reads it.
    std::string conformed = ZRFileItemPath(conformPath(path));
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
        ZRFileError::fail(error, EBADF, "Retrieving the position in a file");
        return std::nullopt;
    }
    const int64_t position = ftello(_file);
    if (position == -1) {
        ZRFileError::fail(error, errno, "Retrieving the position in a file");
        return std::nullopt;
    }
    return position;
}

int64_t ZRFile::position() { return position(nullptr).value_or(-1); }

bool ZRFile::moveTo(int64_t position, ZRErrorPtr* error)
{
    if (!_file)
        return ZRFileError::fail(error, EBADF, "Moving the file pointer");
    if (fseeko(_file, position, SEEK_SET) != 0)
        return ZRFileError::fail(error, errno, "Moving the file pointer");
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
        return ZRFileError::fail(error, EBADF, "Moving the file pointer to the end");
    if (fseeko(_file, 0, SEEK_END) != 0)
        return ZRFileError::fail(error, errno, "Moving the file pointer to the end");
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
            success = ZRFileError::fail(error, _file ? errno : EBADF, "Truncating a file");
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
        return ZRFileError::fail(error, EBADF, "Reading from a file");
    // The stream's own state tells the end of the file from a read error; errno may still hold what an earlier,
    // unrelated call left there. A short read at the end of the file counts as success on purpose.
    std::clearerr(_file);
    errno = 0;
    const bool complete = std::fread(buffer, length, 1, _file) == 1;
    const int code = errno;
    const bool failed = !complete && std::ferror(_file);
    _dropCachedPages();
    if (!failed)
        return true;
    return ZRFileError::fail(error, code != 0 ? code : EIO, "Reading from a file");
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
    return ZRFileError::fail(error, errno, "Writing to a file");
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
    return ZRFileError::fail(error, result, "Synchronizing a file");
}

std::optional<ZRDate> ZRFile::modificationDate() const { return modificationDateOfFileAtPath(_path); }
uint32_t ZRFile::typeCode() const { return typeCodeAtPath(_path); }
void ZRFile::setTypeCode(uint32_t code) const { setTypeCode(code, _path); }
uint32_t ZRFile::creatorCode() const { return creatorCodeAtPath(_path); }
void ZRFile::setCreatorCode(uint32_t code) const { setCreatorCode(code, _path); }
