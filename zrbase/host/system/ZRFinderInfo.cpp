#include <zrbase/host/system/ZRFinderInfo.h>

#include <sys/xattr.h>

ZRFinderInfo ZRFinderInfo::infoAtPath(const std::string& path)
{
    ZRFinderInfo info;
    std::array<uint8_t, length> read {};
    if (getxattr(path.c_str(), attributeName, read.data(), read.size()) == static_cast<ssize_t>(length))
        info._bytes = read;
    return info;
}

bool ZRFinderInfo::writeToPath(const std::string& path) const
{
    return setxattr(path.c_str(), attributeName, _bytes.data(), _bytes.size(), 0) == 0;
}

uint32_t ZRFinderInfo::_read32(size_t offset) const noexcept
{
    return uint32_t(_read16(offset)) << 16 | _read16(offset + 2);
}

void ZRFinderInfo::_write32(size_t offset, uint32_t value) noexcept
{
    _write16(offset, static_cast<uint16_t>(value >> 16));
    _write16(offset + 2, static_cast<uint16_t>(value));
}

uint16_t ZRFinderInfo::_read16(size_t offset) const noexcept
{
    return static_cast<uint16_t>(_bytes[offset] << 8 | _bytes[offset + 1]);
}

void ZRFinderInfo::_write16(size_t offset, uint16_t value) noexcept
{
    _bytes[offset] = static_cast<uint8_t>(value >> 8);
    _bytes[offset + 1] = static_cast<uint8_t>(value);
}
