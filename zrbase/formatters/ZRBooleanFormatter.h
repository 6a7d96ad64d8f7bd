#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A boolean as "Yes" or "No" in the user's language; text reads as yes when its first letter is that of "Yes"
// (either case), as no otherwise, and an empty text does not read.
class ZR_EXPORT ZRBooleanFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
