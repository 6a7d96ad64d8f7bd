#pragma once

#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/core/ZRUUID.h>
#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// One open file: a conformed path and a buffered stdio stream, opened read-write where permitted and read-only
// otherwise. Positions and lengths are signed 64-bit byte counts; typed values are read and written in native byte
// order. The class operations manage files by path.
//
// Operations without an error parameter that have a twin with one (setPath, setLength, writeIntValueToPosition)
// show a failure as an alert and go on; so do the reads, which have no error form at all.
//
// A path names the item at its end: a trailing slash never leads through a link, so "…/link/" deletes, moves or
// copies the link and never the folder it points to.
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
    // Reads 16 bytes as an identifier; a failed read is shown as an alert and gives the all-zero identifier.
    ZRUUID readUUIDValue();

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
    // Moves or renames; nothing may exist at the destination. Within one file system the item is renamed (a change
    // of letter case only too), across file systems copied and then deleted.
    static bool movePath(const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);
    // Removes a file or a whole folder; a path where nothing exists succeeds at once. A path ending in "." or ".."
    // is refused (EINVAL), as rm refuses it.
    static bool deleteFileAtPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Copies a file, a folder with everything in it, or a link as a link; nothing may exist at the destination.
    // Holes, permissions, times and user attributes go along; memory stays bounded whatever the size.
    static bool copyPath(const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);
    // Gives the item a new name in its folder; a name without extension keeps the old one (take.aif renamed to
    // "mix" becomes mix.aif).
    static bool renamePath(const std::string& path, const std::string& name, ZRErrorPtr* error = nullptr);
    // Copies each entry of the source folder into the destination folder (created when missing), skipping names
    // of which a file exists there already. An existing sub-folder is not skipped: its copy fails.
    static bool copyItemsInDirectory(
        const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);
    // Deletes each entry of the folder, stopping at the first failure.
    static bool emptyDirectoryAtPath(const std::string& path, ZRErrorPtr* error = nullptr);

    // Delete, copy and move with administrator rights, for when the plain operation was refused: "/bin/rm",
    // "/bin/cp" or "/bin/mv" run with "-f" and the paths, through polkit's pkexec or directly when the process is
    // root. Unlike the host's they wait for the tool, so success means it finished with status 0. Failures are
    // ZRSecurityErrors with the authorization services' codes (see host/system/ZRPrivilegedTool.h). cp without
    // "-R" copies no folders.
    static bool deleteFileAtPathWithAuthentication(const std::string& path, ZRErrorPtr* error = nullptr);
    static bool copyPathWithAuthentication(
        const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);
    static bool movePathWithAuthentication(
        const std::string& source, const std::string& destination, ZRErrorPtr* error = nullptr);

    // The names in the folder without "." and "..", sorted by their bytes; nullopt with a "Listing '%@'" error when
    // the folder cannot be read.
    static std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
        const std::string& path, ZRErrorPtr* error = nullptr);
    // The sizes of all files and links in the folder and its sub-folders added up, links not followed; folders
    // themselves count nothing (their size on Linux says nothing about their contents). 0 when unreadable.
    static uint64_t sizeOfDirectoryAtPath(const std::string& path);
    // The item's size, a link's own rather than its target's; 0 when there is none.
    static uint64_t lengthOfFileAtPath(const std::string& path);
    static std::optional<ZRDate> modificationDateOfFileAtPath(const std::string& path);
    // The birth time where the file system records one (statx); otherwise the time the item's status last changed,
    // the closest date Linux keeps.
    static std::optional<ZRDate> creationDateOfFileAtPath(const std::string& path);

    // A created folder for temporary files on the same file system as the path, so that a finished file moves into
    // place without a copy, ending in "/": "/Volumes/<volume>/.velmora_temp/" for a path on a volume whose folder
    // exists; "<mount point>/.velmora_temp/" when the path lies on another file system than the home folder and
    // that folder can be written; else "~/Library/Application Support/Velmora/<name>/Temp/" expanded. Nullopt
    // when even that cannot be made.
    static std::optional<std::string> tempDirectoryForPath(const std::string& path);

    // The four-character type and creator codes, the Finder label and the hidden extension, kept in the Finder
    // information (host/system/ZRFinderInfo.h). Failures are ignored: reads give 0, and a file system without user
    // attributes keeps nothing.
    static uint32_t typeCodeAtPath(const std::string& path);
    static void setTypeCode(uint32_t code, const std::string& path);
    static uint32_t creatorCodeAtPath(const std::string& path);
    static void setCreatorCode(uint32_t code, const std::string& path);
    static void hideExtensionAtPath(const std::string& path);
    // The colour label, 0 to 7, in the Finder flags' mask 0x0E. These two take the path as it is, a "~" unexpanded.
    static uint32_t labelAtPath(const std::string& path);
    static void setLabel(uint32_t label, const std::string& path);

    // The volume of the path is mounted read-only; false when it cannot be asked.
    static bool isReadOnlyVolumeAtPath(const std::string& path);
    // The bytes an unprivileged user may still write on the volume of the path; 0 when it cannot be asked.
    static uint64_t availableBytesOnVolumeAtPath(const std::string& path);

private:
    // Audio buffers read files straight into their blocks.
    friend class ZRAudioBuffer;

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
