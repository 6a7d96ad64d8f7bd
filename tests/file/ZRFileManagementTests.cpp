#include <zrbase/app/ZRApplication.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

std::string description(const ZRErrorPtr& error) { return error ? error->localizedDescription().value_or("") : ""; }

struct stat statusOf(const std::string& path)
{
    struct stat status { };
    lstat(path.c_str(), &status);
    return status;
}

long peakResidentKiB()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// A folder on another file system than the tests' home folder, where there is one.
std::optional<std::string> otherFileSystemFolder(const std::string& name)
{
    if (statusOf("/dev/shm").st_dev == statusOf(std::getenv("HOME")).st_dev || access("/dev/shm", W_OK) != 0)
        return std::nullopt;
    const std::string folder = "/dev/shm/" + name + std::to_string(getpid());
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    return folder;
}

}

TEST(ZRFileManagement, listsSortedNamesAndMeasuresSizesAndDates)
{
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(1);
    const std::string folder = ZRTestScratchFolder("ZRFileManagementListing");
    std::ofstream(folder + "/b", std::ios::binary) << "12345";
    std::ofstream(folder + "/a", std::ios::binary) << "1";
    std::ofstream(folder + "/.hidden", std::ios::binary) << "12";
    ZRFile::createDirectoryAtPath(folder + "/sub/deeper");
    std::ofstream(folder + "/sub/deeper/c", std::ios::binary) << "1234567";
    symlink("b-target-of-20-bytes", (folder + "/link").c_str());

    EXPECT_EQ(
        ZRFile::contentsOfDirectoryAtPath(folder), (std::vector<std::string> { ".hidden", "a", "b", "link", "sub" }));
    EXPECT_EQ(ZRFile::lengthOfFileAtPath(folder + "/link"), 20u);
    EXPECT_EQ(ZRFile::lengthOfFileAtPath(folder + "/missing"), 0u);
    EXPECT_EQ(ZRFile::sizeOfDirectoryAtPath(folder), 5u + 1 + 2 + 7 + 20);

    ZRErrorPtr error;
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(folder + "/missing", &error), std::nullopt);
    EXPECT_EQ(description(error), "Listing 'missing' failed because No such file or directory");

    const std::optional<ZRDate> created = ZRFile::creationDateOfFileAtPath(folder + "/a");
    ASSERT_TRUE(created);
    EXPECT_GE(*created, before);
    EXPECT_LE(*created, std::chrono::system_clock::now());
    EXPECT_EQ(ZRFile::creationDateOfFileAtPath(folder + "/missing"), std::nullopt);
}

