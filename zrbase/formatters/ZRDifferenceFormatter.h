#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// The difference between two channels in percent with three decimals; 0 shows "0.0% (mono)", and the two
// sentinels -1 (none computed) and -2 (not applicable) show "--" and "n/a". Display only.
class ZR_EXPORT ZRDifferenceFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
