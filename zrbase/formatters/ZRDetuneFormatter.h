#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A detune in cents: -12 shows "-12 cents"; text reads its leading integer clamped to -50 ... 50.
class ZR_EXPORT ZRDetuneFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
};
