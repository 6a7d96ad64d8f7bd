#include "FileJobs.h"

#include "ProgressBar.h"
#include "ToolError.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <thread>

namespace zr {

void reportFailure(const std::string& file, const ZRErrorPtr& error)
{
    std::fprintf(stderr, "zr: %s: %s\n", file.c_str(), sentence(error).c_str());
}

int runFileJobs(const std::vector<std::string>& files, const std::function<FileOutcome(const std::string&)>& job,
    const std::function<void(size_t index, const FileOutcome&)>& deliver)
{
    std::vector<std::optional<FileOutcome>> outcomes(files.size());
    std::mutex mutex;
    std::condition_variable finished;
    std::atomic<size_t> next { 0 };
    const auto work = [&] {
        for (size_t index = next++; index < files.size(); index = next++) {
            FileOutcome outcome = job(files[index]);
            std::lock_guard lock(mutex);
            outcomes[index] = std::move(outcome);
            finished.notify_all();
        }
    };
    const size_t workers = std::min<size_t>(files.size(), std::max(1u, std::thread::hardware_concurrency()));
    // With one worker (one file, one core) the job runs on this thread and nothing waits.
    std::vector<std::thread> threads;
    if (workers == 1)
        work();
    else
        for (size_t i = 0; i < workers; ++i)
            threads.emplace_back(work);

    int status = 0;
    for (size_t index = 0; index < files.size(); ++index) {
        std::unique_lock lock(mutex);
        finished.wait(lock, [&] { return outcomes[index].has_value(); });
        const FileOutcome outcome = std::move(*outcomes[index]);
        outcomes[index].reset();
        lock.unlock();
        if (!outcome.succeeded()) {
            reportFailure(files[index], outcome.error);
            status = 1;
        }
        deliver(index, outcome);
    }
    for (std::thread& thread : threads)
        thread.join();
    return status;
}

int printFileReports(const std::vector<std::string>& files, bool json,
    const std::function<FileOutcome(const std::string&)>& job, const std::function<void()>& beforeText)
{
    const bool array = json && files.size() > 1;
    std::string document = array ? "[" : "";
    bool first = true;
    const int status = runFileJobs(files, job, [&](size_t, const FileOutcome& outcome) {
        if (!outcome.succeeded())
            return;
        if (json) {
            document += (first ? "" : ",") + outcome.output;
        } else {
            if (first && beforeText)
                beforeText();
            std::fputs(((first ? "" : "\n") + outcome.output).c_str(), stdout);
            std::fflush(stdout);
        }
        first = false;
    });
    if (json && (!first || array))
        std::fputs((document + (array ? "]\n" : "\n")).c_str(), stdout);
    return status;
}

int runSingleFile(const std::string& input, bool progress, const std::function<FileOutcome(ProgressBar&)>& job)
{
    ProgressBar bar(progress, 0, 44100.0);
    const FileOutcome outcome = job(bar);
    bar.finish();
    if (outcome.succeeded())
        return 0;
    reportFailure(input, outcome.error);
    return 1;
}

}