TEST(ZRFileManagement, copiesFoldersWithLinksModesTimesAndFinderInformationButNeverOverAnItem)
{
    const std::string folder = ZRTestScratchFolder("ZRFileManagementCopy");
    const std::string source = folder + "/Session";
    ZRFile::createDirectoryAtPath(source + "/Audio");
    std::ofstream(source + "/Audio/take.aif", std::ios::binary) << "FORM data";
    chmod((source + "/Audio/take.aif").c_str(), 0640);
    ZRFile::setTypeCode(ZRFourCharCode("AIFF"), source + "/Audio/take.aif");
    const timespec past[2] = { { 1000000000, 0 }, { 1000000000, 500 } };
    utimensat(AT_FDCWD, (source + "/Audio/take.aif").c_str(), past, 0);
    symlink("Audio/take.aif", (source + "/current").c_str());

    ASSERT_TRUE(ZRFile::copyPath(source, folder + "/Copy"));
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/Copy/Audio/take.aif"), "FORM data");
    EXPECT_EQ(std::filesystem::read_symlink(folder + "/Copy/current"), "Audio/take.aif");
    const struct stat copied = statusOf(folder + "/Copy/Audio/take.aif");
    EXPECT_EQ(copied.st_mode & 0777, 0640u);
    EXPECT_EQ(copied.st_mtim.tv_sec, past[1].tv_sec);
    EXPECT_EQ(copied.st_mtim.tv_nsec, past[1].tv_nsec);
    if (ZRFile::typeCodeAtPath(source + "/Audio/take.aif") == ZRFourCharCode("AIFF")) {
        EXPECT_EQ(ZRFile::typeCodeAtPath(folder + "/Copy/Audio/take.aif"), ZRFourCharCode("AIFF"));
    }

    // An existing destination is left alone.
    ZRErrorPtr error;
    std::ofstream(folder + "/existing.aif", std::ios::binary) << "keep";
    EXPECT_FALSE(ZRFile::copyPath(source + "/Audio/take.aif", folder + "/existing.aif", &error));
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/existing.aif"), "keep");
    EXPECT_EQ(error->domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(error->code(), -1);
    EXPECT_EQ(description(error), "Copying 'take.aif' failed because File exists");

    // A folder copied into itself stops and leaves nothing behind.
    EXPECT_FALSE(ZRFile::copyPath(source, source + "/Audio/Nested", &error));
    EXPECT_EQ(description(error), "Copying 'Session' failed because Invalid argument");
    EXPECT_FALSE(ZRFile::existsAtPath(source + "/Audio/Nested"));
    EXPECT_FALSE(ZRFile::copyPath(folder + "/missing", folder + "/other", &error));
    EXPECT_EQ(description(error), "Copying 'missing' failed because No such file or directory");
}

TEST(ZRFileManagement, copiesAndMovesAGibibyteWithBoundedMemoryAndRenamesWithinAFileSystem)
{
    constexpr off_t length = off_t(1) << 30;
    constexpr off_t dataOffset = length / 2;
    const std::string folder = ZRTestScratchFolder("ZRFileManagementLarge");
    const std::string original = folder + "/large.wav";
    std::string data(8 << 20, '\0');
    for (size_t index = 0; index < data.size(); ++index)
        data[index] = static_cast<char>(index * 7 + index / 4096);
    std::ofstream(original, std::ios::binary).seekp(dataOffset).write(data.data(), std::streamsize(data.size()));
    std::filesystem::resize_file(original, length);
    const auto dataAt = [&](const std::string& path) {
        std::string read(data.size(), '\0');
        std::ifstream(path, std::ios::binary).seekg(dataOffset).read(read.data(), std::streamsize(read.size()));
        return read == data;
    };

    const long peakBefore = peakResidentKiB();
    ASSERT_TRUE(ZRFile::copyPath(original, folder + "/copy.wav"));
    const std::optional<std::string> elsewhere = otherFileSystemFolder("ZRFileManagementLarge");
    if (elsewhere) {
        ASSERT_TRUE(ZRFile::movePath(folder + "/copy.wav", *elsewhere + "/moved.wav"));
    }
    EXPECT_LT(peakResidentKiB() - peakBefore, 32 * 1024);

    const std::string copy = elsewhere ? *elsewhere + "/moved.wav" : folder + "/copy.wav";
    EXPECT_EQ(statusOf(copy).st_size, length);
    EXPECT_TRUE(dataAt(copy));
    // Holes stay holes: the copy takes the space of its data only.
    EXPECT_LT(statusOf(copy).st_blocks * 512, 64 << 20);
    if (elsewhere) {
        EXPECT_FALSE(ZRFile::existsAtPath(folder + "/copy.wav"));
        std::filesystem::remove_all(*elsewhere);
    }

    const ino_t inode = statusOf(original).st_ino;
    ASSERT_TRUE(ZRFile::movePath(original, folder + "/renamed.wav"));
    EXPECT_EQ(statusOf(folder + "/renamed.wav").st_ino, inode);
}

TEST(ZRFileManagement, renamesKeepingTheExtensionAndCopiesFolderEntriesSkippingExistingFiles)
{
    const std::string folder = ZRTestScratchFolder("ZRFileManagementRename");
    ZRFile::createFileAtPath(folder + "/take.aif");
    ASSERT_TRUE(ZRFile::renamePath(folder + "/take.aif", "mix"));
    EXPECT_TRUE(ZRFile::fileExistsAtPath(folder + "/mix.aif"));
    ASSERT_TRUE(ZRFile::renamePath(folder + "/mix.aif", "mix.wav"));
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(folder), std::vector<std::string> { "mix.wav" });

    // A change of case only never replaces another file whose name differs in case alone.
    ZRErrorPtr error;
    std::ofstream(folder + "/Mix.wav", std::ios::binary) << "other";
    EXPECT_FALSE(ZRFile::movePath(folder + "/mix.wav", folder + "/Mix.wav", &error));
    EXPECT_EQ(description(error), "Moving 'mix' failed because the file or directory already exists. (EEXIST)");
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/Mix.wav"), "other");
    EXPECT_TRUE(ZRFile::fileExistsAtPath(folder + "/mix.wav"));

    const std::string source = folder + "/source";
    const std::string destination = folder + "/destination/nested";
    ZRFile::createDirectoryAtPath(source + "/sub");
    std::ofstream(source + "/a", std::ios::binary) << "first";
    ASSERT_TRUE(ZRFile::copyItemsInDirectory(source, destination));
    EXPECT_EQ(ZRTestContentsOfFile(destination + "/a"), "first");
    EXPECT_TRUE(ZRFile::directoryExistsAtPath(destination + "/sub"));

    // The existing file is skipped; the existing folder is not, and its copy fails.
    std::ofstream(source + "/a", std::ios::binary) << "second";
    EXPECT_FALSE(ZRFile::copyItemsInDirectory(source, destination, &error));
    EXPECT_EQ(description(error), "Copying 'sub' failed because File exists");
    EXPECT_EQ(ZRTestContentsOfFile(destination + "/a"), "first");

    ASSERT_TRUE(ZRFile::emptyDirectoryAtPath(destination));
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(destination), std::vector<std::string> {});
    EXPECT_TRUE(ZRFile::emptyDirectoryAtPath(destination));
    EXPECT_FALSE(ZRFile::emptyDirectoryAtPath(folder + "/missing", &error));
    EXPECT_EQ(description(error), "Listing 'missing' failed because No such file or directory");
}

