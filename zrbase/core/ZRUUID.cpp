#include <zrbase/core/ZRUUID.h>

#include <zrbase/host/foundation/ZRCoder.h>

#include <algorithm>
#include <uuid/uuid.h>

namespace {

const char* const uuidKey = "uuid";

}

ZRUUID::ZRUUID() { uuid_generate(_bytes.data()); }

ZRUUID ZRUUID::uuidWithData(std::span<const uint8_t> data) noexcept
{
    Bytes bytes {};
    std::copy_n(data.begin(), std::min(data.size(), bytes.size()), bytes.begin());
    return ZRUUID(bytes);
}

ZRUUID ZRUUID::uuidWithString(std::string_view string)
{
    // uuid_parse reads a terminated string, so a zero character inside the text must not end it early.
    const std::string text(string);
    Bytes bytes {};
    if (text.size() != 36 || uuid_parse(text.c_str(), bytes.data()) != 0)
        bytes.fill(0);
    return ZRUUID(bytes);
}

ZRUUID::ZRUUID(const ZRKeyedUnarchiver& coder)
    : ZRUUID(uuidWithData(coder.decodeBytes(uuidKey).value_or(ZRData())))
{
}

ZRUUID ZRUUID::CAFZRAnUUID() noexcept
{
    return ZRUUID(
        Bytes { 0x24, 0x17, 0xba, 0x03, 0x6c, 0xae, 0x40, 0xde, 0x9e, 0xc9, 0x23, 0x96, 0x18, 0xb8, 0x5c, 0x16 });
}

std::string ZRUUID::description() const
{
    char text[37];
    uuid_unparse_lower(_bytes.data(), text);
    return text;
}

bool ZRUUID::isEqualToUUID(const ZRUUID& other) const noexcept
{
    return uuid_compare(_bytes.data(), other._bytes.data()) == 0;
}

void ZRUUID::encodeWithCoder(ZRKeyedArchiver& coder) const { coder.encodeBytes(uuidKey, _bytes); }
