#include <zrbase/file/ZRFile.h>

#include <zrbase/core/ZRFileError.h>
#include "support/ZRRecordingAlertPresenter.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

void writeFile(const std::string& path, std::string_view contents)
{
    std::ofstream(path, std::ios::binary) << contents;
}

std::string description(const ZRErrorPtr& error) { return error ? error->localizedDescription().value_or("") : ""; }

}

TEST(ZRFile, opensExistingFilesOnlyAndFallsBackToReadingWhereWritingIsRefused)
{
    const std::string folder = ZRTestScratchFolder("ZRFileOpen");
    ZRErrorPtr error;
    EXPECT_EQ(ZRFile::fileWithPath(folder + "/missing", &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_EQ(description(error), "Opening a file failed because the file or directory was not found. (ENOENT)");

    // Root may write anything with a file mode, but not a read-only attribute of the kernel.
    std::string readOnly = folder + "/read-only";
    writeFile(readOnly, "abc");
    chmod(readOnly.c_str(), 0444);
    if (std::FILE* probe = std::fopen(readOnly.c_str(), "r+")) {
        std::fclose(probe);
        readOnly = "/sys/devices/system/cpu/online";
    }
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(readOnly, &error);
    if (!file)
        GTEST_SKIP() << "no read-only file to open";
    EXPECT_FALSE(file->isWritable());
    ZRErrorPtr writeError;
    EXPECT_FALSE(file->writeIntValue(1, &writeError));
    EXPECT_EQ(writeError, nullptr);
    EXPECT_NE(file->readCharValue(), 0);
}

TEST(ZRFile, readsAndWritesTypedValuesInNativeOrderAndReadsShortAtTheEndLeniently)
{
    const std::string path = ZRTestScratchFolder("ZRFileValues") + "/values";
    ASSERT_TRUE(ZRFile::createFileAtPath(path));
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(path);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->isWritable());
    EXPECT_TRUE(file->writeLongLongValue(-2));
    EXPECT_TRUE(file->writeIntValue(0x01020304));
    EXPECT_TRUE(file->writeString("\xC3\xA9t\xC3\xA9", ZRStringEncoding::MacOSRoman));
    EXPECT_TRUE(file->writeLongLongValueToPosition(0x1122334455667788, 20));
    file->writeIntValueToPosition(7, 28);
    EXPECT_TRUE(file->synchronize());
    const std::string expected = std::string("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x04\x03\x02\x01\x8Et\x8E", 15)
        + std::string(5, '\0') + "\x88\x77\x66\x55\x44\x33\x22\x11" + std::string("\x07\0\0\0", 4);
    EXPECT_EQ(ZRTestContentsOfFile(path), expected);

    // Reading without the page cache reads the same.
    file->setEnableCaching(false);
    EXPECT_EQ(file->readIntValueAtPosition(8), 0x01020304);
    EXPECT_EQ(file->readShortValue(), static_cast<int16_t>(0x748E));
    EXPECT_EQ(file->readCharValueAtPosition(20), static_cast<int8_t>(0x88));
    EXPECT_EQ(file->position(), 21);
    EXPECT_TRUE(file->moveBy(-21));
    EXPECT_EQ(file->readLongLongValue(), -2);
    EXPECT_EQ(file->length(), 32);
    EXPECT_EQ(file->position(), 8);

    // Four or six bytes left: the read succeeds, fills them and leaves the rest zero, also when an earlier,
    // unrelated call left errno set; only the stream knows whether it met the end or an error.
    ZRRecordingAlertPresenter presenter;
    errno = ENOENT;
    EXPECT_EQ(file->readLongLongValueAtPosition(28), 7);
    errno = EACCES;
    EXPECT_EQ(file->readDataOfLength(8, 26), (ZRData { 0x22, 0x11, 7, 0, 0, 0, 0, 0 }));
    EXPECT_TRUE(presenter.alerts().empty());
    EXPECT_TRUE(file->moveToEnd());
    EXPECT_EQ(file->position(nullptr), 32);
    EXPECT_EQ(file->readDataOfLength(0), ZRData());
}

TEST(ZRFile, changesItsLengthByCuttingOrByAppendingZeros)
{
    const std::string path = ZRTestScratchFolder("ZRFileLength") + "/length";
    writeFile(path, "0123456789");
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(path);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->moveTo(8));
    EXPECT_EQ(file->readCharValue(), '8');

    ZRErrorPtr error;
    EXPECT_TRUE(file->setLength(4, &error));
    EXPECT_EQ(file->position(), 9);
    EXPECT_EQ(ZRTestContentsOfFile(path), "0123");

    // Longer than one block of zeros, so that the extension takes several writes.
    file->setLength(200000);
    EXPECT_EQ(file->position(), 200000);
    EXPECT_TRUE(file->synchronize());
    const std::string contents = ZRTestContentsOfFile(path);
    EXPECT_EQ(contents, "0123" + std::string(199996, '\0'));

    EXPECT_TRUE(file->moveTo(5));
    EXPECT_TRUE(file->setLength(200000, &error));
    EXPECT_EQ(file->position(), 200000);
    EXPECT_EQ(file->length(&error), 200000);
    EXPECT_EQ(error, nullptr);
}

