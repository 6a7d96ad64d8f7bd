#include <zrbase/formatters/ZRDataFormatter.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cstring>

std::string ZRDataFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const ZRData* data = value.data();
    if (!data)
        return {};
    uint32_t head = 0;
    std::memcpy(&head, data->data(), std::min(data->size(), sizeof head));
    return ZRStringWithFormat("%x...", head);
}

bool ZRDataFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
