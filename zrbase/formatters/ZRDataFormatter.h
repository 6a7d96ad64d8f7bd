#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// Data as its first four bytes (one 32-bit integer in host byte order) in hexadecimal followed by "...": the
// rest is elided. Missing bytes count as zero; a value that is not data shows the empty text. Display only.
class ZR_EXPORT ZRDataFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
