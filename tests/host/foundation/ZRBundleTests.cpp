#include <zrbase/host/foundation/ZRBundle.h>

#include "support/ZRTestChildProcess.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(ZRBundle, theMainBundleFollowsItsInformationAndFolders)
{
    const std::string resources = ZRTestScratchFolder("ZRBundle.main");
    EXPECT_TRUE(ZRTestRunInChildProcess([&] {
        ZRBundle& bundle = ZRBundle::main();
        const std::string executableFolder = fs::read_symlink("/proc/self/exe").parent_path().string();
        EXPECT_TRUE(bundle.infoDictionary().empty());
        EXPECT_EQ(bundle.resourcePath(), executableFolder + "/resources");
        EXPECT_EQ(bundle.localePath(), executableFolder + "/resources/locale");
        EXPECT_EQ(bundle.textDomain(), "");

        bundle.setInfoDictionary({ { "CFBundleName", "Sound Studio" }, { "CFBundleVersion", 42 } });
        EXPECT_EQ(bundle.textDomain(), "sound studio");
        EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleVersion"), "42");
        EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleSignature"), "");

        bundle.setResourcePath(resources);
        EXPECT_EQ(bundle.localePath(), resources + "/locale");
        EXPECT_FALSE(bundle.pathForResource("metadata", "plist"));
        std::ofstream(resources + "/metadata.plist") << "<plist><array/></plist>";
        std::ofstream(resources + "/README") << "";
        EXPECT_EQ(bundle.pathForResource("metadata", "plist"), resources + "/metadata.plist");
        EXPECT_EQ(bundle.pathForResource("README", ""), resources + "/README");

        // Folders and domains set on their own stay when what they derive from changes.
        bundle.setLocalePath("/opt/studio/translations");
        bundle.setResourcePath("/opt/studio/resources");
        EXPECT_EQ(bundle.localePath(), "/opt/studio/translations");
        bundle.setTextDomain("studio");
        bundle.setInfoDictionary({ { "CFBundleName", "Other" } });
        EXPECT_EQ(bundle.textDomain(), "studio");
        return !testing::Test::HasFailure();
    }));
}

// Runs as the test program itself, and again as a copy of it beside an Info.plist.
TEST(ZRBundle, theMainBundleReadsTheInfoPlistBesideTheExecutable)
{
    if (std::getenv("ZR_TEST_BUNDLE_COPY")) {
        EXPECT_EQ(ZRBundle::main().objectForInfoDictionaryKey("CFBundleName"), "Sound Studio");
        EXPECT_EQ(ZRBundle::main().objectForInfoDictionaryKey("CFBundleShortVersionString"), "2.1");
        EXPECT_EQ(ZRBundle::main().textDomain(), "sound studio");
        return;
    }
    const std::string folder = ZRTestScratchFolder("ZRBundle.infoPlist");
    const std::string copy = folder + "/zrbase-tests";
    const fs::path executable = fs::read_symlink("/proc/self/exe");
    std::error_code error;
    fs::create_hard_link(executable, copy, error);
    if (error)
        fs::copy_file(executable, copy, error);
    ASSERT_FALSE(error) << error.message();
    ASSERT_TRUE(
        ZRPropertyList(ZRDictionary { { "CFBundleName", "Sound Studio" }, { "CFBundleShortVersionString", "2.1" } })
            .writeToFile(folder + "/Info.plist"));
    EXPECT_TRUE(ZRTestRunInChildProcess([&] {
        setenv("ZR_TEST_BUNDLE_COPY", "1", 1);
        execl(copy.c_str(), copy.c_str(), "--gtest_filter=ZRBundle.theMainBundleReadsTheInfoPlistBesideTheExecutable",
            static_cast<char*>(nullptr));
        return false;
    }));
}

TEST(ZRBundle, theLibrarysResourcesComeFromTheBuildTreeOrTheInstalledPrefix)
{
    const ZRBundle& library = ZRBundle::library();
    EXPECT_EQ(fs::weakly_canonical(library.resourcePath()), fs::weakly_canonical(ZR_TEST_BINARY_DIR "/../resources"));
    EXPECT_EQ(library.localePath(), library.resourcePath() + "/locale");
    EXPECT_EQ(library.textDomain(), "zrbase");
    EXPECT_EQ(library.objectForInfoDictionaryKey("CFBundleName"), "ZRBase");

    const std::string prefix = ZRTestScratchFolder("ZRBundle.installed");
    fs::create_directories(prefix + "/lib/x86_64-linux-gnu");
    fs::create_directories(prefix + "/share/zrbase");
    EXPECT_EQ(ZRBundle::libraryResourcePath(prefix + "/lib/x86_64-linux-gnu/libzrbase.so.0"), prefix + "/share/zrbase");
    const std::string installed = ZRBundle::libraryResourcePath("/nonexistent/lib/libzrbase.so.0");
    EXPECT_TRUE(installed.ends_with("/share/zrbase")) << installed;
    EXPECT_EQ(ZRBundle::libraryResourcePath(""), installed);
}
