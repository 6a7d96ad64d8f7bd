#include <zrbase/host/foundation/ZRPropertyList.h>

#include "fuzz/ZRFuzzSameValue.h"

#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

// A value written in a format reads back as the same value, once it has been through the format: XML dates hold
// whole seconds only.
void checkRoundTrip(const ZRPropertyList& value, ZRPropertyList::Format format)
{
    const auto written = value.dataWithFormat(format);
    if (!written)
        return;
    const auto read = ZRPropertyList::propertyListWithData(*written);
    const auto writtenAgain = read ? read->dataWithFormat(format) : std::nullopt;
    const auto readAgain = writtenAgain ? ZRPropertyList::propertyListWithData(*writtenAgain) : std::nullopt;
    if (!readAgain || !ZRFuzzIsSameValue(*read, *readAgain))
        std::abort();
    if (format == ZRPropertyList::Format::Binary && !ZRFuzzIsSameValue(value, *read))
        std::abort();
}

}

// Any bytes as an XML or binary property list: reading never crashes, and whatever reads writes back faithfully.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto value = ZRPropertyList::propertyListWithData(std::span(data, size));
    if (!value)
        return 0;
    value->boolValue();
    value->intValue();
    value->doubleValue();
    value->stringValue();
    checkRoundTrip(*value, ZRPropertyList::Format::Binary);
    checkRoundTrip(*value, ZRPropertyList::Format::XML);
    return 0;
}
