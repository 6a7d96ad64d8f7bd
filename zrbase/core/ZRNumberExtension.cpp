#include <zrbase/core/ZRNumberExtension.h>

#include <cmath>

namespace {

constexpr int ZRExtendedBias = 16383;
constexpr uint16_t ZRExtendedSign = 0x8000;
constexpr uint16_t ZRExtendedInfinity = 0x7FFF;

void storeBigEndian(uint8_t* destination, uint64_t value, int bytes) noexcept
{
    for (int index = bytes - 1; index >= 0; --index, value >>= 8)
        destination[index] = static_cast<uint8_t>(value);
}

uint32_t loadBigEndian32(const uint8_t* source) noexcept
{
    return uint32_t(source[0]) << 24 | uint32_t(source[1]) << 16 | uint32_t(source[2]) << 8 | source[3];
}

}

namespace ZRExtension {

void extended80(std::span<uint8_t, 10> destination, double value) noexcept
{
    uint16_t exponent = 0;
    uint32_t high = 0;
    uint32_t low = 0;
    // Negative zero and NaN do not compare below zero, so they keep a clear sign.
    if (value < 0) {
        exponent = ZRExtendedSign;
        value = -value;
    }
    if (!std::isfinite(value)) {
        exponent |= ZRExtendedInfinity;
    } else if (value != 0) {
        int power = 0;
        const double mantissa = std::frexp(value, &power);
        // A double's exponent always fits the 15 bits, so no value needs the extended format's denormals, and the
        // 53 bits of its mantissa fit the high word and the top of the low one exactly.
        exponent |= static_cast<uint16_t>(power + ZRExtendedBias - 1);
        const double scaled = std::ldexp(mantissa, 32);
        const double highPart = std::floor(scaled);
        high = static_cast<uint32_t>(highPart);
        low = static_cast<uint32_t>(std::floor(std::ldexp(scaled - highPart, 32)));
    }
    storeBigEndian(destination.data(), exponent, 2);
    storeBigEndian(destination.data() + 2, high, 4);
    storeBigEndian(destination.data() + 6, low, 4);
}

double doubleFromExtended80(std::span<const uint8_t, 10> bytes) noexcept
{
    const int exponent = (bytes[0] & 0x7F) << 8 | bytes[1];
    const uint32_t high = loadBigEndian32(bytes.data() + 2);
    const uint32_t low = loadBigEndian32(bytes.data() + 6);
    double value = 0;
    if (exponent == ZRExtendedInfinity) {
        value = HUGE_VAL;
    } else if (exponent != 0 || high != 0 || low != 0) {
        const int power = exponent - ZRExtendedBias;
        value = std::ldexp(static_cast<double>(high), power - 31) + std::ldexp(static_cast<double>(low), power - 63);
    }
    return bytes[0] & 0x80 ? -value : value;
}

}
