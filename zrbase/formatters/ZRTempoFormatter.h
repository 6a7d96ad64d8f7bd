#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A tempo in beats per minute (a float): 120 shows "120.00"; 0 shows "n/a" and does not read. While typing, only
// digits and one "." after the first character may stand.
class ZR_EXPORT ZRTempoFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
    bool isPartialStringValid(std::string_view text, std::string* newEditingString = nullptr,
        std::string* errorDescription = nullptr) const override;
};
