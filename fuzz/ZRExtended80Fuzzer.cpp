#include <zrbase/core/ZRNumberExtension.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

// The first ten bytes as an extended number, the next eight as a double: reading any ten bytes gives a number that
// writes and reads back unchanged, and every double survives the way through the extended format (NaN as infinity).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::array<uint8_t, 10> bytes {};
    std::memcpy(bytes.data(), data, std::min(size, bytes.size()));
    const double value = ZRExtension::doubleFromExtended80(bytes);
    std::array<uint8_t, 10> written {};
    ZRExtension::extended80(written, value);
    if (std::isnan(value) || ZRExtension::doubleFromExtended80(written) != value)
        std::abort();

    if (size >= 18) {
        double number = 0;
        std::memcpy(&number, data + 10, sizeof number);
        ZRExtension::extended80(written, number);
        const double back = ZRExtension::doubleFromExtended80(written);
        if (std::isnan(number) ? back != HUGE_VAL : back != number)
            std::abort();
    }
    return 0;
}
