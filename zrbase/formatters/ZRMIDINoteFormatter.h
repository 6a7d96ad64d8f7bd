#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

// A MIDI note number 0 ... 127 as its name, middle C (60) being "C3" and 0 "C-2"; other numbers show "<none>".
// Text reads as a name with an octave ("a#4" is 82, "G" alone 7) or as a plain number, clamped to 0 ... 127 when it
// is a name. While typing, a letter A-G must come first, then digits, at most one "#" and at most one "-".
class ZR_EXPORT ZRMIDINoteFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;
    bool isPartialStringValid(std::string_view text, std::string* newEditingString = nullptr,
        std::string* errorDescription = nullptr) const override;
};
