#include <zrbase/core/ZRIndexArray.h>

#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

std::vector<uint32_t> moved(std::vector<uint32_t> values, const ZRIndexSet& positions, uint32_t destination)
{
    ZRIndexArray array;
    for (uint32_t value : values)
        array.addIndex(value);
    array.moveIndexesAtIndexes(positions, destination);
    return array.indexes();
}

}

TEST(ZRIndexArray, insertionAndRemovalKeepEveryValueAndRejectBadPositions)
{
    ZRIndexArray array;
    EXPECT_EQ(array.indexAtIndex(0), ZRNotFound);
    array.addIndex(7);
    EXPECT_TRUE(array.addIndex(5, 0));
    EXPECT_TRUE(array.addIndex(6, 1));
    EXPECT_TRUE(array.addIndex(8, 3));
    EXPECT_FALSE(array.addIndex(9, 5));
    EXPECT_EQ(array.indexes(), (std::vector<uint32_t> { 5, 6, 7, 8 }));
    EXPECT_EQ(array.indexAtIndex(3), 8u);
    EXPECT_EQ(array.indexAtIndex(4), ZRNotFound);

    EXPECT_TRUE(array.removeIndexAtIndex(0));
    EXPECT_FALSE(array.removeIndexAtIndex(3));
    EXPECT_TRUE(array.removeIndexAtIndex(2));
    EXPECT_EQ(array.indexes(), (std::vector<uint32_t> { 6, 7 }));
    EXPECT_FALSE(ZRIndexArray().removeIndexAtIndex(0));

    EXPECT_EQ(ZRIndexArray::indexArrayWithIndexesInRange({ 3, 3 }).indexes(), (std::vector<uint32_t> { 3, 4, 5 }));
}

TEST(ZRIndexArray, invertGivesTheInversePermutationOnly)
{
    ZRIndexArray array;
    for (uint32_t value : { 2, 0, 1 })
        array.addIndex(value);
    array.invert();
    EXPECT_EQ(array.indexes(), (std::vector<uint32_t> { 1, 2, 0 }));

    for (const std::vector<uint32_t>& values : { std::vector<uint32_t> { 0, 5 }, std::vector<uint32_t> { 1, 1 } }) {
        ZRIndexArray unchanged;
        for (uint32_t value : values)
            unchanged.addIndex(value);
        unchanged.invert();
        EXPECT_EQ(unchanged.indexes(), values);
    }
}

TEST(ZRIndexArray, movesDraggedRowsToTheDestination)
{
    // a b c d as 0 1 2 3.
    const std::vector<uint32_t> rows { 0, 1, 2, 3 };
    EXPECT_EQ(moved(rows, { 0, 2 }, 4), (std::vector<uint32_t> { 1, 3, 0, 2 }));
    EXPECT_EQ(moved(rows, { 2, 3 }, 0), (std::vector<uint32_t> { 2, 3, 0, 1 }));
    EXPECT_EQ(moved(rows, { 3 }, 1), (std::vector<uint32_t> { 0, 3, 1, 2 }));
    EXPECT_EQ(moved(rows, { 0, 1 }, 3), (std::vector<uint32_t> { 2, 0, 1, 3 }));
    // A destination equal to a moved position counts as after it.
    EXPECT_EQ(moved(rows, { 1 }, 1), (std::vector<uint32_t> { 1, 0, 2, 3 }));
    EXPECT_EQ(moved(rows, { 0, 1, 2, 3 }, 4), rows);

    EXPECT_EQ(moved(rows, { 1, 4 }, 0), rows);
    EXPECT_EQ(moved(rows, { 1 }, 5), rows);
    EXPECT_EQ(moved(rows, {}, 0), rows);
}

TEST(ZRIndexArray, archivesTheValuesAsBytesAndDescribesThem)
{
    ZRIndexArray array = ZRIndexArray::indexArrayWithIndexesInRange({ 0x01020304, 2 });
    ZRKeyedArchiver archiver;
    array.encodeWithCoder(archiver);
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding("ZRIndexArray"));
    ASSERT_TRUE(unarchiver);
    const std::optional<ZRData> bytes = unarchiver->decodeBytes("indexes");
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->size(), 8u);
    uint32_t first = 0;
    std::memcpy(&first, bytes->data(), 4);
    EXPECT_EQ(first, 0x01020304u);
    EXPECT_EQ(ZRIndexArray(*unarchiver), array);

    // A trailing partial value is dropped.
    archiver.encodeBytes("indexes", ZRData { 1, 0, 0, 0, 2, 0 });
    EXPECT_EQ(ZRIndexArray(*ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding())).indexes(),
        std::vector<uint32_t> { 1 });

    EXPECT_EQ(ZRIndexArray().description(), "ZRIndexArray: { }");
    array.addIndex(0, 0);
    EXPECT_EQ(array.description(), "ZRIndexArray: { 0 16909060 16909061 }");
}
