#pragma once

#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRResource.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ZRResourceStore;

// Object access to a classic resource file: the resource fork of a file (kept in the extended attribute
// "user.com.apple.ResourceFork", or read from an AppleDouble "._name" companion where the attribute is absent),
// or a file that is nothing but a resource file. Changes are written when the file is closed or destroyed; the
// layout is the one Mac systems read and write, byte for byte. Failures are ZROSError objects with the Resource
// Manager's status codes.
class ZR_EXPORT ZRResourceFile {
public:
    // Gives the file an empty resource fork (making the file when it is missing); a fork already there counts as
    // success.
    static bool createResourceFileAtPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Opens, in this order, the resource fork for reading and writing, then for reading only, then the data fork
    // for reading and writing, then for reading only.
    static std::unique_ptr<ZRResourceFile> resourceFileWithPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Closes the file, writing its changes.
    ~ZRResourceFile();
    ZRResourceFile(const ZRResourceFile&) = delete;
    ZRResourceFile& operator=(const ZRResourceFile&) = delete;

    bool isWritable() const noexcept;

    // The file's types and resources, in the file's order.
    std::vector<uint32_t> types() const;
    std::vector<ZRResource> resourcesForType(uint32_t type) const;
    std::optional<ZRResource> resourceForType(uint32_t type, int16_t id) const;
    std::vector<ZRResource> resources() const;

    // Adds the resource's handle under its type, number and name (in UTF-8, cut at a character boundary to the
    // name's length in UTF-16 units and 255 bytes); number 0 takes a number not yet used for the type, which the
    // resource then carries. Refused on a read-only file, for a resource without handle or with a number in use.
    bool addResource(ZRResource& resource, ZRErrorPtr* error = nullptr);
    bool removeResource(const ZRResource& resource, ZRErrorPtr* error = nullptr);
    // Creates a resource fork on the destination and moves every resource there, detaching it from this file
    // (which is not changed on disk).
    bool copyToPath(const std::string& path, ZRErrorPtr* error = nullptr);

    // Writes the changes now; afterwards the file reads but takes no changes.
    bool close(ZRErrorPtr* error = nullptr);

private:
    explicit ZRResourceFile(std::shared_ptr<ZRResourceStore> store);
    ZRResource _resource(const ZRResourceMap::Resource& resource) const;

    std::shared_ptr<ZRResourceStore> _store;
};