TEST(ZRFile, renamesItselfAlsoByCaseAndDeletesItselfWhenAsked)
{
    const std::string folder = ZRTestScratchFolder("ZRFileRename");
    ASSERT_TRUE(ZRFile::createFileAtPath(folder + "/take.aif", std::span<const uint8_t>(ZRData { 'a', 'b' })));
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(folder + "/take.aif");
    ASSERT_NE(file, nullptr);
    ZRErrorPtr error;
    EXPECT_TRUE(file->setPath(folder + "/take.aif", &error));
    EXPECT_TRUE(file->setPath(folder + "/Take.aif", &error));
    EXPECT_EQ(file->path(), folder + "/Take.aif");
    EXPECT_FALSE(ZRFile::existsAtPath(folder + "/take.aif"));
    EXPECT_EQ(file->readCharValue(), 'a');
    // A trailing slash names the same file.
    file->setPath(folder + "/mix.aif/");
    EXPECT_EQ(file->path(), folder + "/mix.aif");
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/mix.aif"), "ab");

    // The handle is closed after a failed rename; it reports instead of crashing.
    ASSERT_TRUE(ZRFile::createFileAtPath(folder + "/taken.aif"));
    EXPECT_FALSE(file->setPath(folder + "/taken.aif", &error));
    EXPECT_EQ(description(error), "Moving 'mix.aif' failed because " + std::string(std::strerror(EEXIST)));
    EXPECT_EQ(file->file(), nullptr);
    ZRRecordingAlertPresenter presenter;
    EXPECT_EQ(file->readIntValue(), 0);
    ASSERT_EQ(presenter.alerts().size(), 1u);
    EXPECT_EQ(presenter.alerts()[0].messageText, "A file error occurred");
    EXPECT_EQ(presenter.alerts()[0].informativeText,
        "Reading from a file failed because a bad file descriptor was given. (EBADF)");
    file.reset();

    file = ZRFile::fileWithPath(folder + "/taken.aif");
    file->deleteOnDestruction();
    file.reset();
    EXPECT_FALSE(ZRFile::existsAtPath(folder + "/taken.aif"));
}

TEST(ZRFile, showsReadFailuresAsAlertsAndRaisesOnAFailedFlushWithAnErrorSlot)
{
    // A folder opens for reading, and every read of it fails.
    std::unique_ptr<ZRFile> folder = ZRFile::fileWithPath(ZRTestScratchFolder("ZRFileAlerts"));
    ASSERT_NE(folder, nullptr);
    ZRRecordingAlertPresenter presenter;
    EXPECT_EQ(folder->readDataOfLength(4), std::nullopt);
    ASSERT_EQ(presenter.alerts().size(), 1u);
    EXPECT_EQ(
        presenter.alerts()[0].informativeText, "Reading from a file failed because an undefined error occurred. (21)");

    std::unique_ptr<ZRFile> full = ZRFile::fileWithPath("/dev/full");
    ASSERT_NE(full, nullptr);
    EXPECT_TRUE(full->writeIntValue(1));
    EXPECT_FALSE(full->synchronize());
    EXPECT_TRUE(full->writeIntValue(1));
    ZRErrorPtr error;
    EXPECT_THROW(full->synchronize(&error), std::invalid_argument);
}

