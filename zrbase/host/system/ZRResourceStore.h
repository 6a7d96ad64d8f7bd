#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <memory>
#include <optional>
#include <string>

// An open resource file, doing what the Resource Manager does for one file: it reads the resources of a file's
// resource fork (ZRResourceFork) or of a file that is nothing but a resource file, hands out their handles, adds,
// removes, detaches and marks them changed, and writes the file when it is closed if anything changed. Failures
// are the Resource Manager's and file manager's status codes.
class ZR_EXPORT ZRResourceStore {
public:
    enum class Fork { Resource, Data };

    static constexpr int32_t noErr = 0;
    static constexpr int32_t ioErr = -36;
    static constexpr int32_t eofErr = -39;
    static constexpr int32_t fnfErr = -43;
    static constexpr int32_t wrPermErr = -61;
    static constexpr int32_t resNotFound = -192;
    static constexpr int32_t rmvResFailed = -196;
    static constexpr int32_t errFSForkExists = -1421;
    static constexpr uint8_t resProtected = 0x08;

    // Gives the file (made empty when missing) an empty resource fork; errFSForkExists when it has one.
    static int32_t createResourceFork(const std::string& path);
    // Opens the file's resource fork or its data fork; a writable store is refused (wrPermErr) where the file
    // cannot be written. Null and the status on failure: fnfErr for a missing file, eofErr for a missing or
    // empty fork, ZRResourceMap::mapReadErr for bytes that are not a resource file.
    static std::unique_ptr<ZRResourceStore> storeAtPath(
        const std::string& path, Fork fork, bool writable, int32_t* status = nullptr);
    ~ZRResourceStore();
    ZRResourceStore(const ZRResourceStore&) = delete;
    ZRResourceStore& operator=(const ZRResourceStore&) = delete;

    bool isWritable() const noexcept { return _writable; }

    const std::vector<uint32_t>& types() const noexcept { return _map.types(); }
    std::vector<const ZRResourceMap::Resource*> resourcesOfType(uint32_t type);
    const ZRResourceMap::Resource* resource(uint32_t type, int16_t id);
    // The resource whose handle this is, null when the handle is not attached to this file.
    const ZRResourceMap::Resource* resourceWithHandle(const ZRResourceHandle& handle);
    // A number from 128 on that no resource of the type uses.
    int16_t uniqueID(uint32_t type);

    // Each answers noErr or why it refused: wrPermErr on a read-only file, ZRResourceMap::addResFailed for a null
    // handle, one already in the file or a number in use, rmvResFailed for a handle not in the file or a
    // protected resource, resNotFound for a handle not in the file.
    int32_t addResource(ZRResourceHandle handle, uint32_t type, int16_t id, std::optional<std::string> name);
    int32_t removeResource(const ZRResourceHandle& handle);
    int32_t changedResource(const ZRResourceHandle& handle);
    // The handle leaves the file, its bytes the caller's; the file keeps the resource with a copy of them.
    int32_t detachResource(const ZRResourceHandle& handle);

    // Writes the file when anything changed; the store can still be read afterwards but not changed.
    int32_t close();

private:
    ZRResourceStore(std::string path, Fork fork, bool writable, ZRResourceMap map);
    int32_t _change(const ZRResourceHandle& handle, ZRResourceMap::Resource*& resource);

    std::string _path;
    Fork _fork;
    bool _writable;
    bool _changed = false;
    ZRResourceMap _map;
};
