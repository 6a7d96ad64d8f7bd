#include <zrbase/host/system/ZRResourceMap.h>

#include <cstdlib>

// Any bytes as a resource file: reading never crashes, and a map that reads writes out bytes that read back to
// the same resources.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::optional<ZRResourceMap> map = ZRResourceMap::mapWithData(std::span(data, size));
    if (!map)
        return 0;
    const std::optional<ZRData> written = map->data();
    if (!written)
        return 0;
    std::optional<ZRResourceMap> again = ZRResourceMap::mapWithData(*written);
    if (!again || again->types() != map->types() || again->data() != written)
        std::abort();
    return 0;
}
