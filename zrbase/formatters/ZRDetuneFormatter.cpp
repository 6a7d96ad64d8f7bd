#include <zrbase/formatters/ZRDetuneFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>

std::string ZRDetuneFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    return ZRStringWithFormat("%d cents", value.intValue());
}

bool ZRDetuneFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    value = std::clamp(ZRFormatterText::intValue(text), -50, 50);
    return true;
}
