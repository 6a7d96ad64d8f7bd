#include <zrbase/audio/ZRChannelLayout.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

// A layout read from any bytes holds those bytes, up to the last channel description its header counts.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::unique_ptr<ZRChannelLayout> layout = ZRChannelLayout::layoutWithData(std::span(data, size));
    if (layout && (layout->layoutSize() > size || std::memcmp(layout->layout(), data, layout->layoutSize()) != 0))
        std::abort();
    return 0;
}
