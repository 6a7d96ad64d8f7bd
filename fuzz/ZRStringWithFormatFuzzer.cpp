#include <zrbase/host/foundation/ZRPropertyList.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

// Any format text against one argument of every kind: formatting must never read past the arguments or crash.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ZRPropertyList list(ZRArray { ZRPropertyList(1.5), ZRPropertyList("text"),
        ZRPropertyList(ZRDictionary { { "key", ZRPropertyList(ZRData { 1, 2, 3 }) } }) });
    const std::string_view format(reinterpret_cast<const char*>(data), size);
    const char* nullText = nullptr;
    ZRStringWithFormat(format, -42, uint64_t(1) << 63, 2.5, "caf\xC3\xA9", std::string("name"), 'c', char16_t(0x221E),
        static_cast<const void*>(data), list, nullText, true, int16_t(-7), 1e300, 12);
    return 0;
}
