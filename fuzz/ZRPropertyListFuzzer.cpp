#include "host/foundation/ZRPropertyList.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

// Equal kinds and values, a NaN being the same as a NaN.
bool isSame(const ZRPropertyList& a, const ZRPropertyList& b)
{
    if (a.type() != b.type() || a.isUnsigned() != b.isUnsigned())
        return false;
    if (a.type() == ZRPropertyList::Type::Real && std::isnan(a.doubleValue()))
        return std::isnan(b.doubleValue());
    if (const ZRArray* array = a.array()) {
        if (array->size() != b.array()->size())
            return false;
        for (size_t index = 0; index < array->size(); ++index) {
            if (!isSame((*array)[index], (*b.array())[index]))
                return false;
        }
        return true;
    }
    if (const ZRDictionary* dictionary = a.dictionary()) {
        if (dictionary->size() != b.dictionary()->size())
            return false;
        for (const auto& [key, value] : *dictionary) {
            const ZRPropertyList* other = ZRDictionaryObject(*b.dictionary(), key);
            if (!other || !isSame(value, *other))
                return false;
        }
        return true;
    }
    return a == b;
}

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
    if (!readAgain || !isSame(*read, *readAgain))
        std::abort();
    if (format == ZRPropertyList::Format::Binary && !isSame(value, *read))
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
