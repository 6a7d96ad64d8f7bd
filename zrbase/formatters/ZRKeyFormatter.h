#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A key as its pitch class 0 ... 11 (0 is C): 1 shows "C#"; any other number "none". Text reads from its first
// letter (capital A-G; anything else counts as C) and a "#" after it.
class ZR_EXPORT ZRKeyFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
