#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

#include <cstdint>

// The application that wrote a file, from its four-character creator code: the codes of this family's own
// applications and of the common audio editors show their names, 0 shows "<none>" and other codes their four
// characters. Text reads only as one of the known names, giving the code as an unsigned number.
class ZR_EXPORT ZRCreatorFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
