#include <zrbase/core/ZRLog.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int threadCount = 4;
constexpr int batchesPerThread = 200;
constexpr int callsPerBatch = 50;
const std::string line = "2009-03-14 09:26:53.589 Mixer        Studio::AuxiliaryBus     [i] level 3 of bus 12\n";

// Four threads call `call` at once; answers the median cost of one call in nanoseconds, each sample the mean of a
// short batch of calls.
double medianNanosecondsPerCall(const std::function<void()>& call)
{
    std::vector<double> samples;
    std::mutex samplesMutex;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            std::vector<double> own;
            own.reserve(batchesPerThread);
            for (int batch = 0; batch < batchesPerThread; ++batch) {
                auto start = std::chrono::steady_clock::now();
                for (int index = 0; index < callsPerBatch; ++index)
                    call();
                std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
                own.push_back(elapsed.count() / callsPerBatch);
            }
            std::lock_guard lock(samplesMutex);
            samples.insert(samples.end(), own.begin(), own.end());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end());
    return samples[samples.size() / 2];
}

std::string temporaryPath(const char* name)
{
    return std::string("/tmp/ZRLogBench-") + name + "-" + std::to_string(getpid());
}

}

// The cost of queueing one line while four threads log, against writing and flushing each line to a file.
static void BM_Log_log(benchmark::State& state)
{
    const std::string logPath = temporaryPath("log");
    const std::string referencePath = temporaryPath("reference");
    std::unique_ptr<ZRLog> log = ZRLog::logWithPath(logPath);
    std::FILE* reference = std::fopen(referencePath.c_str(), "a");
    if (!log || !reference) {
        state.SkipWithError("cannot open the files in /tmp");
        return;
    }

    std::vector<double> logCosts;
    std::vector<double> referenceCosts;
    for (auto _ : state) {
        logCosts.push_back(medianNanosecondsPerCall([&] { log->log(line); }));
        referenceCosts.push_back(medianNanosecondsPerCall([&] {
            std::fwrite(line.data(), 1, line.size(), reference);
            std::fflush(reference);
        }));
        state.PauseTiming();
        log->flush();
        state.ResumeTiming();
    }
    std::sort(logCosts.begin(), logCosts.end());
    std::sort(referenceCosts.begin(), referenceCosts.end());
    const double logCost = logCosts[logCosts.size() / 2];
    const double referenceCost = referenceCosts[referenceCosts.size() / 2];
    state.counters["log_ns_per_call"] = logCost;
    state.counters["fwrite_fflush_ns_per_call"] = referenceCost;
    state.counters["log_to_fwrite_fflush"] = logCost / referenceCost;

    log.reset();
    std::fclose(reference);
    std::remove(logPath.c_str());
    std::remove(referencePath.c_str());
}
BENCHMARK(BM_Log_log)->Iterations(20)->Unit(benchmark::kMillisecond);