TEST(ZRFile, managesPathsFoldersAndFiles)
{
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(ZRFile::conformPath("~/Music"), home + "/Music");
    EXPECT_EQ(ZRFile::conformPath("~"), home);
    EXPECT_EQ(ZRFile::conformPath("/tmp/~x"), "/tmp/~x");
    EXPECT_EQ(ZRFile::conformPath(""), "");

    const std::string folder = ZRTestScratchFolder("ZRFileManagement");
    EXPECT_TRUE(ZRFile::createDirectoryAtPath(folder + "/a/b/c"));
    EXPECT_TRUE(ZRFile::directoryExistsAtPath(folder + "/a/b/c"));
    EXPECT_FALSE(ZRFile::fileExistsAtPath(folder + "/a/b/c"));
    EXPECT_TRUE(ZRFile::existsAtPath(folder + "/a/b/c"));
    ZRErrorPtr error;
    ASSERT_TRUE(ZRFile::createFileAtPath(folder + "/a/plain", &error));
    EXPECT_FALSE(ZRFile::createDirectoryAtPath(folder + "/a/plain/d", &error));
    EXPECT_EQ(description(error), "Creating a directory failed because the file or directory already exists. (EEXIST)");

    // Creating with contents overwrites from the start and keeps a longer file's tail.
    writeFile(folder + "/a/plain", "0123456");
    EXPECT_TRUE(ZRFile::createFileAtPath(folder + "/a/plain"));
    EXPECT_TRUE(ZRFile::createFileAtPath(folder + "/a/plain", std::span<const uint8_t>(ZRData { 'x', 'y' })));
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/a/plain"), "xy23456");
    EXPECT_FALSE(ZRFile::createFileAtPath(folder + "/missing/file", &error));
    EXPECT_EQ(error->code(), ENOENT);

    EXPECT_TRUE(ZRFile::movePath(folder + "/a/plain", folder + "/a/plain"));
    EXPECT_TRUE(ZRFile::movePath(folder + "/a/plain", folder + "/a/b/moved"));
    EXPECT_TRUE(ZRFile::fileExistsAtPath(folder + "/a/b/moved"));
    EXPECT_FALSE(ZRFile::movePath(folder + "/a/none.aif", folder + "/a/NONE.aif", &error));
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_EQ(description(error), "Moving 'none' failed because the file or directory was not found. (ENOENT)");

    const auto modified = ZRFile::modificationDateOfFileAtPath(folder + "/a/b/moved");
    ASSERT_TRUE(modified);
    EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - *modified), std::chrono::minutes(5));
    EXPECT_EQ(ZRFile::modificationDateOfFileAtPath(folder + "/none"), std::nullopt);

    EXPECT_TRUE(ZRFile::deleteFileAtPath(folder + "/none", &error));
    EXPECT_TRUE(ZRFile::deleteFileAtPath(folder + "/a", &error));
    EXPECT_FALSE(ZRFile::existsAtPath(folder + "/a"));
}

TEST(ZRFile, keepsTypeAndCreatorCodesInTheFinderInfoAttribute)
{
    const std::string path = ZRTestScratchFolder("ZRFileCodes") + "/take.aif";
    ASSERT_TRUE(ZRFile::createFileAtPath(path));
    EXPECT_EQ(ZRFile::typeCodeAtPath(path), 0u);
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(path);
    file->setTypeCode(0x41494646); // 'AIFF'
    ZRFile::setCreatorCode(0x5A527374, path); // 'ZRst'

    uint8_t info[32] = {};
    if (getxattr(path.c_str(), "user.com.apple.FinderInfo", info, sizeof info) < 0) {
        // A file system without user attributes keeps nothing and reports nothing.
        EXPECT_EQ(file->typeCode(), 0u);
        GTEST_SKIP() << "no user extended attributes here";
    }
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(info), 8), "AIFFZRst");
    EXPECT_EQ(file->typeCode(), 0x41494646u);
    EXPECT_EQ(file->creatorCode(), 0x5A527374u);
    EXPECT_EQ(ZRFile::typeCodeAtPath(path + ".none"), 0u);
}
