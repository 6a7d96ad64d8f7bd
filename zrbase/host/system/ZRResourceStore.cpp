#include <zrbase/host/system/ZRResourceStore.h>

#include <zrbase/host/system/ZRFileBytesPrivate.h>
#include <zrbase/host/system/ZRResourceFork.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int32_t statusForErrno(int number)
{
    switch (number) {
    case ENOENT:
        return ZRResourceStore::fnfErr;
    case EACCES:
    case EPERM:
    case EROFS:
        return ZRResourceStore::wrPermErr;
    default:
        return ZRResourceStore::ioErr;
    }
}

// Rewrites the file in place, keeping its inode, owner, permissions and attributes.
int32_t replaceContentsOfFile(const std::string& path, const ZRData& bytes)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        return statusForErrno(errno);
    const bool complete
        = ZRFileBytes::writeAll(descriptor, bytes) && ::ftruncate(descriptor, static_cast<off_t>(bytes.size())) == 0;
    const int32_t status = complete ? ZRResourceStore::noErr : ZRResourceStore::ioErr;
    return ::close(descriptor) == 0 ? status : ZRResourceStore::ioErr;
}

}

ZRResourceStore::ZRResourceStore(std::string path, Fork fork, bool writable, ZRResourceMap map)
    : _path(std::move(path))
    , _fork(fork)
    , _writable(writable)
    , _map(std::move(map))
{
}

ZRResourceStore::~ZRResourceStore() { close(); }

int32_t ZRResourceStore::createResourceFork(const std::string& path)
{
    if (access(path.c_str(), F_OK) != 0) {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (descriptor < 0)
            return statusForErrno(errno);
        ::close(descriptor);
    }
    if (ZRResourceFork::read(path))
        return errFSForkExists;
    int errorNumber = 0;
    const std::optional<ZRData> empty = ZRResourceMap().data();
    return ZRResourceFork::write(path, *empty, &errorNumber) ? noErr : statusForErrno(errorNumber);
}

std::unique_ptr<ZRResourceStore> ZRResourceStore::storeAtPath(
    const std::string& path, Fork fork, bool writable, int32_t* status)
{
    int32_t result = noErr;
    std::optional<ZRData> bytes;
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        result = statusForErrno(errno);
    } else if (fork == Fork::Resource) {
        bytes = ZRResourceFork::read(path);
        if (!bytes)
            result = eofErr;
        else if (writable && !ZRResourceFork::isWritable(path))
            result = wrPermErr;
    } else {
        int errorNumber = 0;
        bytes = ZRFileBytes::contentsOfFile(path, &errorNumber);
        if (!bytes)
            result = statusForErrno(errorNumber);
        else if (bytes->empty())
            result = eofErr;
        else if (writable && access(path.c_str(), W_OK) != 0)
            result = wrPermErr;
    }
    std::optional<ZRResourceMap> map;
    if (result == noErr)
        map = ZRResourceMap::mapWithData(*bytes, &result);
    if (result == noErr && writable && (map->attributes() & ZRResourceMap::mapReadOnly))
        result = wrPermErr;
    if (status)
        *status = result;
    if (result != noErr)
        return nullptr;
    return std::unique_ptr<ZRResourceStore>(new ZRResourceStore(path, fork, writable, std::move(*map)));
}

std::vector<const ZRResourceMap::Resource*> ZRResourceStore::resourcesOfType(uint32_t type)
{
    const std::vector<ZRResourceMap::Resource*> resources = _map.resourcesOfType(type);
    return { resources.begin(), resources.end() };
}

const ZRResourceMap::Resource* ZRResourceStore::resource(uint32_t type, int16_t id) { return _map.resource(type, id); }

const ZRResourceMap::Resource* ZRResourceStore::resourceWithHandle(const ZRResourceHandle& handle)
{
    return _map.resourceWithHandle(handle.get());
}

int16_t ZRResourceStore::uniqueID(uint32_t type)
{
    for (int32_t id = 128; id <= INT16_MAX; ++id)
        if (!_map.resource(type, static_cast<int16_t>(id)))
            return static_cast<int16_t>(id);
    for (int32_t id = 127; id >= INT16_MIN; --id)
        if (!_map.resource(type, static_cast<int16_t>(id)))
            return static_cast<int16_t>(id);
    return 0;
}

int32_t ZRResourceStore::addResource(
    ZRResourceHandle handle, uint32_t type, int16_t id, std::optional<std::string> name)
{
    if (!_writable)
        return wrPermErr;
    if (!handle || _map.resourceWithHandle(handle.get()) || _map.resource(type, id))
        return ZRResourceMap::addResFailed;
    if (name && name->size() > 255)
        name->resize(255);
    _map.add({ id, type, std::move(name), ZRResourceMap::resChanged, std::move(handle) });
    _changed = true;
    return noErr;
}

int32_t ZRResourceStore::_change(const ZRResourceHandle& handle, ZRResourceMap::Resource*& resource)
{
    resource = _map.resourceWithHandle(handle.get());
    if (!resource)
        return resNotFound;
    return _writable ? noErr : wrPermErr;
}

int32_t ZRResourceStore::removeResource(const ZRResourceHandle& handle)
{
    ZRResourceMap::Resource* resource = nullptr;
    if (const int32_t status = _change(handle, resource); status != noErr)
        return status == resNotFound ? rmvResFailed : status;
    if (resource->attributes & resProtected)
        return rmvResFailed;
    _map.remove(resource);
    _changed = true;
    return noErr;
}

int32_t ZRResourceStore::changedResource(const ZRResourceHandle& handle)
{
    ZRResourceMap::Resource* resource = nullptr;
    if (const int32_t status = _change(handle, resource); status != noErr)
        return status;
    resource->attributes |= ZRResourceMap::resChanged;
    _changed = true;
    return noErr;
}

int32_t ZRResourceStore::detachResource(const ZRResourceHandle& handle)
{
    ZRResourceMap::Resource* resource = _map.resourceWithHandle(handle.get());
    if (!resource)
        return resNotFound;
    resource->handle = std::make_shared<ZRData>(*handle);
    return noErr;
}

int32_t ZRResourceStore::close()
{
    const bool write = _changed && _writable;
    _changed = false;
    _writable = false;
    if (!write)
        return noErr;
    int32_t status = noErr;
    const std::optional<ZRData> bytes = _map.data(&status);
    if (!bytes)
        return status;
    if (_fork == Fork::Data)
        return replaceContentsOfFile(_path, *bytes);
    int errorNumber = 0;
    return ZRResourceFork::write(_path, *bytes, &errorNumber) ? noErr : statusForErrno(errorNumber);
}
