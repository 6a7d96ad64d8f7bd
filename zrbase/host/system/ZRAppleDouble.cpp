#include <zrbase/host/system/ZRAppleDouble.h>

#include <algorithm>

namespace {

constexpr uint32_t magic = 0x00051607;
constexpr size_t headerLength = 26;
constexpr size_t entryLength = 12;
// What Mac systems write into the filler.
constexpr char filler[] = "Mac OS X        ";

uint32_t read32(std::span<const uint8_t> bytes, size_t offset)
{
    return uint32_t(bytes[offset]) << 24 | uint32_t(bytes[offset + 1]) << 16 | uint32_t(bytes[offset + 2]) << 8
        | bytes[offset + 3];
}

void append32(ZRData& bytes, uint32_t value)
{
    bytes.insert(bytes.end(), { uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value) });
}

}

std::optional<ZRAppleDouble> ZRAppleDouble::appleDoubleWithData(std::span<const uint8_t> bytes)
{
    if (bytes.size() < headerLength || read32(bytes, 0) != magic
        || (read32(bytes, 4) != 0x00020000 && read32(bytes, 4) != 0x00010000))
        return std::nullopt;
    const size_t count = size_t(bytes[24]) << 8 | bytes[25];
    if (headerLength + count * entryLength > bytes.size())
        return std::nullopt;
    ZRAppleDouble result;
    for (size_t index = 0; index < count; ++index) {
        const size_t entry = headerLength + index * entryLength;
        const uint64_t offset = read32(bytes, entry + 4), length = read32(bytes, entry + 8);
        if (offset + length > bytes.size())
            return std::nullopt;
        const auto start = bytes.begin() + static_cast<ptrdiff_t>(offset);
        result._entries.push_back({ read32(bytes, entry), ZRData(start, start + static_cast<ptrdiff_t>(length)) });
    }
    return result;
}

ZRData ZRAppleDouble::data() const
{
    ZRData bytes;
    append32(bytes, magic);
    append32(bytes, 0x00020000);
    bytes.insert(bytes.end(), filler, filler + 16);
    bytes.push_back(static_cast<uint8_t>(_entries.size() >> 8));
    bytes.push_back(static_cast<uint8_t>(_entries.size()));
    size_t offset = headerLength + _entries.size() * entryLength;
    for (const Entry& entry : _entries) {
        append32(bytes, entry.id);
        append32(bytes, static_cast<uint32_t>(offset));
        append32(bytes, static_cast<uint32_t>(entry.bytes.size()));
        offset += entry.bytes.size();
    }
    for (const Entry& entry : _entries)
        bytes.insert(bytes.end(), entry.bytes.begin(), entry.bytes.end());
    return bytes;
}

std::string ZRAppleDouble::companionPath(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return "._" + path;
    return path.substr(0, slash + 1) + "._" + path.substr(slash + 1);
}

const ZRData* ZRAppleDouble::entry(uint32_t id) const
{
    const auto found
        = std::find_if(_entries.begin(), _entries.end(), [&](const Entry& entry) { return entry.id == id; });
    return found == _entries.end() ? nullptr : &found->bytes;
}

void ZRAppleDouble::setEntry(uint32_t id, std::span<const uint8_t> bytes)
{
    const auto found
        = std::find_if(_entries.begin(), _entries.end(), [&](const Entry& entry) { return entry.id == id; });
    if (found != _entries.end())
        found->bytes.assign(bytes.begin(), bytes.end());
    else
        _entries.push_back({ id, ZRData(bytes.begin(), bytes.end()) });
}
