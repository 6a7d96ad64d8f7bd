#include <zrbase/formatters/ZRDifferenceFormatter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

std::string ZRDifferenceFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const float difference = value.floatValue();
    if (difference == 0)
        return ZRLocalizedString("0.0% (mono)");
    if (difference == -1)
        return "--";
    if (difference == -2)
        return ZRLocalizedString("n/a");
    return ZRStringWithFormat("%.3f%%", difference);
}

bool ZRDifferenceFormatter::getObjectValue(ZRPropertyList&, std::string_view, std::string*) const { return false; }
