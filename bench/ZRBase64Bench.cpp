#include "core/ZRDataExtension.h"
#include "core/ZRStringExtension.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <dlfcn.h>
#include <random>

// The reference is OpenSSL's block coder, looked up at run time so that this program needs no link to OpenSSL.
// "ratio" is the reference's time over ours: 1 means as fast, 0.5 half as fast.
namespace {

using BlockCoder = int (*)(unsigned char*, const unsigned char*, int);

BlockCoder openSSLCoder(const char* name)
{
    static void* library = dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL);
    return library ? reinterpret_cast<BlockCoder>(dlsym(library, name)) : nullptr;
}

ZRData randomBytes(size_t length)
{
    std::mt19937 generator(42);
    ZRData data(length);
    for (uint8_t& byte : data)
        byte = static_cast<uint8_t>(generator());
    return data;
}

template <typename Ours, typename Reference>
void compare(benchmark::State& state, Ours ours, Reference reference, size_t bytes)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration oursTotal {}, referenceTotal {};
    for (auto _ : state) {
        const auto start = Clock::now();
        ours();
        const auto middle = Clock::now();
        reference();
        const auto end = Clock::now();
        oursTotal += middle - start;
        referenceTotal += end - middle;
        state.SetIterationTime(std::chrono::duration<double>(middle - start).count());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["ratio"] = static_cast<double>(referenceTotal.count()) / static_cast<double>(oursTotal.count());
}

void BM_Base64_encode(benchmark::State& state)
{
    const BlockCoder encodeBlock = openSSLCoder("EVP_EncodeBlock");
    if (!encodeBlock)
        return state.SkipWithError("libcrypto.so.3 is not available");
    const ZRData data = randomBytes(static_cast<size_t>(state.range(0)));
    std::string reference((data.size() + 2) / 3 * 4 + 1, '\0');
    compare(
        state, [&] { benchmark::DoNotOptimize(ZRExtension::encodeBase64(data)); },
        [&] {
            benchmark::DoNotOptimize(encodeBlock(
                reinterpret_cast<unsigned char*>(reference.data()), data.data(), static_cast<int>(data.size())));
        },
        data.size());
}

void BM_Base64_decode(benchmark::State& state)
{
    const BlockCoder decodeBlock = openSSLCoder("EVP_DecodeBlock");
    if (!decodeBlock)
        return state.SkipWithError("libcrypto.so.3 is not available");
    const std::string text = ZRExtension::encodeBase64(randomBytes(static_cast<size_t>(state.range(0))));
    ZRData reference(text.size() / 4 * 3);
    compare(
        state, [&] { benchmark::DoNotOptimize(ZRExtension::decodeBase64(text)); },
        [&] {
            benchmark::DoNotOptimize(decodeBlock(
                reference.data(), reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size())));
        },
        text.size());
}

}

BENCHMARK(BM_Base64_encode)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
BENCHMARK(BM_Base64_decode)->RangeMultiplier(32)->Range(1024, 1 << 20)->UseManualTime();
