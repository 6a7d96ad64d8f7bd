#include <zrbase/file/ZRFile.h>

#include "ZRBenchmarkRatio.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Copying a 64 MiB file with ZRFile::copyPath against what cp does for a plain file: copy_file_range until the end.
// Both remove their previous copy first. "ratio" is the reference's time over ours: 1 means as fast.
namespace {

constexpr size_t ZRCopyLength = size_t(64) << 20;

void copyWithCopyFileRange(const std::string& source, const std::string& destination)
{
    const int in = open(source.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    struct stat status;
    if (in >= 0 && out >= 0 && fstat(in, &status) == 0) {
        for (off_t remaining = status.st_size; remaining > 0;) {
            const ssize_t copied = copy_file_range(in, nullptr, out, nullptr, static_cast<size_t>(remaining), 0);
            if (copied <= 0)
                break;
            remaining -= copied;
        }
    }
    close(in);
    close(out);
}

void BM_FileManagement_copyPath(benchmark::State& state)
{
    const std::filesystem::path folder
        = std::filesystem::temp_directory_path() / ("ZRFileManagementBench-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const std::string source = folder / "source.wav";
    const std::string ours = folder / "ours.wav";
    const std::string reference = folder / "reference.wav";
    std::vector<uint8_t> data(ZRCopyLength);
    for (size_t index = 0; index < data.size(); ++index)
        data[index] = static_cast<uint8_t>(index * 31 + index / 65536);
    if (!ZRFile::createFileAtPath(source, data)) {
        state.SkipWithError("the source file cannot be written");
        return;
    }

    ZRBenchmarkRatio(
        state,
        [&] {
            unlink(ours.c_str());
            benchmark::DoNotOptimize(ZRFile::copyPath(source, ours));
        },
        [&] {
            unlink(reference.c_str());
            copyWithCopyFileRange(source, reference);
        },
        static_cast<int64_t>(ZRCopyLength));
    std::filesystem::remove_all(folder);
}

}

BENCHMARK(BM_FileManagement_copyPath)->UseManualTime()->Unit(benchmark::kMillisecond);
