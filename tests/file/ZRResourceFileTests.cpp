#include <zrbase/file/ZRResourceFile.h>

#include "support/ZRTestFiles.h"
#include <zrbase/core/ZROSError.h>
#include <zrbase/host/system/ZRAppleDouble.h>
#include <zrbase/host/system/ZRResourceFork.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sys/xattr.h>

namespace {

constexpr uint32_t STR = 0x53545220; // 'STR '
constexpr uint32_t snd = 0x736E6420; // 'snd '

ZRData bytesOf(std::string_view text) { return ZRData(text.begin(), text.end()); }

void writeFile(const std::string& path, const ZRData& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

ZRData attribute(const std::string& path)
{
    ZRData bytes(1 << 16);
    const ssize_t length = getxattr(path.c_str(), ZRResourceFork::attributeName, bytes.data(), bytes.size());
    bytes.resize(length < 0 ? 0 : static_cast<size_t>(length));
    return bytes;
}

// A resource file laid out by hand from the published format: one 'STR ' resource, number 128, named "Rate",
// holding the Pascal string "44100".
ZRData handMadeFile()
{
    ZRData file = { 0, 0, 1, 0, 0, 0, 1, 10, 0, 0, 0, 10, 0, 0, 0, 55 };
    file.resize(256, 0);
    const ZRData data = { 0, 0, 0, 6, 5, '4', '4', '1', '0', '0' };
    file.insert(file.end(), data.begin(), data.end());
    const ZRData map = { 0, 0, 1, 0, 0, 0, 1, 10, 0, 0, 0, 10, 0, 0, 0, 55, // copy of the header
        0, 0, 0, 0, 0, 0, 0, 0, 0, 28, 0, 50, // reserved, attributes, type and name list offsets
        0, 0, 'S', 'T', 'R', ' ', 0, 0, 0, 10, // one type of one resource, its list 10 bytes on
        0, 128, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, // number 128, name at 0, no attributes, data at 0
        4, 'R', 'a', 't', 'e' };
    file.insert(file.end(), map.begin(), map.end());
    return file;
}

}

TEST(ZRResourceFile, readsAndWritesTheClassicLayoutByteForByte)
{
    const std::string folder = ZRTestScratchFolder("ResourceFileLayout");
    const std::string path = folder + "/Sound";
    writeFile(path, bytesOf("data fork"));
    ASSERT_TRUE(ZRResourceFile::createResourceFileAtPath(path));
    // An empty resource file: 256 bytes of header, no data, a 30-byte map with no types.
    ZRData empty = { 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 30 };
    empty.resize(256, 0);
    empty.insert(empty.end(),
        { 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 0, 0, 28, 0, 30, 0xFF, 0xFF });
    EXPECT_EQ(attribute(path), empty);
    EXPECT_EQ(ZRTestContentsOfFile(path), "data fork");
    // A fork that is there already is kept.
    ASSERT_TRUE(ZRResourceFile::createResourceFileAtPath(path));

    {
        std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(path);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->isWritable());
        EXPECT_TRUE(file->types().empty());
        ZRResource resource;
        resource.setType(STR);
        resource.setID(128);
        resource.setName("Rate");
        resource.setData(ZRData { 5, '4', '4', '1', '0', '0' });
        ASSERT_TRUE(file->addResource(resource));
    }
    EXPECT_EQ(attribute(path), handMadeFile());

    // The same bytes as a file of their own open through the data fork.
    const std::string dataFork = folder + "/Settings.rsrc";
    writeFile(dataFork, handMadeFile());
    std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(dataFork);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->isWritable());
    EXPECT_EQ(file->types(), std::vector<uint32_t> { STR });
    const std::optional<ZRResource> rate = file->resourceForType(STR, 128);
    ASSERT_TRUE(rate);
    EXPECT_EQ(rate->name(), "Rate");
    EXPECT_EQ(rate->length(), 6u);
    EXPECT_EQ(rate->data(), (ZRData { 5, '4', '4', '1', '0', '0' }));
    EXPECT_FALSE(file->resourceForType(STR, 129));
    EXPECT_FALSE(file->resourceForType(snd, 128));
}

