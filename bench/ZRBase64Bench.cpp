#include <zrbase/core/ZRDataExtension.h>
#include <zrbase/core/ZRStringExtension.h>

#include <benchmark/benchmark.h>

#include "ZRBenchmarkRatio.h"

#include <openssl/evp.h>

#include <random>

// The reference is OpenSSL's block coder.
namespace {

ZRData randomBytes(size_t length)
{
    std::mt19937 generator(42);
    ZRData data(length);
    for (uint8_t& byte : data)
        byte = static_cast<uint8_t>(generator());
    return data;
}

void BM_Base64_encode(benchmark::State& state)
{
    const ZRData data = randomBytes(static_cast<size_t>(state.range(0)));
    std::string reference((data.size() + 2) / 3 * 4 + 1, '\0');
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(ZRExtension::encodeBase64(data)); },
        [&] {
            benchmark::DoNotOptimize(EVP_EncodeBlock(
                reinterpret_cast<unsigned char*>(reference.data()), data.data(), static_cast<int>(data.size())));
        },
        static_cast<int64_t>(data.size()));
}

void BM_Base64_decode(benchmark::State& state)
{
    const std::string text = ZRExtension::encodeBase64(randomBytes(static_cast<size_t>(state.range(0))));
    ZRData reference(text.size() / 4 * 3);
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(ZRExtension::decodeBase64(text)); },
        [&] {
            benchmark::DoNotOptimize(EVP_DecodeBlock(
                reference.data(), reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size())));
        },
        static_cast<int64_t>(text.size()));
}

}

BENCHMARK(BM_Base64_encode)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
BENCHMARK(BM_Base64_decode)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
