#include <zrbase/automation/ZRAutomationEntry.h>
#include <zrbase/automation/ZRValueMap.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

// Curves from outside: a property list read as a value-map state and as an automation entry's state, or else the
// bytes taken as a kind and raw points. Whatever the points, every curve answers for every input in bounded time,
// and the setters bring any point back into the unit square.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<ZRValueMap> maps;
    if (const auto list = ZRPropertyList::propertyListWithData({ data, size }); list && list->dictionary()) {
        ZRValueMap map;
        map.setState(*list->dictionary());
        maps.push_back(map);
        const ZRAutomationEntry entry(*list->dictionary());
        maps.push_back(entry.valueMap());
        entry.valueAtTime(entry.range().midpoint());
    } else if (size >= 1) {
        ZRValueMap map;
        std::vector<ZRPoint> points((size - 1) / sizeof(ZRPoint));
        if (!points.empty())
            std::memcpy(points.data(), data + 1, points.size() * sizeof(ZRPoint));
        map.setType(data[0] % 5);
        map.setControlPoints(points);
        maps.push_back(map);
    }
    for (ZRValueMap& map : maps) {
        for (float input : { -1.0f, 0.0f, 1e-30f, 0.1f, 0.333f, 0.5f, 0.9999f, 1.0f, 2.0f, NAN, INFINITY })
            map.outputValueForInputValue(input);
        for (uint32_t i = 0; i < map.numberOfControlPoints(); ++i)
            map.setControlPoint(map.controlPointAtIndex(i), i);
        for (uint32_t i = 0; i < map.numberOfControlPoints(); ++i) {
            const ZRPoint point = map.controlPointAtIndex(i);
            const bool known = map.type() <= ZRValueMapCubic;
            if (known && (!(point.y >= 0 && point.y <= 1)))
                std::abort();
        }
        for (int i = 0; i <= 64; ++i)
            map.outputValueForInputValue(i / 64.0f);
    }
    return 0;
}
