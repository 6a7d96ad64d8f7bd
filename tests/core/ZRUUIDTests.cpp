#include <zrbase/core/ZRUUID.h>

#include "support/ZRTestFiles.h"
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

#include <fstream>

TEST(ZRUUID, textDataAndFixedForms)
{
    const ZRUUID caf = ZRUUID::CAFZRAnUUID();
    EXPECT_EQ(caf.description(), "2417ba03-6cae-40de-9ec9-239618b85c16");
    EXPECT_EQ(caf.dataValue(),
        (ZRData { 0x24, 0x17, 0xBA, 0x03, 0x6C, 0xAE, 0x40, 0xDE, 0x9E, 0xC9, 0x23, 0x96, 0x18, 0xB8, 0x5C, 0x16 }));
    EXPECT_EQ(caf.hash(), 0x2417u);

    const ZRUUID parsed = ZRUUID::uuidWithString("2417BA03-6CAE-40DE-9EC9-239618B85C16");
    EXPECT_EQ(parsed, caf);
    EXPECT_EQ(ZRUUID::uuidWithData(caf.dataValue()), caf);
    EXPECT_EQ(ZRUUID::uuidWithUUID(caf.bytes()), caf);

    const ZRUUID zero = ZRUUID::uuidWithData({});
    EXPECT_EQ(zero.description(), "00000000-0000-0000-0000-000000000000");
    for (std::string_view malformed : std::initializer_list<std::string_view> { "",
             "2417ba03-6cae-40de-9ec9-239618b85c1", "2417ba03-6cae-40de-9ec9-239618b85c16 ",
             "2417ba03x6cae-40de-9ec9-239618b85c16", std::string_view("2417ba03-6cae-40de-9ec9-239618b85c16\0", 37) })
        EXPECT_EQ(ZRUUID::uuidWithString(malformed), zero) << malformed;
    // Longer data gives its first 16 bytes, shorter data is padded with zeros.
    ZRData longer = caf.dataValue();
    longer.push_back(0xFF);
    EXPECT_EQ(ZRUUID::uuidWithData(longer), caf);
    EXPECT_EQ(ZRUUID::uuidWithData(ZRData { 0x24, 0x17 }).description(), "24170000-0000-0000-0000-000000000000");

    const ZRUUID generated;
    EXPECT_NE(generated, ZRUUID::uuid());
    EXPECT_NE(generated, zero);
    EXPECT_EQ(ZRUUID::uuidWithString(generated.description()), generated);
}

TEST(ZRUUID, archivesAndReadsFromFiles)
{
    ZRKeyedArchiver archiver;
    ZRUUID::CAFZRAnUUID().encodeWithCoder(archiver);
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding("ZRUUID"));
    ASSERT_TRUE(unarchiver);
    EXPECT_EQ(unarchiver->decodeBytes("uuid"), ZRUUID::CAFZRAnUUID().dataValue());
    EXPECT_EQ(ZRUUID(*unarchiver), ZRUUID::CAFZRAnUUID());
    archiver.encodeInt("uuid", 1);
    EXPECT_EQ(ZRUUID(*ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding())), ZRUUID::uuidWithData({}));

    const std::string path = ZRTestScratchFolder("ZRUUID") + "/chunk";
    const ZRData bytes = ZRUUID::CAFZRAnUUID().dataValue();
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), 16);
    const auto file = ZRFile::fileWithPath(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->readUUIDValue(), ZRUUID::CAFZRAnUUID());
    EXPECT_EQ(file->position(), 16);
}
