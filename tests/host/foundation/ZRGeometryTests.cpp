#include <zrbase/host/foundation/ZRGeometry.h>

#include <gtest/gtest.h>

#include <cmath>

TEST(ZRGeometry, writesTheTextFormsWithShortestNumbers)
{
    EXPECT_EQ(ZRStringFromPoint({ 1.5, 2 }), "{1.5, 2}");
    EXPECT_EQ(ZRStringFromSize({ 0.1f, -300000 }), "{0.1, -300000}");
    EXPECT_EQ(ZRStringFromRect(ZRMakeRect(1, 2, 1234567, 4)), "{{1, 2}, {1.23457e+06, 4}}");
    EXPECT_EQ(ZRRectFromString(ZRStringFromRect(ZRMakeRect(-1.25, 2, 30, 0.5))), ZRMakeRect(-1.25, 2, 30, 0.5));
}

TEST(ZRGeometry, readsNumbersInOrderSkippingEverythingElse)
{
    EXPECT_EQ(ZRPointFromString("{3, -4.5}"), ZRMakePoint(3, -4.5));
    EXPECT_EQ(ZRPointFromString("x=7 y=+.5e1 z=9"), ZRMakePoint(7, 5));
    EXPECT_EQ(ZRPointFromString("{12}"), ZRMakePoint(12, 0));
    EXPECT_EQ(ZRPointFromString("garbage - . e"), ZRMakePoint(0, 0));
    EXPECT_EQ(ZRSizeFromString("1e,2e"), ZRMakeSize(1, 2));
    EXPECT_EQ(ZRRectFromString("{{1, 2}, {3}}"), ZRMakeRect(1, 2, 3, 0));
    EXPECT_EQ(ZRPointFromString("{inf, nan}"), ZRMakePoint(0, 0));
    const ZRPoint extreme = ZRPointFromString("{-1e60, 1e-60}");
    EXPECT_TRUE(std::isinf(extreme.x) && extreme.x < 0);
    EXPECT_EQ(extreme.y, 0);
}
