#include <zrbase/formatters/ZRTimeRemainingFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRTimeRemainingFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float seconds = value.floatValue();
    _time = seconds;
    if (seconds == 0 || seconds == std::numeric_limits<float>::max())
        return ZRLocalizedString("calculating...");
    // Each text stands for the times from the band before it up to its own bound.
    struct Band {
        float below;
        std::string_view text;
    };
    static constexpr Band bands[] = { { 1, "less than a second" }, { 3, "about a second" }, { 7, "about 5 seconds" },
        { 15, "about 10 seconds" }, { 25, "about 20 seconds" }, { 45, "about 30 seconds" }, { 90, "about a minute" } };
    if (seconds > 0) {
        for (const Band& band : bands) {
            if (seconds < band.below)
                return ZRLocalizedString(band.text);
        }
    }
    // Negative values land here too and show 0 minutes (or fewer).
    return ZRStringWithFormat(
        ZRLocalizedString("about %d minutes"), ZRFormatterText::truncatedInt((seconds + 30.0f) / 60.0f));
}

bool ZRTimeRemainingFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
