#include <zrbase/file/ZRFile.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// The test program started directly, with a home folder outside the build tree in HOME (as a user's own would be),
// makes its logs, defaults and support folders in the build tree instead.
TEST(ZRTestProgram, neverTouchesTheHomeFolderItIsStartedWith)
{
    std::string home = (std::filesystem::temp_directory_path() / "zr-test-home-XXXXXX").string();
    ASSERT_NE(mkdtemp(home.data()), nullptr);
    const std::string report = ZRTestScratchFolder("ZRTestProgram") + "/report.json";
    const std::string test = "ZRFileManagement.findsTemporaryFoldersOnTheFileSystemOfThePath";
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "env HOME='" + home + "' XDG_CONFIG_HOME='" + home + "/.config' '" + program
        + "' --gtest_filter=" + test + " --gtest_output=json:" + report + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    // The test that makes a support folder below the home folder did run.
    EXPECT_NE(ZRTestContentsOfFile(report).find("\"tests\": 1,"), std::string::npos);
    EXPECT_EQ(ZRFile::contentsOfDirectoryAtPath(home), std::vector<std::string> {});
    std::filesystem::remove_all(home);
}
