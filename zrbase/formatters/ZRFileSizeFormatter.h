#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A size in bytes in units of 1024: "1023 B", "1 KB", "1.0 MB", "1024.00 GB" (no larger unit). Display only.
class ZR_EXPORT ZRFileSizeFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
