#include "support/ZRTestFiles.h"

#include <filesystem>
#include <fstream>
#include <sstream>

std::string ZRTestContentsOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

std::string ZRTestScratchFolder(const std::string& name)
{
    std::filesystem::path folder = std::filesystem::path(ZR_TEST_BINARY_DIR) / "scratch" / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder.string();
}
