#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A time signature packed as numerator × 256 + denominator: 1796 shows "7/4"; 0 shows "n/a". Text reads with the
// numerator clamped to 2 ... 16 and a denominator other than 2, 4, 8, 16, 32 or 64 taken as 4. While typing, only
// digits and one "/" after the first character may stand.
class ZR_EXPORT ZRTimeSignatureFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
    bool isPartialStringValid(std::string_view text, std::string* newEditingString = nullptr,
        std::string* errorDescription = nullptr) const override;
};
