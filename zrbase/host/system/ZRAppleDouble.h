#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// An AppleDouble companion: the "._name" file beside a file that Mac systems write on volumes and into archives
// without forks. Big-endian: magic 0x00051607, version 0x00020000, 16 filler bytes, the number of entries (2),
// per entry its ID, offset and length (4 each), then the entries' bytes. Entries this library does not read
// (Finder information with extended attributes, comments) are kept unchanged when one is replaced.
class ZR_EXPORT ZRAppleDouble {
public:
    static constexpr uint32_t resourceForkEntry = 2;
    static constexpr uint32_t finderInfoEntry = 9;

    struct Entry {
        uint32_t id = 0;
        ZRData bytes;
    };

    ZRAppleDouble() = default;
    // nullopt when the bytes are not an AppleDouble file or an entry lies outside them.
    static std::optional<ZRAppleDouble> appleDoubleWithData(std::span<const uint8_t> bytes);
    ZRData data() const;

    // The companion's path: "._" before the file name, in the same folder.
    static std::string companionPath(const std::string& path);

    const ZRData* entry(uint32_t id) const;
    // Replaces the entry's bytes where it is, or appends it.
    void setEntry(uint32_t id, std::span<const uint8_t> bytes);

    const std::vector<Entry>& entries() const noexcept { return _entries; }

private:
    std::vector<Entry> _entries;
};
