#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// How two signals combine: 0 "Add", 1 "Subtract", 2 "Duck", 3 "Ring", other numbers "unknown"; any other text
// reads as 0.
class ZR_EXPORT ZRCombineTypeFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
