#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRUserDefaults.h>

#include "support/ZRTestChildProcess.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

TEST(ZRUserDefaults, writtenValuesStandOverRegisteredDefaults)
{
    const std::string folder = ZRTestScratchFolder("ZRUserDefaults.values") + "/preferences";
    ZRUserDefaults defaults(folder + "/Studio.plist");
    defaults.registerDefaults({ { "Debug Default Threshold", 4 }, { "name", "Take" } });
    defaults.registerDefaults({ { "name", "Take 2" } });
    EXPECT_EQ(defaults.integerForKey("Debug Default Threshold"), 4);
    EXPECT_EQ(defaults.stringForKey("name"), "Take 2");
    EXPECT_TRUE(defaults.objectForKey("missing").isNone());

    defaults.setObject("Debug Default Threshold", 2);
    defaults.setObject("flag", "YES");
    defaults.setObject("gain", -6.5);
    defaults.setObject("name", ZRPropertyList());
    EXPECT_EQ(defaults.integerForKey("Debug Default Threshold"), 2);
    EXPECT_TRUE(defaults.boolForKey("flag"));
    EXPECT_EQ(defaults.stringForKey("gain"), "-6.5");
    EXPECT_EQ(defaults.stringForKey("name"), "Take 2");
    EXPECT_TRUE(defaults.arrayForKey("gain").empty());
    EXPECT_TRUE(defaults.dictionaryForKey("flag").empty());
    defaults.removeObjectForKey("Debug Default Threshold");
    EXPECT_EQ(defaults.integerForKey("Debug Default Threshold"), 4);

    // Only written values reach the file, which is complete after every write and has no leftovers beside it.
    EXPECT_EQ(ZRPropertyList::propertyListWithContentsOfFile(defaults.path()),
        ZRPropertyList(ZRDictionary { { "flag", "YES" }, { "gain", -6.5 } }));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);

    ASSERT_TRUE(ZRPropertyList(ZRDictionary { { "gain", 1 } }).writeToFile(defaults.path()));
    defaults.reload();
    EXPECT_EQ(defaults.doubleForKey("gain"), 1);
    EXPECT_FALSE(defaults.boolForKey("flag"));
}

TEST(ZRUserDefaults, writtenValuesSurviveARestartOfTheProcess)
{
    const std::string path = ZRTestScratchFolder("ZRUserDefaults.restart") + "/Studio.plist";
    // The child ends at once after writing, without running any exit handlers: every write is on disk already.
    ASSERT_TRUE(ZRTestRunInChildProcess([&] {
        ZRUserDefaults defaults(path);
        defaults.setObject("volume", 0.75);
        defaults.setObject("recent", ZRArray { "a.wav", "b.aif" });
        return true;
    }));
    ZRUserDefaults defaults(path);
    EXPECT_EQ(defaults.doubleForKey("volume"), 0.75);
    EXPECT_EQ(ZRPropertyList(defaults.arrayForKey("recent")), ZRPropertyList(ZRArray { "a.wav", "b.aif" }));
}

TEST(ZRUserDefaults, anUnreadableFileIsReportedOnceAndReadAsEmpty)
{
    const std::string folder = ZRTestScratchFolder("ZRUserDefaults.corrupt");
    for (const std::string& content : { std::string("<plist><dict><key>a</key>"), std::string("\0\1bplist", 8),
             std::string("<plist><array/></plist>") }) {
        const std::string path = folder + "/Studio.plist";
        std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
        testing::internal::CaptureStderr();
        ZRUserDefaults defaults(path);
        defaults.registerDefaults({ { "threshold", 4 } });
        EXPECT_EQ(defaults.integerForKey("threshold"), 4);
        EXPECT_TRUE(defaults.objectForKey("a").isNone());
        defaults.reload();
        const std::string output = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
        EXPECT_NE(output.find(path), std::string::npos) << output;

        defaults.setObject("threshold", 2);
        EXPECT_EQ(
            ZRPropertyList::propertyListWithContentsOfFile(path), ZRPropertyList(ZRDictionary { { "threshold", 2 } }));
    }
}

TEST(ZRUserDefaults, theStandardFileIsNamedAfterTheApplicationInTheConfigurationFolder)
{
    EXPECT_TRUE(ZRTestRunInChildProcess([] {
        setenv("XDG_CONFIG_HOME", "/tmp/zr-configuration", 1);
        // Without an information dictionary the application is named after its executable.
        EXPECT_EQ(ZRUserDefaults::standard().path(), "/tmp/zr-configuration/zrbase-tests.plist");
        return !testing::Test::HasFailure();
    }));
    EXPECT_TRUE(ZRTestRunInChildProcess([] {
        setenv("XDG_CONFIG_HOME", "relative/configuration", 1);
        setenv("HOME", "/tmp/zr-home", 1);
        ZRBundle::main().setInfoDictionary({ { "CFBundleName", "Sound Studio" } });
        EXPECT_EQ(ZRUserDefaults::standard().path(), "/tmp/zr-home/.config/Sound Studio.plist");
        return !testing::Test::HasFailure();
    }));
    EXPECT_TRUE(ZRTestRunInChildProcess([] {
        unsetenv("XDG_CONFIG_HOME");
        setenv("HOME", "/tmp/zr-home", 1);
        ZRBundle::main().setInfoDictionary({ { "CFBundleName", "Studio/Pro" } });
        EXPECT_EQ(ZRUserDefaults::standard().path(), "/tmp/zr-home/.config/Studio-Pro.plist");
        return !testing::Test::HasFailure();
    }));
}
