#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <span>

// Conversion between doubles and the 80-bit IEEE 754 extended format as AIFF files store their sample rates: 10 bytes,
// most significant first, 1 sign bit, a 15-bit exponent biased by 16383 and a 64-bit mantissa with an explicit
// integer bit.
namespace ZRExtension {

// Writes the value's 10 bytes. Zero (also negative zero) gives ten zero bytes; infinities and NaN give the exponent
// 0x7FFF with a zero mantissa (NaN without sign). Every finite double converts exactly.
ZR_EXPORT void extended80(std::span<uint8_t, 10> destination, double value) noexcept;
// The value of 10 bytes: exponent 0x7FFF is infinity whatever the mantissa; the sign applies to every value, zero
// and infinity included. Values beyond a double's range become infinity or zero.
ZR_EXPORT double doubleFromExtended80(std::span<const uint8_t, 10> bytes) noexcept;

}
