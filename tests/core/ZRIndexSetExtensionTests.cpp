#include <zrbase/core/ZRIndexSetExtension.h>

#include <gtest/gtest.h>

TEST(ZRIndexSetExtension, positionalLookUpAndIntersections)
{
    const ZRIndexSet set { 9, 2, 5, 0x7FFFFFFE };
    EXPECT_EQ(ZRExtension::indexAtIndex(set, 0), 2u);
    EXPECT_EQ(ZRExtension::indexAtIndex(set, 2), 9u);
    EXPECT_EQ(ZRExtension::indexAtIndex(set, 3), 0x7FFFFFFEu);
    EXPECT_EQ(ZRExtension::indexAtIndex(set, 4), ZRNotFound);
    EXPECT_EQ(ZRExtension::indexAtIndex(ZRIndexSet(), 0), ZRNotFound);

    const ZRIndexSet other { 1, 5, 9, 10 };
    EXPECT_EQ(ZRExtension::intersectionIndexes(set, other), (ZRIndexSet { 5, 9 }));
    EXPECT_TRUE(ZRExtension::intersectionIndexes(set, ZRIndexSet { 3 }).isEmpty());
    EXPECT_TRUE(ZRExtension::intersectsIndexes(set, other));
    EXPECT_FALSE(ZRExtension::intersectsIndexes(set, ZRIndexSet { 1, 3, 10 }));
    EXPECT_FALSE(ZRExtension::intersectsIndexes(ZRIndexSet(), set));
}
