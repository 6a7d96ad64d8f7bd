#include <zrbase/file/ZRFile.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>

// A million typed reads through ZRFile against the same reads as bare fread calls of four bytes.
// "ratio" is the reference's time over ours: 1 means as fast, 0.5 half as fast.
namespace {

constexpr int ZRReadCount = 1000000;

std::string benchmarkFile()
{
    static const std::string path = [] {
        const std::string file = (std::filesystem::temp_directory_path() / "ZRFileBench.data").string();
        const ZRData zeros(ZRReadCount * sizeof(int32_t));
        ZRFile::createFileAtPath(file, zeros);
        return file;
    }();
    return path;
}

void BM_File_readIntValue(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    const std::string path = benchmarkFile();
    std::unique_ptr<ZRFile> file = ZRFile::fileWithPath(path);
    std::FILE* reference = std::fopen(path.c_str(), "r");
    if (!file || !reference)
        return state.SkipWithError("the benchmark file cannot be opened");
    Clock::duration oursTotal {}, referenceTotal {};
    for (auto _ : state) {
        file->moveToBeginning();
        std::rewind(reference);
        const auto start = Clock::now();
        for (int count = 0; count < ZRReadCount; ++count)
            benchmark::DoNotOptimize(file->readIntValue());
        const auto middle = Clock::now();
        for (int count = 0; count < ZRReadCount; ++count) {
            int32_t value = 0;
            benchmark::DoNotOptimize(std::fread(&value, sizeof value, 1, reference));
            benchmark::DoNotOptimize(value);
        }
        const auto end = Clock::now();
        oursTotal += middle - start;
        referenceTotal += end - middle;
        state.SetIterationTime(std::chrono::duration<double>(middle - start).count());
    }
    std::fclose(reference);
    state.SetItemsProcessed(state.iterations() * ZRReadCount);
    state.counters["ratio"] = static_cast<double>(referenceTotal.count()) / static_cast<double>(oursTotal.count());
}

}

BENCHMARK(BM_File_readIntValue)->UseManualTime()->Unit(benchmark::kMillisecond);
