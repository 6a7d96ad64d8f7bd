#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

// The Finder information of a file or folder: 32 bytes in the Mac's layout, kept in the extended attribute
// "user.com.apple.FinderInfo" so that files copied from a Mac keep theirs. All numbers are big-endian:
//   bytes 0-3    type code (files)                bytes 8-9    Finder flags, the colour label in mask 0x000E
//   bytes 4-7    creator code (files)             bytes 24-25  extended Finder flags, the hidden extension 0x0010
// The other bytes are kept as they are read. A value type: read it, change it, write it back.
class ZR_EXPORT ZRFinderInfo {
public:
    static constexpr size_t length = 32;
    static constexpr const char* attributeName = "user.com.apple.FinderInfo";
    static constexpr uint16_t colorMask = 0x000E;
    static constexpr uint16_t hasHiddenExtension = 0x0010;

    // All zero, as a file without Finder information reads.
    ZRFinderInfo() = default;
    // The information of the item at the path (links followed); all zero when it has none, when the attribute is
    // not 32 bytes long or cannot be read.
    static ZRFinderInfo infoAtPath(const std::string& path);
    // Stores the information on the item; false where the file system keeps no user attributes or the item cannot
    // be written.
    bool writeToPath(const std::string& path) const;

    uint32_t typeCode() const noexcept { return _read32(0); }
    void setTypeCode(uint32_t code) noexcept { _write32(0, code); }
    uint32_t creatorCode() const noexcept { return _read32(4); }
    void setCreatorCode(uint32_t code) noexcept { _write32(4, code); }
    uint16_t finderFlags() const noexcept { return _read16(8); }
    void setFinderFlags(uint16_t flags) noexcept { _write16(8, flags); }
    uint16_t extendedFinderFlags() const noexcept { return _read16(24); }
    void setExtendedFinderFlags(uint16_t flags) noexcept { _write16(24, flags); }

    const std::array<uint8_t, length>& bytes() const noexcept { return _bytes; }
    bool operator==(const ZRFinderInfo&) const = default;

private:
    uint32_t _read32(size_t offset) const noexcept;
    void _write32(size_t offset, uint32_t value) noexcept;
    uint16_t _read16(size_t offset) const noexcept;
    void _write16(size_t offset, uint16_t value) noexcept;

    std::array<uint8_t, length> _bytes {};
};
