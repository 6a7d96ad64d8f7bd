#include <zrbase/host/foundation/ZRGeometry.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// Any text reads as a rectangle, and a rectangle of finite numbers reads back from its own text form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ZRPointFromString(text);
    ZRSizeFromString(text);
    const ZRRect rect = ZRRectFromString(text);
    const ZRRect reread = ZRRectFromString(ZRStringFromRect(rect));
    const float values[] = { rect.origin.x, rect.origin.y, rect.size.width, rect.size.height };
    const float rereadValues[] = { reread.origin.x, reread.origin.y, reread.size.width, reread.size.height };
    // An infinite number is written as "inf", which is not a number to read, so only finite rectangles come back.
    for (const float value : values) {
        if (!std::isfinite(value))
            return 0;
    }
    for (size_t index = 0; index < 4; ++index) {
        // %g keeps six digits, so the text form is close to the value, not equal to it.
        if (std::fabs(rereadValues[index] - values[index]) > std::fabs(values[index]) * 1e-5f)
            std::abort();
    }
    return 0;
}
