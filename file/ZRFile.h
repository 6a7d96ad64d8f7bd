#pragma once

#include "core/ZRError.h"
#include "core/ZRStringExtension.h"
#include "host/foundation/ZRData.h"
#include "host/foundation/ZRExport.h"
#include "host/foundation/ZRPropertyList.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// One open file: a conformed path and a buffered stdio stream, opened read-write where permitted and read-only
// otherwise. Positions and lengths are signed 64-bit byte counts; typed values are read and written in native byte
// order. The class operations manage files by path.
//
// Operations without an error parameter that have a twin with one (setPath, setLength, writeIntValueToPosition)
// show a failure as an alert and go on; so do the reads, which have no error form at all.
class ZR_EXPORT ZRFile {
public:
    // Opens an existing file ("r+", then "r"); never creates one. Null with an "Opening a file" error on failure.
    static std::unique_ptr<ZRFile> fileWithPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Closes the stream and removes the file when deleteOnDestruction() was called.
    ~ZRFile();
    ZRFile(const ZRFile&) = delete;
    ZRFile& operator=(const ZRFile&) = delete;

    // Marks the file for removal from the disk when this handle is destroyed; meant for temporary files.
    void deleteOnDestruction() noexcept { _deleteOnDestruction = true; }

    // Renames the file on disk (a change of letter case only included) and reopens it. After a failed rename the
    // handle stays closed and unusable.
    bool setPath(const std::string& path, ZRErrorPtr* error);
    void setPath(const std::string& path);
    const std::string& path() const noexcept { return _path; }
    // The stdio stream; null only after a failed setPath.
    std::FILE* file() const noexcept { return _file; }
    bool isWritable() const noexcept { return _isWritable; }

    // Switches the operating system's caching of this file's data. Linux has no per-descriptor no-cache flag:
    // while caching is off, the file's pages are dropped from the page cache after every read (posix_fadvise
    // POSIX_FADV_DONTNEED), so that a large file read once does not push other data out of memory.
    void setEnableCaching(bool enable);

    // The current position; nullopt with "Retrieving the position in a file" on failure.
    std::optional<int64_t> position(ZRErrorPtr* error);
    // The current position, -1 on failure.
    int64_t position();
    bool moveTo(int64_t position, ZRErrorPtr* error = nullptr);
    bool moveBy(int64_t delta, ZRErrorPtr* error = nullptr);
    bool moveToEnd(ZRErrorPtr* error = nullptr);
    bool moveToBeginning(ZRErrorPtr* error = nullptr);

    // The length measured now; the position is left where it was.
    std::optional<int64_t> length(ZRErrorPtr* error);
    // The length measured now, or the last length measured when the measurement fails.
    int64_t length();
    // Cuts the file (position unchanged) or extends it with zero bytes (position at the new end).
    bool setLength(int64_t length, ZRErrorPtr* error);
    void setLength(int64_t length);

    // Reads up to length bytes into a zero-filled block: a short read at the end of the file succeeds with the rest
    // of the block left zero. Null when the read fails.
    std::optional<ZRData> readDataOfLength(uint32_t length);
    // The same at a position; a failed move is shown and the read is still attempted where the stream stands.
    std::optional<ZRData> readDataOfLength(uint32_t length, int64_t position);
    // Typed reads: what was read, zero where the file ended early.
    int64_t readLongLongValue();
    int32_t readIntValue();
    int16_t readShortValue();
    int8_t readCharValue();
    int64_t readLongLongValueAtPosition(int64_t position);
    int32_t readIntValueAtPosition(int64_t position);
    int16_t readShortValueAtPosition(int64_t position);
    int8_t readCharValueAtPosition(int64_t position);

    // Writes at the current position. A read-only handle answers false and makes no error.
    bool writeBuffer(const void* bytes, uint32_t length, ZRErrorPtr* error = nullptr);
    bool writeData(std::span<const uint8_t> data, ZRErrorPtr* error = nullptr);
    // The text converted to the encoding, unrepresentable characters substituted by "?", without a terminator.
    bool writeString(std::string_view string, ZRStringEncoding encoding, ZRErrorPtr* error = nullptr);
    bool writeLongLongValue(int64_t value, ZRErrorPtr* error = nullptr);
    bool writeIntValue(int32_t value, ZRErrorPtr* error = nullptr);
    bool writeLongLongValueToPosition(int64_t value, int64_t position, ZRErrorPtr* error = nullptr);
    bool writeIntValueToPosition(int32_t value, int64_t position, ZRErrorPtr* error);
    void writeIntValueToPosition(int32_t value, int64_t position);
    // Pushes the stream's buffer to the operating system. A failure with an error slot builds a ZRFileError of code
    // -1, which has no reason and therefore throws std::invalid_argument; without a slot it answers false.
    bool synchronize(ZRErrorPtr* error = nullptr);

    // This file's attributes (see the class operations of the same names).
    std::optional<ZRDate> modificationDate() const;
    uint32_t typeCode() const;
    void setTypeCode(uint32_t code) const;
    uint32_t creatorCode() const;
    void setCreatorCode(uint32_t code) const;

    // The path with a leading "~" expanded to the home folder; every other path unchanged.
    static std::string conformPath(const std::string& path);
    // Anything exists at the path / something that is not a directory / a directory.
    static bool existsAtPath(const std::string& path);
    static bool fileExistsAtPath(const std::string& path);
    static bool directoryExistsAtPath(const std::string& path);

    // Creates an empty file unless one exists; an existing file is left as it is.
    static bool createFileAtPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Creates the file and writes the contents from position 0; an existing longer file keeps its tail.
    static bool createFileAtPath(
        const std::string& path, std::span<const uint8_t> contents, ZRErrorPtr* error = nullptr);
    // Creates every missing folder of the path (permissions 0755).
    static bool createDirectoryAtPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Moves or renames; a change of letter case only is renamed in place.
    static bool movePath(const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);
    // Removes a file or a whole folder; a path where nothing exists succeeds at once.
    static bool deleteFileAtPath(const std::string& path, ZRErrorPtr* error = nullptr);
    static std::optional<ZRDate> modificationDateOfFileAtPath(const std::string& path);

    // The four-character type and creator codes, kept in the extended attribute "user.com.apple.FinderInfo".
    // Failures are ignored: reads give 0, and a file system without user attributes keeps nothing.
    static uint32_t typeCodeAtPath(const std::string& path);
    static void setTypeCode(uint32_t code, const std::string& path);
    static uint32_t creatorCodeAtPath(const std::string& path);
    static void setCreatorCode(uint32_t code, const std::string& path);

private:
    explicit ZRFile(std::string path);
    bool _open(ZRErrorPtr* error);
    void _close() noexcept;
    bool _readToBuffer(void* buffer, uint32_t length, ZRErrorPtr* error);
    template <typename Value> Value _readValue();
    template <typename Value> Value _readValueAtPosition(int64_t position);
    void _dropCachedPages() noexcept;

    std::string _path;
    std::FILE* _file = nullptr;
    int64_t _fileLength = 0;
    bool _isWritable = false;
    bool _deleteOnDestruction = false;
    bool _cachingDisabled = false;
};
