#pragma once

#include <zrbase/core/ZRError.h>

#include <functional>
#include <string>
#include <vector>

namespace zr {

class ProgressBar;

// What one input file gave: its output, or the error that stopped it.
struct FileOutcome {
    std::string output;
    ZRErrorPtr error;
    bool succeeded() const noexcept { return !error; }
};

// Runs the job on every file, several at once on the machine's cores, and hands the outcomes to `deliver` on the
// calling thread in the files' order, each as soon as it and all before it are done. A failed file gets its one
// line, "zr: FILE: <sentence>", on standard error. Answers the exit status: 0, or 1 when any file failed.
int runFileJobs(const std::vector<std::string>& files, const std::function<FileOutcome(const std::string&)>& job,
    const std::function<void(size_t index, const FileOutcome&)>& deliver);

// Runs the job over the files and prints their outputs in order: texts one after the other with a blank line
// between them, or with `json` one document, an array when several files were given. `beforeText` is called
// before the first text is printed (to end a progress bar). Answers the exit status.
int printFileReports(const std::vector<std::string>& files, bool json,
    const std::function<FileOutcome(const std::string&)>& job, const std::function<void()>& beforeText = {});

// Runs a command on one input with a progress bar when `progress` allows it, and reports its failure.
int runSingleFile(const std::string& input, bool progress, const std::function<FileOutcome(ProgressBar&)>& job);

// Prints the line of a failed file.
void reportFailure(const std::string& file, const ZRErrorPtr& error);

}
