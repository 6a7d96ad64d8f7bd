#include <zrbase/audio/ZRChannelMap.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

// Any bytes are a state that either reads or is ignored, and whatever map a state yields reads back from its own
// state unchanged.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const ZRChannelMap map = ZRChannelMap::mapWithState(std::span(data, size));
    const ZRChannelMap reread = ZRChannelMap::mapWithState(map.state());
    if (!(reread == map))
        std::abort();
    map.ties();
    map.description();
    return 0;
}
