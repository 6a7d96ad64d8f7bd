#include "host/foundation/ZRPropertyList.h"

#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

// What a value writes in a format must read back as a value that writes the same bytes again.
void checkRoundTrip(const ZRPropertyList& value, ZRPropertyList::Format format)
{
    const auto written = value.dataWithFormat(format);
    if (!written)
        return;
    const auto read = ZRPropertyList::propertyListWithData(*written);
    if (!read || read->dataWithFormat(format) != written)
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
