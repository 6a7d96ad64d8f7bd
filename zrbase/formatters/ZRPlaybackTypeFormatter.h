#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A playback type: 1 loop, 2 one shot, shown in words; any other number "n/a". Text reads from its first letter
// (L or O, either case), anything else as 0.
class ZR_EXPORT ZRPlaybackTypeFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
