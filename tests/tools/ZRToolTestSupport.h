#pragma once

#include <string>
#include <vector>

// What a run of a command gave: its exit status and both output streams.
struct ZRToolRun {
    int status = -1;
    std::string output;
    std::string errors;
};

// Runs a shell command line, capturing standard output and standard error.
ZRToolRun ZRToolRunShell(const std::string& commandLine);
// Runs the zr executable with arguments (quoted for the shell here).
ZRToolRun ZRToolRunZr(const std::vector<std::string>& arguments, const std::string& prefix = {});
// A fresh, empty folder for one test: "<build>/tests/tools/scratch/<name>".
std::string ZRToolScratch(const std::string& name);
// The whole content of a file; empty when it cannot be read.
std::string ZRToolReadFile(const std::string& path);
// A value of `sox FILE -n stats` for a row ("Pk lev dB", "RMS lev dB", "DC offset", "Crest factor") and a
// column (0 overall, then channel 1, 2, …), after sox effects such as "trim 0 1".
double ZRToolSoxStat(const std::string& file, const std::string& row, int column = 0, const std::string& effects = {});
// Quotes a word for the shell.
std::string ZRToolQuote(const std::string& word);
