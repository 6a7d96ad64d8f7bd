#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <string>
#include <string_view>

// A conversion between values and the text a user reads and types, the base of every formatter of the library.
// The value object is a property-list value (numbers for most formatters).
class ZR_EXPORT ZRFormatter {
public:
    virtual ~ZRFormatter();

    // The text shown for the value; empty for a value the formatter does not show.
    virtual std::string stringForObjectValue(const ZRPropertyList& value) const = 0;
    // Reads the value from the text into `value`; false when the text does not read, `value` then unchanged.
    // `errorDescription`, where given, may receive the reason.
    virtual bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const = 0;
    // Whether the text may stand while the user is still typing; `newEditingString`, where given, may receive a
    // replacement. Every text may stand unless a formatter says otherwise.
    virtual bool isPartialStringValid(
        std::string_view text, std::string* newEditingString = nullptr, std::string* errorDescription = nullptr) const;
};
