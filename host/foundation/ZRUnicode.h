#pragma once

#include "host/foundation/ZRExport.h"

#include <cstddef>
#include <string_view>

// Strings are UTF-8; rules that count characters count UTF-16 units, as the host's strings do.
namespace ZRUnicode {

// The number of UTF-16 units of the UTF-8 text: 1 per character of the Basic Multilingual Plane, 2 above it.
// Bytes that are not valid UTF-8 count one unit each.
ZR_EXPORT size_t utf16Length(std::string_view utf8) noexcept;

}
