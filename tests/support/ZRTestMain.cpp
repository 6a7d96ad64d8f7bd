#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

bool insideBuildTree(const char* path)
{
    const std::string_view build = ZR_TEST_BINARY_DIR;
    const std::string_view folder = path ? path : "";
    return folder.starts_with(build) && (folder.size() == build.size() || folder[build.size()] == '/');
}

// Tests make logs, defaults and support folders below the home folder. However the program is started, by ctest or
// directly, they get a home folder in the build tree, so that the user's own is never touched; one already inside
// the build tree (a test's own) is kept.
void useTestHome()
{
    const std::string home = std::string(ZR_TEST_BINARY_DIR) + "/home";
    if (!insideBuildTree(std::getenv("HOME"))) {
        std::filesystem::create_directories(home);
        setenv("HOME", home.c_str(), 1);
    }
    if (!insideBuildTree(std::getenv("XDG_CONFIG_HOME")))
        setenv("XDG_CONFIG_HOME", (std::string(std::getenv("HOME")) + "/.config").c_str(), 1);
}

}

int main(int argc, char** argv)
{
    useTestHome();
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // A German locale of the tests' own (see CMakeLists.txt), for the translation tests.
    setenv("LOCPATH", ZR_TEST_BINARY_DIR "/locales", 0);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
