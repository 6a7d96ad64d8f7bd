#pragma once

#include <string>

// The whole content of a file, empty when it cannot be read.
std::string ZRTestContentsOfFile(const std::string& path);
// An empty folder of the test's own below the tests' build folder, made afresh: "<build>/tests/scratch/<name>".
std::string ZRTestScratchFolder(const std::string& name);
