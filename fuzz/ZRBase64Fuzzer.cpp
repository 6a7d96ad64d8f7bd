#include <zrbase/core/ZRDataExtension.h>
#include <zrbase/core/ZRStringExtension.h>

#include <cstdlib>
#include <memory>

// Any bytes as base64 text: the decoder never reads or writes out of bounds, never exceeds the capacity it is
// given, and whatever it decodes encodes back to text that decodes to the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::optional<ZRData> decoded = ZRExtension::baseDecode(std::span(data, size));
    if (decoded) {
        const std::string text = ZRExtension::encodeBase64(*decoded);
        if (ZRExtension::decodeBase64(text) != decoded)
            std::abort();
    }
    if (size > 0) {
        const size_t capacity = data[0] % 64 + 1;
        const auto destination = std::make_unique<uint8_t[]>(capacity);
        const size_t count = ZRExtension::baseDecode(data + 1, size - 1, destination.get(), capacity);
        if (count > capacity)
            std::abort();
    }
    return 0;
}
