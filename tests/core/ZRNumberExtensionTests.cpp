#include <zrbase/core/ZRNumberExtension.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

using namespace ZRExtension;

namespace {

using Extended = std::array<uint8_t, 10>;

Extended extended(double value)
{
    Extended bytes;
    bytes.fill(0xAA);
    extended80(bytes, value);
    return bytes;
}

}

TEST(ZRNumberExtension, writesSampleRatesAsAIFFFilesStoreThem)
{
    EXPECT_EQ(extended(44100.0), (Extended { 0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(48000.0), (Extended { 0x40, 0x0E, 0xBB, 0x80, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(8000.0), (Extended { 0x40, 0x0B, 0xFA, 0x00, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(1.0), (Extended { 0x3F, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(-0.5), (Extended { 0xBF, 0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0 }));
    // 1/3: the 53 bits of the double fill the high word and the top 21 bits of the low one.
    EXPECT_EQ(extended(1.0 / 3.0), (Extended { 0x3F, 0xFD, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xA8, 0x00 }));
    EXPECT_EQ(doubleFromExtended80(Extended { 0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0 }), 44100.0);
}

TEST(ZRNumberExtension, handlesZerosInfinitiesAndNaN)
{
    const Extended zero {};
    EXPECT_EQ(extended(0.0), zero);
    EXPECT_EQ(extended(-0.0), zero);
    EXPECT_EQ(extended(HUGE_VAL), (Extended { 0x7F, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(-HUGE_VAL), (Extended { 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(extended(-std::numeric_limits<double>::quiet_NaN()), (Extended { 0x7F, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0 }));

    EXPECT_EQ(doubleFromExtended80(zero), 0.0);
    EXPECT_TRUE(std::signbit(doubleFromExtended80(Extended { 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0 })));
    EXPECT_EQ(doubleFromExtended80(Extended { 0x7F, 0xFF, 0xC0, 0, 0, 0, 0, 0, 0, 1 }), HUGE_VAL);
    EXPECT_EQ(doubleFromExtended80(Extended { 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0 }), -HUGE_VAL);
    // Beyond a double's range in either direction.
    EXPECT_EQ(doubleFromExtended80(Extended { 0x7F, 0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0 }), HUGE_VAL);
    EXPECT_EQ(doubleFromExtended80(Extended { 0x00, 0x01, 0x80, 0, 0, 0, 0, 0, 0, 0 }), 0.0);
}

TEST(ZRNumberExtension, convertsEveryFiniteDoubleExactlyBothWays)
{
    const double values[] = { 22050.5, 96000.0, 1.0 / 3.0, -7.25e-300, std::numeric_limits<double>::max(),
        std::numeric_limits<double>::min(), std::numeric_limits<double>::denorm_min(),
        -std::numeric_limits<double>::denorm_min() * 12345 };
    for (const double value : values)
        EXPECT_EQ(doubleFromExtended80(extended(value)), value) << value;
}
