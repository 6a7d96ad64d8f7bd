#include <zrbase/file/ZRResourceFile.h>

#include <zrbase/core/ZROSError.h>
#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRUnicode.h>
#include <zrbase/host/system/ZRResourceStore.h>

#include <algorithm>

namespace {

bool fail(ZRErrorPtr* error, int32_t status, const char* action)
{
    if (error)
        *error = ZROSError::errorWithCode(status, ZRLocalizedString(action));
    return false;
}

// Names written by Mac systems are often in Mac OS Roman; UTF-8 ones are taken as they are.
std::string nameFromBytes(const std::string& bytes)
{
    if (ZRUnicode::isValidUTF8(bytes))
        return bytes;
    return ZRExtension::stringWithData(
        std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), ZRStringEncoding::MacOSRoman)
        .value_or(ZRUnicode::validUTF8(bytes));
}

// The Pascal string of a name: UTF-8 in a buffer of the name's length in UTF-16 units, at most 255 bytes, cut
// where a character begins.
std::string pascalName(const std::string& name)
{
    size_t length = std::min<size_t>({ name.size(), ZRUnicode::utf16Length(name), 255 });
    while (length < name.size() && length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
        --length;
    return name.substr(0, length);
}

}

ZRResourceFile::ZRResourceFile(std::shared_ptr<ZRResourceStore> store)
    : _store(std::move(store))
{
}

ZRResourceFile::~ZRResourceFile() { _store->close(); }

bool ZRResourceFile::createResourceFileAtPath(const std::string& path, ZRErrorPtr* error)
{
    const int32_t status = ZRResourceStore::createResourceFork(path);
    if (status == ZRResourceStore::noErr || status == ZRResourceStore::errFSForkExists)
        return true;
    return fail(error, status, "Creating a file");
}

std::unique_ptr<ZRResourceFile> ZRResourceFile::resourceFileWithPath(const std::string& path, ZRErrorPtr* error)
{
    using Fork = ZRResourceStore::Fork;
    int32_t status = ZRResourceStore::noErr;
    for (const auto& [fork, writable] :
        { std::pair { Fork::Resource, true }, { Fork::Resource, false }, { Fork::Data, true }, { Fork::Data, false } })
        if (std::unique_ptr<ZRResourceStore> store = ZRResourceStore::storeAtPath(path, fork, writable, &status))
            return std::unique_ptr<ZRResourceFile>(new ZRResourceFile(std::move(store)));
    fail(error, status, "Opening a file");
    return nullptr;
}

bool ZRResourceFile::isWritable() const noexcept { return _store->isWritable(); }

ZRResource ZRResourceFile::_resource(const ZRResourceMap::Resource& resource) const
{
    std::optional<std::string> name;
    if (resource.name && !resource.name->empty())
        name = nameFromBytes(*resource.name);
    return ZRResource(resource.handle, resource.id, resource.type, std::move(name), _store);
}

std::vector<uint32_t> ZRResourceFile::types() const { return _store->types(); }

std::vector<ZRResource> ZRResourceFile::resourcesForType(uint32_t type) const
{
    std::vector<ZRResource> result;
    for (const ZRResourceMap::Resource* resource : _store->resourcesOfType(type))
        if (resource->handle)
            result.push_back(_resource(*resource));
    return result;
}

std::optional<ZRResource> ZRResourceFile::resourceForType(uint32_t type, int16_t id) const
{
    if (const ZRResourceMap::Resource* resource = _store->resource(type, id))
        return _resource(*resource);
    return std::nullopt;
}

std::vector<ZRResource> ZRResourceFile::resources() const
{
    std::vector<ZRResource> result;
    for (uint32_t type : types()) {
        std::vector<ZRResource> ofType = resourcesForType(type);
        result.insert(result.end(), ofType.begin(), ofType.end());
    }
    return result;
}

bool ZRResourceFile::addResource(ZRResource& resource, ZRErrorPtr* error)
{
    std::optional<std::string> name;
    if (resource.name())
        name = pascalName(*resource.name());
    const int16_t id = resource.id() == 0 ? _store->uniqueID(resource.type()) : resource.id();
    const int32_t status = _store->addResource(resource.handle(), resource.type(), id, std::move(name));
    if (status != ZRResourceStore::noErr)
        return fail(error, status, "Adding a resource");
    resource.setID(id);
    resource._file = _store;
    return true;
}

bool ZRResourceFile::removeResource(const ZRResource& resource, ZRErrorPtr* error)
{
    const int32_t status = _store->removeResource(resource.handle());
    return status == ZRResourceStore::noErr || fail(error, status, "Removing a resource");
}

bool ZRResourceFile::copyToPath(const std::string& path, ZRErrorPtr* error)
{
    if (!createResourceFileAtPath(path, error))
        return false;
    const std::unique_ptr<ZRResourceFile> destination = resourceFileWithPath(path, error);
    if (!destination)
        return false;
    for (ZRResource& resource : resources()) {
        resource.detach();
        if (!destination->addResource(resource, error))
            return false;
    }
    return destination->close(error);
}

bool ZRResourceFile::close(ZRErrorPtr* error)
{
    const int32_t status = _store->close();
    return status == ZRResourceStore::noErr || fail(error, status, "Writing a file");
}
