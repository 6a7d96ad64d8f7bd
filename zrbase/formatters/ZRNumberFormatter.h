#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// Number entry: shows a number in its shortest exact form and reads text that is one finite decimal number as a
// whole (white space around it allowed). While typing, only digits, one ".", and a sign as the first character
// may stand.
class ZR_EXPORT ZRNumberFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
    bool isPartialStringValid(std::string_view text, std::string* newEditingString = nullptr,
        std::string* errorDescription = nullptr) const override;
};
