#pragma once

#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cmath>

// Equal kinds and values, a NaN being the same as a NaN: what the fuzzers expect of a value that went through a
// format and came back. (libplist's binary writer may share equal objects or not, so bytes are no measure.)
inline bool ZRFuzzIsSameValue(const ZRPropertyList& a, const ZRPropertyList& b)
{
    if (a.type() != b.type() || a.isUnsigned() != b.isUnsigned())
        return false;
    if (a.type() == ZRPropertyList::Type::Real && std::isnan(a.doubleValue()))
        return std::isnan(b.doubleValue());
    if (const ZRArray* array = a.array()) {
        if (array->size() != b.array()->size())
            return false;
        for (size_t index = 0; index < array->size(); ++index) {
            if (!ZRFuzzIsSameValue((*array)[index], (*b.array())[index]))
                return false;
        }
        return true;
    }
    if (const ZRDictionary* dictionary = a.dictionary()) {
        if (dictionary->size() != b.dictionary()->size())
            return false;
        for (const auto& [key, value] : *dictionary) {
            const ZRPropertyList* other = ZRDictionaryObject(*b.dictionary(), key);
            if (!other || !ZRFuzzIsSameValue(value, *other))
                return false;
        }
        return true;
    }
    return a == b;
}