// "…/link/" names the link: the kernel would follow it for the trailing slash, the file operations do not, so that
// nothing beyond the item named is ever removed, moved or copied.
TEST(ZRFileManagement, actsOnALinkItselfWhenItsPathEndsInASlash)
{
    const std::string folder = ZRTestScratchFolder("ZRFileManagementLinks");
    const std::string target = folder + "/target";
    ZRFile::createDirectoryAtPath(target);
    std::ofstream(target + "/take.aif", std::ios::binary) << "keep";
    const auto makeLink = [&](const std::string& name) {
        std::filesystem::create_directory_symlink(target, folder + "/" + name);
        return folder + "/" + name + "/";
    };
    const auto targetIsWhole = [&] { return ZRTestContentsOfFile(target + "/take.aif") == "keep"; };

    ZRErrorPtr error;
    EXPECT_TRUE(ZRFile::deleteFileAtPath(makeLink("deleted"), &error));
    EXPECT_FALSE(std::filesystem::is_symlink(folder + "/deleted"));
    EXPECT_TRUE(targetIsWhole());

    EXPECT_TRUE(ZRFile::movePath(makeLink("moved"), folder + "/renamed/", &error));
    EXPECT_TRUE(std::filesystem::is_symlink(folder + "/renamed"));
    EXPECT_TRUE(ZRFile::copyPath(folder + "/renamed/", folder + "/copied", &error));
    EXPECT_TRUE(std::filesystem::is_symlink(folder + "/copied"));
    EXPECT_TRUE(targetIsWhole());

    // Emptying a folder removes a link in it as a link.
    ZRFile::createDirectoryAtPath(folder + "/outer");
    std::filesystem::create_directory_symlink(target, folder + "/outer/inner");
    EXPECT_TRUE(ZRFile::emptyDirectoryAtPath(folder + "/outer/", &error));
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(folder + "/outer"), std::vector<std::string> {});
    EXPECT_TRUE(targetIsWhole());

    // A folder named by a way round is not deleted at all.
    EXPECT_FALSE(ZRFile::deleteFileAtPath(folder + "/renamed/.", &error));
    EXPECT_EQ(description(error).substr(0, 26), "Deleting '.' failed becaus");
    EXPECT_FALSE(ZRFile::deleteFileAtPath(target + "/..", &error));
    EXPECT_TRUE(targetIsWhole());

    if (geteuid() == 0) {
        EXPECT_TRUE(ZRFile::deleteFileAtPathWithAuthentication(folder + "/copied/", &error));
        EXPECT_FALSE(std::filesystem::is_symlink(folder + "/copied"));
        EXPECT_TRUE(ZRFile::movePathWithAuthentication(folder + "/renamed/", folder + "/again", &error));
        EXPECT_TRUE(std::filesystem::is_symlink(folder + "/again"));
        EXPECT_TRUE(targetIsWhole());
    }
}

