#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// The bytes of one resource, shared between a resource file and the objects that show it. Its identity (the
// pointer) is what the store recognises a resource by, as the Resource Manager does with its handles.
using ZRResourceHandle = std::shared_ptr<ZRData>;

// A resource file in the classic layout, in memory. On disk (all numbers big-endian):
//   header     data offset, map offset, data length, map length (4 bytes each), then 240 bytes kept for the
//              system and the application (read and written back unchanged)
//   data       per resource: its length (4 bytes) and its bytes
//   map        a copy of the header (16), two reserved fields (4 + 2), the file's attributes (2), the offsets of
//              the type list and of the name list from the start of the map (2 + 2), then
//   type list  the number of types less one (2); per type: the code (4), its number of resources less one (2),
//              the offset of its reference list from the start of the type list (2)
//   references per resource: ID (2), offset of its name in the name list or -1 (2), attributes (1), offset of its
//              data in the data section (3), a reserved field (4)
//   names      Pascal strings of up to 255 bytes
// Reading checks every count and offset against the file: a map that points outside it, reference lists that
// overlap, a type listed twice or counts that run past the map are refused, never followed.
class ZR_EXPORT ZRResourceMap {
public:
    // The statuses of the Resource Manager this layer reports.
    static constexpr int32_t mapReadErr = -199;
    static constexpr int32_t addResFailed = -194;

    // Attributes of a resource (resChanged is set on changed resources until they are written) and of the map.
    static constexpr uint8_t resChanged = 0x02;
    static constexpr uint16_t mapChanged = 0x0020;
    static constexpr uint16_t mapReadOnly = 0x0080;

    static constexpr size_t headerLength = 256;

    struct Resource {
        int16_t id = 0;
        uint32_t type = 0;
        // The name's bytes as stored (up to 255), nullopt for a resource without name.
        std::optional<std::string> name;
        uint8_t attributes = 0;
        ZRResourceHandle handle;
    };

    // An empty resource file.
    ZRResourceMap() = default;
    // Reads a resource file; nullopt and mapReadErr in `status` when the bytes are not one.
    static std::optional<ZRResourceMap> mapWithData(std::span<const uint8_t> bytes, int32_t* status = nullptr);
    // The file's bytes, laid out afresh: data in the order of the map, names once each. nullopt and addResFailed
    // when the resources do not fit the layout's offsets (16 MB of data, 32 KB of names, 64 KB of map).
    std::optional<ZRData> data(int32_t* status = nullptr) const;

    // Types in the order of the file (new ones at the end), and the resources of each in the order of the file.
    const std::vector<uint32_t>& types() const noexcept { return _types; }
    std::vector<Resource*> resourcesOfType(uint32_t type);
    Resource* resource(uint32_t type, int16_t id);
    Resource* resourceWithHandle(const ZRData* bytes);
    // Adds at the end of its type's list.
    Resource& add(Resource resource);
    // Removes the resource the pointer shows; its type goes when it was the last of it.
    void remove(const Resource* resource);

    uint16_t attributes() const noexcept { return _attributes; }
    void setAttributes(uint16_t attributes) noexcept { _attributes = attributes; }

private:
    std::array<uint8_t, headerLength - 16> _reserved {};
    uint16_t _attributes = 0;
    std::vector<uint32_t> _types;
    // Resources in file order, type by type; std::unique_ptr keeps their addresses while others come and go.
    std::vector<std::unique_ptr<Resource>> _resources;
};
