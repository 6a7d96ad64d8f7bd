#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstddef>
#include <string>
#include <string_view>

// Strings are UTF-8; rules that count characters count UTF-16 units, as the host's strings do.
namespace ZRUnicode {

// The number of UTF-16 units of the UTF-8 text: 1 per character of the Basic Multilingual Plane, 2 above it.
// Bytes that are not valid UTF-8 count one unit each.
ZR_EXPORT size_t utf16Length(std::string_view utf8) noexcept;

// Whether the text is well-formed UTF-8: no cut sequences, overlong forms, surrogates or values above U+10FFFF.
ZR_EXPORT bool isValidUTF8(std::string_view text) noexcept;
// The text with every byte that is not part of a well-formed UTF-8 sequence replaced by U+FFFD.
ZR_EXPORT std::string validUTF8(std::string_view text);
// Appends the character as UTF-8; a surrogate or a value above U+10FFFF, which UTF-8 cannot carry, becomes U+FFFD.
ZR_EXPORT void appendUTF8(std::string& text, char32_t character);

}
