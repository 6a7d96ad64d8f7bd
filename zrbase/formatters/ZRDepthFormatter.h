#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

#include <cstdint>

// A level where 1.0 is full scale, in one of the depth formats: 10 decibels ("-6.0 dB", "−∞ dB"), 11 percent,
// 12 linear, 13 a 7-bit value, 14 a 16-bit and 15 a 24-bit value in hexadecimal; not-a-number shows "--" and other
// formats the empty text. Display only.
class ZR_EXPORT ZRDepthFormatter : public ZRFormatter {
public:
    enum : uint32_t {
        Decibels = 10,
        Percent = 11,
        Linear = 12,
        SevenBit = 13,
        SixteenBitHex = 14,
        TwentyFourBitHex = 15
    };

    uint32_t depthFormat() const noexcept { return _depthFormat; }
    void setDepthFormat(uint32_t format) noexcept { _depthFormat = format; }
    bool showUnits() const noexcept { return _showUnits; }
    void setShowUnits(bool showUnits) noexcept { _showUnits = showUnits; }
    // The unit of the depth format: " dB" for decibels, "%" for percent, empty for the others.
    std::string units() const;

    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;

private:
    uint32_t _depthFormat = Decibels;
    bool _showUnits = true;
};
