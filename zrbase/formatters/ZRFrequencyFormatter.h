#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A frequency in Hz: below 10 kHz "9999.9 Hz", from there on "10.000 kHz". Text reads its leading number, in kHz
// when the text says "kHz".
class ZR_EXPORT ZRFrequencyFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
