#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A linear gain in decibels with one decimal: 0.5 shows "-6.0 dB", 0 "-∞ dB", a negative gain or not-a-number "--".
// Text reads its leading number as decibels, unit or not, and gives the linear gain.
class ZR_EXPORT ZRDecibelFormatter : public ZRFormatter {
public:
    bool showUnits() const noexcept { return _showUnits; }
    void setShowUnits(bool showUnits) noexcept { _showUnits = showUnits; }

    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;

private:
    bool _showUnits = true;
};
