#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A channel count: "Mono", "Stereo", "LCRS", the surround names "5.0" ... "7.1" and "10.2", "--" for none and
// "3-ch" for the others (the magnitude of a negative count). Display only.
class ZR_EXPORT ZRChannelsFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