TEST(ZRResourceFile, manyResourcesLongNamesUniqueNumbersAndChangesRoundTrip)
{
    const std::string path = ZRTestScratchFolder("ResourceFileRoundTrip") + "/Many.rsrc";
    ASSERT_TRUE(ZRResourceFile::createResourceFileAtPath(path));
    const std::string longName(255, 'n');
    {
        std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(path);
        ASSERT_NE(file, nullptr);
        for (int index = 0; index < 300; ++index) {
            ZRResource resource;
            resource.setType(index % 3 ? STR : snd);
            resource.setID(static_cast<int16_t>(index * 2 - 301)); // odd: never 0, never 128
            if (index % 2)
                resource.setName(index == 1 ? longName : "name " + std::to_string(index));
            resource.setData(ZRData(static_cast<size_t>(index), static_cast<uint8_t>(index)));
            ASSERT_TRUE(file->addResource(resource)) << index;
        }
        // Number 0 takes one not yet used for the type; a number in use is refused.
        ZRResource fresh;
        fresh.setType(STR);
        fresh.setData(bytesOf("fresh"));
        ASSERT_TRUE(file->addResource(fresh));
        EXPECT_EQ(fresh.id(), 128);
        ZRResource taken;
        taken.setType(STR);
        taken.setID(129); // resource 215
        taken.setData(bytesOf("x"));
        ZRErrorPtr error;
        EXPECT_FALSE(file->addResource(taken, &error));
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->code(), ZRResourceMap::addResFailed);
        // A name longer than 255 bytes is cut; UTF-8 is cut where a character begins.
        ZRResource named;
        named.setType(snd);
        named.setID(1000);
        named.setName(std::string(254, 'a')
            + "\xC3\xA9"
              "b");
        named.setData(bytesOf("y"));
        ASSERT_TRUE(file->addResource(named));
    }

    std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(path);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->types(), (std::vector<uint32_t> { snd, STR }));
    EXPECT_EQ(file->resources().size(), 302u);
    const std::vector<ZRResource> sounds = file->resourcesForType(snd);
    ASSERT_EQ(sounds.size(), 101u);
    EXPECT_EQ(sounds[1].id(), -295);
    EXPECT_EQ(sounds[1].name(), "name 3");
    EXPECT_EQ(sounds[1].data(), ZRData(3, 3));
    EXPECT_EQ(sounds.back().name(), std::string(254, 'a'));
    EXPECT_EQ(file->resourceForType(STR, -299)->name(), longName);
    EXPECT_EQ(file->resourceForType(STR, -297)->name(), std::nullopt);
    EXPECT_EQ(file->resourceForType(STR, 128)->data(), bytesOf("fresh"));

    // Changed bytes are written when marked changed; removed resources go, and their type with the last one.
    std::optional<ZRResource> fresh = file->resourceForType(STR, 128);
    fresh->handle()->assign({ 'n', 'e', 'w' });
    ASSERT_TRUE(fresh->setChanged());
    for (const ZRResource& sound : file->resourcesForType(snd))
        ASSERT_TRUE(file->removeResource(sound));
    ZRErrorPtr error;
    EXPECT_FALSE(file->removeResource(sounds[0], &error));
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(error->errorClass().name, "ZROSError");
    EXPECT_EQ(error->code(), -196);
    ASSERT_TRUE(file->close());
    // A closed file reads but takes no changes.
    EXPECT_FALSE(fresh->setChanged(&error));
    EXPECT_EQ(error->code(), -61);

    file = ZRResourceFile::resourceFileWithPath(path);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->types(), std::vector<uint32_t> { STR });
    EXPECT_EQ(file->resourceForType(STR, 128)->data(), bytesOf("new"));
}

TEST(ZRResourceFile, detachingAndCopyingLeaveTheSourceAsItWas)
{
    const std::string folder = ZRTestScratchFolder("ResourceFileCopy");
    const std::string source = folder + "/Source.rsrc", copy = folder + "/Copy";
    writeFile(source, handMadeFile());
    std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(source);
    ASSERT_NE(file, nullptr);
    ZRResource rate = *file->resourceForType(STR, 128);
    rate.detach();
    // The detached bytes are the caller's; the file still has the resource with bytes of its own.
    rate.handle()->assign({ 'x' });
    EXPECT_EQ(file->resourceForType(STR, 128)->data(), (ZRData { 5, '4', '4', '1', '0', '0' }));
    EXPECT_FALSE(rate.setChanged());

    ASSERT_TRUE(file->copyToPath(copy));
    file.reset();
    const ZRData original = handMadeFile();
    EXPECT_EQ(ZRTestContentsOfFile(source), std::string(original.begin(), original.end()));
    EXPECT_EQ(attribute(copy), handMadeFile());
}

