#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

#include <limits>

// The time a long operation still needs, in seconds, in rounded words: "less than a second", "about 5 seconds",
// "about 3 minutes"; 0 and the largest float (the value after reset) read "calculating...". Display only: text never
// reads.
class ZR_EXPORT ZRTimeRemainingFormatter : public ZRFormatter {
public:
    // Forgets the last value shown: time() becomes the largest finite float.
    void reset() noexcept { _time = std::numeric_limits<float>::max(); }
    // The value last shown.
    float time() const noexcept { return _time; }

    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;

private:
    mutable float _time = std::numeric_limits<float>::max();
};
