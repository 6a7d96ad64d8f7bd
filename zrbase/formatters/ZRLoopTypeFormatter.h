#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A loop type: -1 none, 0 forward, 1 forward-backward, 2 backward, shown in words; other numbers "unknown".
// Text reads only as one of the four words in the user's language, anything else as -1.
class ZR_EXPORT ZRLoopTypeFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
