#include <zrbase-ui/ZRValueMapExtension.h>

#include <gtest/gtest.h>

#include <cmath>

TEST(ZRValueMapImage, theCurveLiesWhereTheMapPutsIt)
{
    ZRValueMap map(ZRValueMapCubic);
    map.setControlPoints({ { 0, 0.2f }, { 0.3f, 0.1f }, { 0.7f, 0.95f }, { 1, 0.9f } });
    const QImage image = ZRExtension::imageWithSize(map, { 200.7f, 100 });
    ASSERT_EQ(image.size(), QSize(201, 100));
    for (int x = 4; x < 196; x += 3) {
        const double expected = 100 - 100 * map.outputValueForInputValue(x / 200.7f);
        // Only the stroke lowers the green channel: white above, green below.
        double weight = 0, weighted = 0;
        for (int y = 1; y < 99; ++y) {
            const int ink = 255 - qGreen(image.pixel(x, y));
            weight += ink;
            weighted += ink * (y + 0.5);
        }
        ASSERT_GT(weight, 100) << x;
        EXPECT_NEAR(weighted / weight, expected, 1) << x;
        // White above the curve, green below it.
        if (expected > 8) {
            EXPECT_EQ(image.pixel(x, static_cast<int>(expected) - 5), qRgb(255, 255, 255)) << x;
        }
        if (expected < 92) {
            const QRgb below = image.pixel(x, static_cast<int>(expected) + 5);
            EXPECT_GT(qGreen(below), qRed(below) + 40) << x;
        }
    }
    // The grey frame runs round the edge.
    EXPECT_NEAR(qRed(image.pixel(100, 0)), 128, 1);
    EXPECT_EQ(ZRExtension::imageWithSize(map, { -5, 10 }).width(), 1);
}
