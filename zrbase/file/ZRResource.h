#pragma once

#include <zrbase/core/ZRError.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

class ZRResourceStore;

// One resource: a four-character type, a signed 16-bit number, an optional name and a block of bytes (its
// handle). A resource read from a ZRResourceFile shares its handle with the file until it is detached; copies of
// this object show the same handle. The setters of number, name and type change this object only: they take
// effect when the resource is added to a file.
class ZR_EXPORT ZRResource {
public:
    // An empty resource without handle, to be filled with the setters and setData.
    ZRResource() = default;
    static ZRResource resource() { return {}; }
    ZRResource(ZRResourceHandle handle, int16_t id, uint32_t type, std::optional<std::string> name,
        std::weak_ptr<ZRResourceStore> file = {});

    const ZRResourceHandle& handle() const noexcept { return _handle; }
    int16_t id() const noexcept { return _id; }
    void setID(int16_t id) noexcept { _id = id; }
    const std::optional<std::string>& name() const noexcept { return _name; }
    void setName(std::optional<std::string> name) { _name = std::move(name); }
    uint32_t type() const noexcept { return _type; }
    void setType(uint32_t type) noexcept { _type = type; }

    // The handle's byte count, 0 without handle.
    uint32_t length() const noexcept;
    // A copy of the handle's bytes, nullopt without handle.
    std::optional<ZRData> data() const;
    // A new handle holding a copy of the bytes; the previous handle stays as it is (and in its file).
    void setData(std::span<const uint8_t> bytes);

    // Marks the resource changed, so that its file writes it when closed. Refused with a ZROSError on a file that
    // is read-only or closed, or when the resource is not in a file.
    bool setChanged(ZRErrorPtr* error = nullptr);
    // Detaches the handle from its file: the bytes stay here and can be added to another file; the file keeps
    // the resource.
    void detach();

private:
    friend class ZRResourceFile;

    ZRResourceHandle _handle;
    int16_t _id = 0;
    std::optional<std::string> _name;
    uint32_t _type = 0;
    std::weak_ptr<ZRResourceStore> _file;
};
