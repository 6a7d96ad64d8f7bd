#include <zrbase/formatters/ZRCreatorFormatter.h>

#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <array>

namespace {

struct Creator {
    uint32_t code;
    std::string_view name;
};

// In the order names are read: the family's own applications first.
constexpr std::array<Creator, 13> creators { {
    { ZRFourCharCode("VlmS"), "Velmora Studio" },
    { ZRFourCharCode("VlmL"), "Velmora Loop Editor" },
    { ZRFourCharCode("VlmB"), "Velmora Batch Converter" },
    { ZRFourCharCode("stlu"), "Garage Band" },
    { ZRFourCharCode("TVOD"), "Quicktime" },
    { ZRFourCharCode("EMAG"), "Logic Pro" },
    { ZRFourCharCode("MOUP"), "Digital Performer" },
    { ZRFourCharCode("Sd2f"), "Sound Designer II" },
    { ZRFourCharCode("auFM"), "Peak" },
    { ZRFourCharCode("StD+"), "DSP-Quattro" },
    { ZRFourCharCode("AMII"), "Amadeus" },
    { ZRFourCharCode("rKMI"), "Keymap" },
    { ZRFourCharCode("Fiss"), "Fission" },
} };

}

std::string ZRCreatorFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const auto code = static_cast<uint32_t>(value.intValue());
    if (code == 0)
        return "<none>";
    // Files of the older Sound Designer II writers carry the code with a capital F.
    const uint32_t known = code == ZRFourCharCode("Sd2F") ? ZRFourCharCode("Sd2f") : code;
    for (const Creator& creator : creators) {
        if (creator.code == known)
            return std::string(creator.name);
    }
    return ZRExtension::stringWithOSType(code);
}

bool ZRCreatorFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    const std::string_view name = text == "Quicktime Player" ? "Quicktime" : text;
    for (const Creator& creator : creators) {
        if (creator.name == name) {
            value = creator.code;
            return true;
        }
    }
    return false;
}
