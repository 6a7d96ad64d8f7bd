#include <zrbase/file/ZRResource.h>

#include <zrbase/core/ZROSError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/system/ZRResourceStore.h>

ZRResource::ZRResource(ZRResourceHandle handle, int16_t id, uint32_t type, std::optional<std::string> name,
    std::weak_ptr<ZRResourceStore> file)
    : _handle(std::move(handle))
    , _id(id)
    , _name(std::move(name))
    , _type(type)
    , _file(std::move(file))
{
}

uint32_t ZRResource::length() const noexcept { return _handle ? static_cast<uint32_t>(_handle->size()) : 0; }

std::optional<ZRData> ZRResource::data() const
{
    if (!_handle)
        return std::nullopt;
    return *_handle;
}

void ZRResource::setData(std::span<const uint8_t> bytes)
{
    _handle = std::make_shared<ZRData>(bytes.begin(), bytes.end());
}

bool ZRResource::setChanged(ZRErrorPtr* error)
{
    const std::shared_ptr<ZRResourceStore> file = _file.lock();
    const int32_t status = file ? file->changedResource(_handle) : ZRResourceStore::resNotFound;
    if (status != ZRResourceStore::noErr && error)
        *error = ZROSError::errorWithCode(status, ZRLocalizedString("Changing a resource"));
    return status == ZRResourceStore::noErr;
}

void ZRResource::detach()
{
    if (const std::shared_ptr<ZRResourceStore> file = _file.lock())
        file->detachResource(_handle);
    _file.reset();
}
