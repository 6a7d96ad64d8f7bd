#include <zrbase/host/foundation/ZRCoder.h>

#include "fuzz/ZRFuzzSameValue.h"

#include <cstdint>
#include <cstdlib>
#include <span>

// Any bytes as a keyed archive: opening and decoding never crash, and a root object that reads archives again into
// an archive that reads back as the same object.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::span bytes(data, size);
    if (const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(bytes)) {
        unarchiver->className();
        for (const char* key : { "root", "state", "uuid", "NS.objects", "NS.keys", "$class", "$$class" }) {
            unarchiver->containsValueForKey(key);
            unarchiver->decodeBool(key);
            unarchiver->decodeInt(key);
            unarchiver->decodeDouble(key);
            unarchiver->decodeBytes(key);
            unarchiver->decodeObject(key);
        }
    }
    const auto object = ZRKeyedUnarchiver::unarchiveObjectWithData(bytes);
    if (!object)
        return 0;
    const auto again = ZRKeyedUnarchiver::unarchiveObjectWithData(ZRKeyedArchiver::archivedDataWithRootObject(*object));
    if (!again || !ZRFuzzIsSameValue(*object, *again))
        std::abort();
    return 0;
}
