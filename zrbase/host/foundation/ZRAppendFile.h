#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

// A file opened for appending in the operating system's sense (O_APPEND): every write lands whole at the end of
// the file, whatever other processes append to it meanwhile, so that two copies of an application sharing one
// log never overwrite each other's lines. Failures answer false or null with errno's code in `code`.
class ZR_EXPORT ZRAppendFile {
public:
    // Opens the file for appending, creating it (read-write for its owner, readable for others, less the umask)
    // when it does not exist.
    static std::unique_ptr<ZRAppendFile> open(const std::string& path, int* code = nullptr);
    ~ZRAppendFile();
    ZRAppendFile(const ZRAppendFile&) = delete;
    ZRAppendFile& operator=(const ZRAppendFile&) = delete;

    const std::string& path() const noexcept { return _path; }
    // Appends all the bytes, in one write unless the system takes them in parts.
    bool append(std::span<const uint8_t> bytes, int* code = nullptr) noexcept;
    // Waits until the appended bytes are on the disk.
    bool synchronize(int* code = nullptr) noexcept;

private:
    ZRAppendFile(std::string path, int descriptor) noexcept;
    std::string _path;
    int _descriptor;
};
