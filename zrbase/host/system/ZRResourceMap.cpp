#include <zrbase/host/system/ZRResourceMap.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

uint32_t read32(std::span<const uint8_t> bytes, size_t offset)
{
    return uint32_t(bytes[offset]) << 24 | uint32_t(bytes[offset + 1]) << 16 | uint32_t(bytes[offset + 2]) << 8
        | bytes[offset + 3];
}

uint16_t read16(std::span<const uint8_t> bytes, size_t offset)
{
    return static_cast<uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

uint32_t read24(std::span<const uint8_t> bytes, size_t offset)
{
    return uint32_t(bytes[offset]) << 16 | uint32_t(bytes[offset + 1]) << 8 | bytes[offset + 2];
}

void append32(ZRData& bytes, uint32_t value)
{
    bytes.insert(bytes.end(), { uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value) });
}

void append16(ZRData& bytes, uint16_t value) { bytes.insert(bytes.end(), { uint8_t(value >> 8), uint8_t(value) }); }

void put32(ZRData& bytes, size_t offset, uint32_t value)
{
    for (int index = 0; index < 4; ++index)
        bytes[offset + index] = uint8_t(value >> (24 - 8 * index));
}

template <typename T> std::optional<T> fail(int32_t* status, int32_t code)
{
    if (status)
        *status = code;
    return std::nullopt;
}

// The layout's limits: data offsets have 24 bits, name offsets 15, list offsets 16.
constexpr size_t maximumDataOffset = 0xFFFFFF;
constexpr size_t maximumNameOffset = 0x7FFF;
constexpr size_t maximumListOffset = 0xFFFF;
constexpr size_t mapHeaderLength = 28;

}

std::optional<ZRResourceMap> ZRResourceMap::mapWithData(std::span<const uint8_t> bytes, int32_t* status)
{
    if (bytes.size() < 16)
        return fail<ZRResourceMap>(status, mapReadErr);
    const uint64_t dataOffset = read32(bytes, 0), mapOffset = read32(bytes, 4);
    const uint64_t dataLength = read32(bytes, 8), mapLength = read32(bytes, 12);
    if (dataOffset + dataLength > bytes.size() || mapOffset + mapLength > bytes.size() || mapLength < mapHeaderLength)
        return fail<ZRResourceMap>(status, mapReadErr);
    const std::span<const uint8_t> data = bytes.subspan(dataOffset, dataLength);
    const std::span<const uint8_t> map = bytes.subspan(mapOffset, mapLength);

    ZRResourceMap result;
    std::copy_n(bytes.begin() + 16, std::min<size_t>(bytes.size(), headerLength) - 16, result._reserved.begin());
    result._attributes = read16(map, 22);
    const size_t typeList = read16(map, 24), nameList = read16(map, 26);
    if (typeList + 2 > map.size() || nameList > map.size())
        return fail<ZRResourceMap>(status, mapReadErr);
    const size_t typeCount = (read16(map, typeList) + 1u) & 0xFFFF;
    if (typeList + 2 + typeCount * 8 > map.size())
        return fail<ZRResourceMap>(status, mapReadErr);

    // Reference lists by their first and last byte, to find any two that share bytes.
    std::map<size_t, size_t> lists;
    std::set<std::pair<uint32_t, int16_t>> identities;
    for (size_t typeIndex = 0; typeIndex < typeCount; ++typeIndex) {
        const size_t entry = typeList + 2 + typeIndex * 8;
        const uint32_t type = read32(map, entry);
        const size_t count = read16(map, entry + 4) + size_t { 1 };
        const size_t references = typeList + read16(map, entry + 6);
        const size_t end = references + count * 12;
        if (end > map.size() || std::find(result._types.begin(), result._types.end(), type) != result._types.end())
            return fail<ZRResourceMap>(status, mapReadErr);
        const auto next = lists.lower_bound(references);
        if ((next != lists.end() && next->first < end)
            || (next != lists.begin() && std::prev(next)->second > references))
            return fail<ZRResourceMap>(status, mapReadErr);
        lists.emplace(references, end);
        result._types.push_back(type);

        for (size_t index = 0; index < count; ++index) {
            const size_t reference = references + index * 12;
            Resource resource;
            resource.type = type;
            resource.id = static_cast<int16_t>(read16(map, reference));
            const uint16_t nameOffset = read16(map, reference + 2);
            if (nameOffset != 0xFFFF) {
                const size_t name = nameList + nameOffset;
                if (name >= map.size() || name + 1 + map[name] > map.size())
                    return fail<ZRResourceMap>(status, mapReadErr);
                resource.name = std::string(reinterpret_cast<const char*>(map.data() + name + 1), map[name]);
            }
            resource.attributes = map[reference + 4];
            const size_t offset = read24(map, reference + 5);
            if (offset + 4 > data.size() || offset + 4 + read32(data, offset) > data.size())
                return fail<ZRResourceMap>(status, mapReadErr);
            const auto start = data.begin() + static_cast<ptrdiff_t>(offset) + 4;
            resource.handle = std::make_shared<ZRData>(start, start + read32(data, offset));
            if (!identities.emplace(type, resource.id).second)
                return fail<ZRResourceMap>(status, mapReadErr);
            result._resources.push_back(std::make_unique<Resource>(std::move(resource)));
        }
    }
    return result;
}