TEST(ZRFileManagement, privilegedToolsTakeHostileNamesAsNamesAndReportTheirFailures)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "the tools would ask for a password";
    const std::string folder = ZRTestScratchFolder("ZRFileManagementPrivileged");
    const std::string workingFolder = std::filesystem::current_path();
    ASSERT_EQ(chdir(folder.c_str()), 0);
    const std::string quoted = "it's \"a\" take\nwith $(lines).aif";
    std::ofstream("-rf", std::ios::binary) << "dash";
    std::ofstream(quoted, std::ios::binary) << "quoted";

    EXPECT_TRUE(ZRFile::copyPathWithAuthentication("-rf", "-t"));
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/-t"), "dash");
    EXPECT_TRUE(ZRFile::movePathWithAuthentication(folder + "/" + quoted, "-i copy.aif"));
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/-i copy.aif"), "quoted");
    EXPECT_TRUE(ZRFile::deleteFileAtPathWithAuthentication("-rf"));
    EXPECT_TRUE(ZRFile::deleteFileAtPathWithAuthentication("-t"));
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(folder), std::vector<std::string> { "-i copy.aif" });

    ZRErrorPtr error;
    EXPECT_FALSE(ZRFile::copyPathWithAuthentication("missing.aif", "anywhere.aif", &error));
    EXPECT_EQ(error->domain(), "NSSecurityErrorDomain");
    EXPECT_EQ(error->code(), -60032);
    EXPECT_EQ(description(error),
        "Copying 'missing' failed because an invalid status was returned during execution of a privileged tool.");
    EXPECT_FALSE(ZRFile::movePathWithAuthentication("missing.aif", "anywhere.aif", &error));
    EXPECT_EQ(error->localizedDescription()->substr(0, 26), "Moving 'missing' failed be");
    EXPECT_TRUE(ZRFile::deleteFileAtPathWithAuthentication("missing.aif"));
    EXPECT_EQ(chdir(workingFolder.c_str()), 0);
}

TEST(ZRFileManagement, findsTemporaryFoldersOnTheFileSystemOfThePath)
{
    const std::string support
        = std::string(std::getenv("HOME")) + "/Library/Application Support/Velmora/" + ZRApplication::shared().name();
    EXPECT_EQ(ZRFile::tempDirectoryForPath("~/Music/take.aif"), support + "/Temp/");
    EXPECT_TRUE(ZRFile::directoryExistsAtPath(support + "/Temp"));
    EXPECT_EQ(ZRFile::tempDirectoryForPath("/Volumes/No Such Volume/take.aif"), support + "/Temp/");

    if (const std::optional<std::string> elsewhere = otherFileSystemFolder("ZRFileManagementTemp")) {
        EXPECT_EQ(ZRFile::tempDirectoryForPath(*elsewhere + "/not/yet/made.aif"), "/dev/shm/.velmora_temp/");
        EXPECT_TRUE(ZRFile::directoryExistsAtPath("/dev/shm/.velmora_temp"));
        std::filesystem::remove_all(*elsewhere);
        rmdir("/dev/shm/.velmora_temp");
    }

    // A volume folder as a Mac has it; only root may make one here.
    if (geteuid() == 0) {
        const bool hadVolumes = ZRFile::existsAtPath("/Volumes");
        const std::string volume = "/Volumes/ZRTest" + std::to_string(getpid());
        ASSERT_TRUE(ZRFile::createDirectoryAtPath(volume));
        EXPECT_EQ(ZRFile::tempDirectoryForPath(volume + "/Audio/take.aif"), volume + "/.velmora_temp/");
        EXPECT_TRUE(ZRFile::directoryExistsAtPath(volume + "/.velmora_temp"));
        std::filesystem::remove_all(hadVolumes ? volume : "/Volumes");
    }
}

TEST(ZRFileManagement, keepsLabelsAndHiddenExtensionsInTheMacFinderInformation)
{
    const std::string path = ZRTestScratchFolder("ZRFileManagementFinder") + "/take.aif";
    ZRFile::createFileAtPath(path);
    // Finder information as a Mac writes it: type 'AIFF', creator 'ZRBs', Finder flags 0xA5FF
    // (label 7), extended flags 0x8001.
    std::array<uint8_t, 32> info { 'A', 'I', 'F', 'F', 'Z', 'R', 'B', 's', 0xA5, 0xFF };
    info[24] = 0x80;
    info[25] = 0x01;
    if (setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0) != 0)
        GTEST_SKIP() << "no user attributes on this file system";
    EXPECT_EQ(ZRFile::labelAtPath(path), 7u);

    ZRFile::setLabel(5, path);
    ZRFile::hideExtensionAtPath(path);
    EXPECT_EQ(ZRFile::labelAtPath(path), 5u);
    std::array<uint8_t, 32> written {};
    ASSERT_EQ(getxattr(path.c_str(), "user.com.apple.FinderInfo", written.data(), written.size()), 32);
    info[9] = 0xFB;
    info[25] = 0x11;
    EXPECT_EQ(written, info);
    EXPECT_EQ(ZRFile::creatorCodeAtPath(path), ZRFourCharCode("ZRBs"));

    EXPECT_FALSE(ZRFile::isReadOnlyVolumeAtPath(path));
    EXPECT_FALSE(ZRFile::isReadOnlyVolumeAtPath("/no/such/volume"));
    EXPECT_GT(ZRFile::availableBytesOnVolumeAtPath(path), 0u);
    EXPECT_EQ(ZRFile::availableBytesOnVolumeAtPath("/no/such/volume"), 0u);
}