TEST(ZRResourceFile, theAppleDoubleCompanionStandsInForTheAttribute)
{
    const std::string folder = ZRTestScratchFolder("ResourceFileCompanion");
    const std::string path = folder + "/Archived";
    writeFile(path, bytesOf("audio"));
    // A companion as Mac systems write it: Finder information, then the fork.
    ZRAppleDouble companion;
    companion.setEntry(ZRAppleDouble::finderInfoEntry, ZRData(32, 0));
    companion.setEntry(ZRAppleDouble::resourceForkEntry, handMadeFile());
    writeFile(folder + "/._Archived", companion.data());
    {
        std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(path);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->resourceForType(STR, 128)->name(), "Rate");
        // A fork too large for an attribute here goes to the companion, which keeps its other entries.
        ZRResource large;
        large.setType(snd);
        large.setID(1);
        large.setData(ZRData(1 << 16, 7));
        ASSERT_TRUE(file->addResource(large));
    }
    const std::optional<ZRAppleDouble> written
        = ZRAppleDouble::appleDoubleWithData(bytesOf(ZRTestContentsOfFile(folder + "/._Archived")));
    ASSERT_TRUE(written);
    EXPECT_EQ(*written->entry(ZRAppleDouble::finderInfoEntry), ZRData(32, 0));
    ZRResourceFork::Location location;
    ASSERT_TRUE(ZRResourceFork::read(path, &location));
    EXPECT_EQ(location, ZRResourceFork::Location::Companion);
    std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(path);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->resourceForType(snd, 1)->length(), 1u << 16);
    EXPECT_EQ(file->resourceForType(STR, 128)->name(), "Rate");
}

TEST(ZRResourceFile, failuresAndReadOnlyFiles)
{
    const std::string folder = ZRTestScratchFolder("ResourceFileFailures");
    ZRErrorPtr error;
    EXPECT_EQ(ZRResourceFile::resourceFileWithPath(folder + "/missing", &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), -43);
    EXPECT_EQ(error->localizedDescription(), "Opening a file failed because an undefined error occurred: -43");

    writeFile(folder + "/plain", bytesOf("just some text, no resources"));
    EXPECT_EQ(ZRResourceFile::resourceFileWithPath(folder + "/plain", &error), nullptr);
    EXPECT_EQ(error->code(), ZRResourceMap::mapReadErr);
    writeFile(folder + "/empty", {});
    EXPECT_EQ(ZRResourceFile::resourceFileWithPath(folder + "/empty", &error), nullptr);
    EXPECT_EQ(error->code(), -39);

    // A map marked read-only opens for reading only, and refuses changes with a status.
    ZRData readOnly = handMadeFile();
    readOnly[266 + 23] = 0x80;
    writeFile(folder + "/locked.rsrc", readOnly);
    std::unique_ptr<ZRResourceFile> file = ZRResourceFile::resourceFileWithPath(folder + "/locked.rsrc");
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(file->isWritable());
    ZRResource resource;
    resource.setType(STR);
    resource.setData(bytesOf("z"));
    EXPECT_FALSE(file->addResource(resource, &error));
    EXPECT_EQ(error->code(), -61);
    EXPECT_FALSE(file->removeResource(*file->resourceForType(STR, 128), &error));
    EXPECT_EQ(error->code(), -61);
    EXPECT_FALSE(file->resourceForType(STR, 128)->setChanged(&error));
    EXPECT_EQ(error->code(), -61);
    // A resource without handle is refused too.
    writeFile(folder + "/open.rsrc", handMadeFile());
    const std::unique_ptr<ZRResourceFile> writable = ZRResourceFile::resourceFileWithPath(folder + "/open.rsrc");
    ASSERT_NE(writable, nullptr);
    ZRResource empty;
    EXPECT_FALSE(writable->addResource(empty, &error));
    EXPECT_EQ(error->code(), ZRResourceMap::addResFailed);
}
