#include <zrbase/core/ZRArrayExtension.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace ZRExtension;

namespace {

std::string moved(const ZRIndexSet& indexes, size_t destination)
{
    std::vector<char> rows { 'a', 'b', 'c', 'd', 'e' };
    moveObjects(rows, indexes, destination);
    return std::string(rows.begin(), rows.end());
}

}

TEST(ZRArrayExtension, movesElementsAsDraggedRowsAreDropped)
{
    EXPECT_EQ(moved({ 1, 3 }, 0), "bdace");
    EXPECT_EQ(moved({ 1, 3 }, 3), "acbde");
    EXPECT_EQ(moved({ 1, 3 }, 5), "acebd");
    EXPECT_EQ(moved({ 0 }, 1), "abcde");
    EXPECT_EQ(moved({ 4 }, 0), "eabcd");
    EXPECT_EQ(moved({ 1, 5 }, 0), "abcde");
    EXPECT_EQ(moved({ 1 }, 6), "abcde");
    EXPECT_EQ(moved({}, 0), "abcde");

    // Elements that can only be moved, not copied.
    std::vector<std::unique_ptr<int>> owners;
    for (int value = 0; value < 3; ++value)
        owners.push_back(std::make_unique<int>(value));
    moveObjects(owners, ZRIndexSet { 0 }, 3);
    EXPECT_EQ(*owners[0], 1);
    EXPECT_EQ(*owners[2], 0);
}

TEST(ZRArrayExtension, insertsAndKeepsObjects)
{
    std::vector<int> values { 1, 2, 3 };
    const std::vector<int> inserted { 8, 9 };
    insertObjects(values, inserted, 1);
    EXPECT_EQ(values, (std::vector<int> { 1, 8, 9, 2, 3 }));
    insertObjects(values, inserted, 99);
    EXPECT_EQ(values, (std::vector<int> { 1, 8, 9, 2, 3, 8, 9 }));
    const std::vector<int> kept { 9, 3, 7 };
    removeObjectsNotInArray(values, kept);
    EXPECT_EQ(values, (std::vector<int> { 9, 3, 9 }));
}
