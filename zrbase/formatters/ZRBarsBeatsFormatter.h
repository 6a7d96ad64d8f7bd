#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A length in bars and beats packed as bars × 256 + beats: 1029 shows "4|5"; 0 shows "n/a". Text reads unclamped
// (beats above 255 spill into the bars). While typing, only digits and one "|" after the first character may stand.
class ZR_EXPORT ZRBarsBeatsFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
    bool isPartialStringValid(std::string_view text, std::string* newEditingString = nullptr,
        std::string* errorDescription = nullptr) const override;
};
