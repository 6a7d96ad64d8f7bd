#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

class ZRKeyedArchiver;
class ZRKeyedUnarchiver;

// A universally unique identifier: 16 bytes in the standard layout (network byte order). It never changes after
// construction.
class ZR_EXPORT ZRUUID {
public:
    using Bytes = std::array<uint8_t, 16>;

    static constexpr uint32_t length() noexcept { return 16; }

    // A newly generated identifier.
    ZRUUID();
    static ZRUUID uuid() { return ZRUUID(); }
    explicit ZRUUID(const Bytes& bytes) noexcept
        : _bytes(bytes)
    {
    }
    static ZRUUID uuidWithUUID(const Bytes& bytes) noexcept { return ZRUUID(bytes); }
    // The first 16 bytes of the data; bytes missing from shorter data are 0.
    static ZRUUID uuidWithData(std::span<const uint8_t> data) noexcept;
    // The 36-character text form (hexadecimal digits of either case); text that does not parse gives the all-zero
    // identifier.
    static ZRUUID uuidWithString(std::string_view string);
    // The bytes stored under "uuid" (at most 16, missing ones 0).
    explicit ZRUUID(const ZRKeyedUnarchiver& coder);
    // The identifier "2417ba03-6cae-40de-9ec9-239618b85c16" that marks the library's own chunks in CAF files.
    static ZRUUID CAFZRAnUUID() noexcept;

    const Bytes& bytes() const noexcept { return _bytes; }
    ZRData dataValue() const { return ZRData(_bytes.begin(), _bytes.end()); }
    // The 36-character text form in lower case, 8-4-4-4-12 hexadecimal digits with hyphens.
    std::string description() const;
    // Byte 0 × 256 + byte 1.
    uint32_t hash() const noexcept { return uint32_t(_bytes[0]) << 8 | _bytes[1]; }

    bool isEqualToUUID(const ZRUUID& other) const noexcept;
    bool operator==(const ZRUUID& other) const noexcept { return isEqualToUUID(other); }

    // The 16 bytes under the key "uuid".
    void encodeWithCoder(ZRKeyedArchiver& coder) const;

private:
    Bytes _bytes {};
};
