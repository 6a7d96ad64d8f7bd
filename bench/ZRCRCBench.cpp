#include <zrbase/core/ZRCRC.h>

#include <benchmark/benchmark.h>

#include "ZRBenchmarkRatio.h"

#include <zlib.h>

#include <random>
#include <vector>

// The reference is zlib's crc32, the same CRC as the default preset.
namespace {

std::vector<uint8_t> randomBytes(size_t length)
{
    std::mt19937 generator(42);
    std::vector<uint8_t> data(length);
    for (uint8_t& byte : data)
        byte = static_cast<uint8_t>(generator());
    return data;
}

void measure(benchmark::State& state, ZRCRC crc)
{
    const std::vector<uint8_t> data = randomBytes(static_cast<size_t>(state.range(0)));
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(crc.crcForData(data)); },
        [&] { benchmark::DoNotOptimize(crc32(0, data.data(), static_cast<uInt>(data.size()))); },
        static_cast<int64_t>(data.size()));
}

void BM_CRC_crc32(benchmark::State& state) { measure(state, ZRCRC::crc()); }

void BM_CRC_ccitt16(benchmark::State& state) { measure(state, ZRCRC::crcForCCITT16()); }

}

BENCHMARK(BM_CRC_crc32)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
BENCHMARK(BM_CRC_ccitt16)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
