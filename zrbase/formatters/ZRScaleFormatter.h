#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A scale: 1 minor, 2 major, 3 neither, 4 both, shown in words; any other number "none". Text reads from its first
// two letters ("Mi", "Ma", "Ne", "B"), anything else as 0.
class ZR_EXPORT ZRScaleFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
