#pragma once

#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Readings of text and numbers that the formatters share.
namespace ZRFormatterText {

// The leading integer of a text as the host's strings read it: white space skipped, an optional sign, digits up to
// the first other character, 0 when there are none; saturating.
inline int32_t intValue(std::string_view text) { return ZRPropertyList(text).intValue(); }
// The leading decimal number of a text, 0 when there is none.
inline double doubleValue(std::string_view text) { return ZRPropertyList(text).doubleValue(); }
inline float floatValue(std::string_view text) { return ZRPropertyList(text).floatValue(); }

// A real truncated toward zero, saturating at the ends of the range; not-a-number gives 0.
inline int64_t truncated(double value) noexcept { return ZRPropertyList(value).longLongValue(); }
inline int32_t truncatedInt(double value) noexcept { return ZRPropertyList(value).intValue(); }
inline uint64_t truncatedUnsigned(double value) noexcept { return ZRPropertyList(value).unsignedLongLongValue(); }

// A pair of small integers packed into one as high × 256 + low 8 bits, written with a format taking the two as
// "%d"; "n/a" for 0.
std::string packedPairText(int32_t packed, std::string_view format);

// The parts of the text between the separators; an empty text is one empty part, and neighbouring separators
// leave an empty part between them.
std::vector<std::string_view> components(std::string_view text, char separator);

// Whether every character is one of `allowed` and the separator occurs at most once and not first. The empty text
// may stand.
bool isPartialTextWithSeparatorValid(std::string_view text, std::string_view allowed, char separator) noexcept;

}
