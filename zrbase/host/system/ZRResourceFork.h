#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <optional>
#include <span>
#include <string>

// Where a file's resource fork lives on Linux: in the extended attribute "user.com.apple.ResourceFork" (beside the
// Finder information in "user.com.apple.FinderInfo"), or, where the attribute is absent, in the AppleDouble
// companion "._name" that Mac systems write on other volumes and into archives. An empty fork counts as none.
class ZR_EXPORT ZRResourceFork {
public:
    static constexpr const char* attributeName = "user.com.apple.ResourceFork";
    enum class Location { None, Attribute, Companion };

    // The fork's bytes and where they were found; nullopt when the file has no fork.
    static std::optional<ZRData> read(const std::string& path, Location* location = nullptr);
    // Stores the fork in the attribute, or in the companion where the file system keeps no attribute of that size.
    // A companion that already holds a fork is brought up to date as well, so the two never disagree. On failure
    // false and the system's error number in `errorNumber`.
    static bool write(const std::string& path, std::span<const uint8_t> bytes, int* errorNumber = nullptr);
    // Whether write may succeed: the file, and a companion that holds the fork, can be written.
    static bool isWritable(const std::string& path);

private:
    static bool _writeCompanion(const std::string& path, std::span<const uint8_t> bytes, int* errorNumber);
};
