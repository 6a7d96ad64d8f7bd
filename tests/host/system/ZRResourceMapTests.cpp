#include <zrbase/host/system/ZRAppleDouble.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <gtest/gtest.h>

namespace {

void put16(ZRData& bytes, size_t offset, uint16_t value)
{
    bytes[offset] = uint8_t(value >> 8);
    bytes[offset + 1] = uint8_t(value);
}

void put32(ZRData& bytes, size_t offset, uint32_t value)
{
    put16(bytes, offset, uint16_t(value >> 16));
    put16(bytes, offset + 2, uint16_t(value));
}

// Two types of two resources each, named and unnamed, as this library writes them.
ZRData sample()
{
    ZRResourceMap map;
    for (uint32_t type : { 0x41414141u, 0x42424242u })
        for (int16_t id : { int16_t(1), int16_t(-2) }) {
            ZRResourceMap::Resource resource;
            resource.type = type;
            resource.id = id;
            if (id > 0)
                resource.name = "first";
            resource.handle = std::make_shared<ZRData>(ZRData { 1, 2, 3 });
            map.add(std::move(resource));
        }
    return *map.data();
}

size_t mapOffset(const ZRData& file) { return size_t(file[4]) << 24 | file[5] << 16 | file[6] << 8 | file[7]; }

}

TEST(ZRResourceMap, hostileMapsAreRefusedNeverFollowed)
{
    const ZRData good = sample();
    int32_t status = 0;
    std::optional<ZRResourceMap> map = ZRResourceMap::mapWithData(good, &status);
    ASSERT_TRUE(map);
    EXPECT_EQ(map->types().size(), 2u);
    EXPECT_EQ(map->data(), good);
    ASSERT_NE(map->resource(0x42424242, 1), nullptr);
    EXPECT_EQ(map->resource(0x42424242, 1)->name, "first");
    EXPECT_EQ(*map->resource(0x42424242, -2)->handle, (ZRData { 1, 2, 3 }));

    const size_t mapStart = mapOffset(good);
    const size_t typeList = mapStart + 28;
    const auto refuses = [&](const ZRData& bytes, const char* what) {
        status = 0;
        EXPECT_FALSE(ZRResourceMap::mapWithData(bytes, &status)) << what;
        EXPECT_EQ(status, ZRResourceMap::mapReadErr) << what;
    };

    // Truncated anywhere: header, data or map.
    for (size_t length = 0; length < good.size(); ++length)
        refuses(ZRData(good.begin(), good.begin() + static_cast<ptrdiff_t>(length)), "truncated");

    ZRData bytes = good;
    put32(bytes, 4, 0xFFFFFFF0);
    refuses(bytes, "map offset outside the file");
    bytes = good;
    put32(bytes, 8, 0xFFFFFFFF);
    refuses(bytes, "data length overflowing");
    bytes = good;
    put16(bytes, mapStart + 24, 0xFFF0);
    refuses(bytes, "type list outside the map");
    bytes = good;
    put16(bytes, typeList, 0x4000);
    refuses(bytes, "type count running past the map");
    bytes = good;
    put16(bytes, typeList + 2 + 4, 0xFFFF);
    refuses(bytes, "resource count overflowing");
    bytes = good;
    put16(bytes, typeList + 2 + 8 + 6, uint16_t(2 + 16 + 12));
    refuses(bytes, "reference lists overlapping");
    bytes = good;
    put32(bytes, typeList + 2 + 8, 0x41414141);
    refuses(bytes, "a type listed twice");
    bytes = good;
    const size_t firstReference = typeList + 2 + 16;
    put16(bytes, firstReference + 12, 1);
    refuses(bytes, "a number used twice");
    bytes = good;
    put16(bytes, firstReference + 2, 0x7000);
    refuses(bytes, "a name outside the map");
    bytes = good;
    bytes[firstReference + 5] = 0xFF;
    refuses(bytes, "data offset outside the data");
    bytes = good;
    put32(bytes, 256, 0xFFFFFFFF);
    refuses(bytes, "data block longer than the data");
}

TEST(ZRResourceMap, appleDoubleEntriesOutsideTheFileAreRefused)
{
    ZRAppleDouble companion;
    companion.setEntry(ZRAppleDouble::finderInfoEntry, ZRData(32, 1));
    companion.setEntry(ZRAppleDouble::resourceForkEntry, ZRData { 9, 8, 7 });
    const ZRData bytes = companion.data();
    EXPECT_EQ(ZRData(bytes.begin(), bytes.begin() + 8), (ZRData { 0, 5, 0x16, 0x07, 0, 2, 0, 0 }));
    const std::optional<ZRAppleDouble> read = ZRAppleDouble::appleDoubleWithData(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(*read->entry(ZRAppleDouble::resourceForkEntry), (ZRData { 9, 8, 7 }));

    ZRData hostile = bytes;
    hostile[26 + 12 + 7] = 0xFF; // the fork's offset far past the end
    EXPECT_FALSE(ZRAppleDouble::appleDoubleWithData(hostile));
    hostile = bytes;
    hostile[25] = 200; // more entries than the file holds
    EXPECT_FALSE(ZRAppleDouble::appleDoubleWithData(hostile));
    hostile = bytes;
    hostile[3] = 0x06; // not the magic number
    EXPECT_FALSE(ZRAppleDouble::appleDoubleWithData(hostile));
    EXPECT_EQ(ZRAppleDouble::companionPath("/a/b/Sound"), "/a/b/._Sound");
    EXPECT_EQ(ZRAppleDouble::companionPath("Sound"), "._Sound");
}