std::optional<ZRData> ZRResourceMap::data(int32_t* status) const
{
    if (_types.size() > 0xFFFF)
        return fail<ZRData>(status, addResFailed);
    ZRData data;
    ZRData references;
    ZRData names;
    ZRData typeList;
    append16(typeList, static_cast<uint16_t>(_types.size() - 1));
    const size_t typeListLength = 2 + _types.size() * 8;
    for (uint32_t type : _types) {
        size_t count = 0;
        const size_t listOffset = typeListLength + references.size();
        for (const auto& resource : _resources) {
            if (resource->type != type)
                continue;
            ++count;
            const size_t dataOffset = data.size();
            const size_t nameOffset = names.size();
            if (dataOffset > maximumDataOffset || (resource->name && nameOffset > maximumNameOffset))
                return fail<ZRData>(status, addResFailed);
            append32(data, static_cast<uint32_t>(resource->handle ? resource->handle->size() : 0));
            if (resource->handle)
                data.insert(data.end(), resource->handle->begin(), resource->handle->end());
            append16(references, static_cast<uint16_t>(resource->id));
            if (resource->name) {
                const size_t length = std::min<size_t>(resource->name->size(), 255);
                append16(references, static_cast<uint16_t>(nameOffset));
                names.push_back(static_cast<uint8_t>(length));
                names.insert(names.end(), resource->name->begin(), resource->name->begin() + length);
            } else {
                append16(references, 0xFFFF);
            }
            references.push_back(resource->attributes & ~resChanged);
            references.insert(
                references.end(), { uint8_t(dataOffset >> 16), uint8_t(dataOffset >> 8), uint8_t(dataOffset) });
            append32(references, 0);
        }
        if (listOffset > maximumListOffset || count == 0 || count > 0x10000)
            return fail<ZRData>(status, addResFailed);
        append32(typeList, type);
        append16(typeList, static_cast<uint16_t>(count - 1));
        append16(typeList, static_cast<uint16_t>(listOffset));
    }
    const size_t nameListOffset = mapHeaderLength + typeList.size() + references.size();
    if (nameListOffset > maximumListOffset || data.size() > UINT32_MAX - headerLength)
        return fail<ZRData>(status, addResFailed);

    ZRData map(mapHeaderLength - 6, 0);
    append16(map, _attributes & ~mapChanged);
    append16(map, static_cast<uint16_t>(mapHeaderLength));
    append16(map, static_cast<uint16_t>(nameListOffset));
    map.insert(map.end(), typeList.begin(), typeList.end());
    map.insert(map.end(), references.begin(), references.end());
    map.insert(map.end(), names.begin(), names.end());

    ZRData file(16, 0);
    put32(file, 0, static_cast<uint32_t>(headerLength));
    put32(file, 4, static_cast<uint32_t>(headerLength + data.size()));
    put32(file, 8, static_cast<uint32_t>(data.size()));
    put32(file, 12, static_cast<uint32_t>(map.size()));
    // The map begins with a copy of the header, as the Resource Manager writes it.
    std::copy_n(file.begin(), 16, map.begin());
    file.insert(file.end(), _reserved.begin(), _reserved.end());
    file.insert(file.end(), data.begin(), data.end());
    file.insert(file.end(), map.begin(), map.end());
    return file;
}

std::vector<ZRResourceMap::Resource*> ZRResourceMap::resourcesOfType(uint32_t type)
{
    std::vector<Resource*> result;
    for (const auto& resource : _resources)
        if (resource->type == type)
            result.push_back(resource.get());
    return result;
}

ZRResourceMap::Resource* ZRResourceMap::resource(uint32_t type, int16_t id)
{
    for (const auto& resource : _resources)
        if (resource->type == type && resource->id == id)
            return resource.get();
    return nullptr;
}

ZRResourceMap::Resource* ZRResourceMap::resourceWithHandle(const ZRData* bytes)
{
    for (const auto& resource : _resources)
        if (bytes && resource->handle.get() == bytes)
            return resource.get();
    return nullptr;
}

ZRResourceMap::Resource& ZRResourceMap::add(Resource resource)
{
    if (std::find(_types.begin(), _types.end(), resource.type) == _types.end())
        _types.push_back(resource.type);
    _resources.push_back(std::make_unique<Resource>(std::move(resource)));
    return *_resources.back();
}

void ZRResourceMap::remove(const Resource* resource)
{
    const auto found = std::find_if(
        _resources.begin(), _resources.end(), [&](const auto& candidate) { return candidate.get() == resource; });
    if (found == _resources.end())
        return;
    const uint32_t type = (*found)->type;
    _resources.erase(found);
    if (std::none_of(_resources.begin(), _resources.end(), [&](const auto& other) { return other->type == type; }))
        _types.erase(std::find(_types.begin(), _types.end(), type));
}
