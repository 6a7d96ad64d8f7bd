#include <zrbase/host/foundation/ZRIndexSet.h>

#include <gtest/gtest.h>

using Indexes = std::vector<uint32_t>;

TEST(ZRIndexRange, intersectsUnitesAndDescribesRanges)
{
    EXPECT_EQ(ZRIntersectionIndexRange({ 2, 5 }, { 4, 10 }), ZRMakeIndexRange(4, 3));
    EXPECT_EQ(ZRIntersectionIndexRange({ 0, 1 }, { 1, 2 }), ZRMakeIndexRange(1, 0)); // touching ranges meet
    EXPECT_EQ(ZRIntersectionIndexRange({ 0, 1 }, { 5, 2 }), ZRMakeIndexRange(0, 0));
    EXPECT_EQ(ZRUnionIndexRange({ 8, 2 }, { 1, 3 }), ZRMakeIndexRange(1, 9));
    EXPECT_EQ(ZRStringFromIndexRange({ 3, 4000000000u }), "{3, 4000000000}");
    EXPECT_TRUE(ZRMakeIndexRange(3, 2).contains(4));
    EXPECT_FALSE(ZRMakeIndexRange(3, 2).contains(5));
}

TEST(ZRIndexSet, keepsIndexesSortedAndUnique)
{
    ZRIndexSet set { 7, 3, 3, 9 };
    EXPECT_EQ(set.indexes(), (Indexes { 3, 7, 9 }));
    set.addIndex(5);
    set.addIndex(7);
    set.addIndexesInRange({ 8, 3 });
    EXPECT_EQ(set.indexes(), (Indexes { 3, 5, 7, 8, 9, 10 }));
    set.addIndexes(ZRIndexSet { 1, 9, 20 });
    EXPECT_EQ(set.indexes(), (Indexes { 1, 3, 5, 7, 8, 9, 10, 20 }));
    set.removeIndexesInRange({ 7, 3 });
    set.removeIndex(20);
    set.removeIndex(4);
    EXPECT_EQ(set.indexes(), (Indexes { 1, 3, 5, 10 }));
    set.removeIndexes(ZRIndexSet { 1, 10, 11 });
    EXPECT_EQ(set, (ZRIndexSet { 3, 5 }));
    EXPECT_EQ(ZRIndexSet(ZRIndexRange { 4294967294u, 2 }).indexes(), (Indexes { 4294967294u, 4294967295u }));
}

TEST(ZRIndexSet, answersQueriesWithNotFoundWhereThereIsNoIndex)
{
    const ZRIndexSet set { 2, 4, 6, 8 };
    EXPECT_EQ(set.firstIndex(), 2u);
    EXPECT_EQ(set.lastIndex(), 8u);
    EXPECT_EQ(set.indexGreaterThanIndex(4), 6u);
    EXPECT_EQ(set.indexGreaterThanIndex(8), ZRNotFound);
    EXPECT_EQ(set.indexLessThanIndex(4), 2u);
    EXPECT_EQ(set.indexLessThanIndex(2), ZRNotFound);
    EXPECT_EQ(set.countOfIndexesInRange({ 3, 5 }), 2u);
    EXPECT_EQ(set.countOfIndexesInRange({ 0, 0 }), 0u);
    EXPECT_TRUE(set.containsIndexes(ZRIndexSet { 4, 8 }));
    EXPECT_FALSE(set.containsIndexes(ZRIndexSet { 4, 5 }));
    EXPECT_TRUE(set.containsIndexes(ZRIndexSet()));
    EXPECT_EQ(ZRIndexSet().firstIndex(), ZRNotFound);
    EXPECT_EQ(ZRIndexSet().lastIndex(), ZRNotFound);
}

TEST(ZRIndexSet, shiftsTheIndexesFromAPosition)
{
    ZRIndexSet set { 1, 3, 5, 6 };
    set.shiftIndexesStartingAtIndex(4, 2);
    EXPECT_EQ(set.indexes(), (Indexes { 1, 3, 7, 8 }));
    // Closing a gap removes what stood in it, as deleting table rows does.
    set.shiftIndexesStartingAtIndex(7, -4);
    EXPECT_EQ(set.indexes(), (Indexes { 1, 3, 4 }));
    set.shiftIndexesStartingAtIndex(3, -5);
    EXPECT_EQ(set.indexes(), (Indexes {}));
    ZRIndexSet top { 2, 4294967290u };
    top.shiftIndexesStartingAtIndex(0, 10);
    EXPECT_EQ(top.indexes(), (Indexes { 12 }));
}
