#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

#include <optional>
#include <string_view>

// Operations the library adds to its formatters.
namespace ZRExtension {

// The value the formatter reads from the text; nothing when the text does not read.
ZR_EXPORT std::optional<ZRPropertyList> objectValueForString(const ZRFormatter& formatter, std::string_view text);

}
