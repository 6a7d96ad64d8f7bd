// The operator new below takes its memory from malloc, and the standard library's operator delete frees it there;
// GCC pairs the two by name and would warn.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

#include "ZRBenchmarkRatio.h"

#include <zrbase/automation/ZRValueMap.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

// Hosts evaluate curves once per sample, so a curve is measured per call against one std::pow over the same
// inputs; "allocations" counts the heap allocations made while the curve ran (none are allowed).
namespace {

std::atomic<long> allocationCount { 0 };

constexpr size_t inputCount = 4096;

std::vector<float> inputs()
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(0, 1);
    std::vector<float> values(inputCount);
    for (float& value : values)
        value = unit(random);
    return values;
}

ZRValueMap curve(uint32_t type)
{
    ZRValueMap map(type);
    switch (type) {
    case ZRValueMapSegmented:
        map.setControlPoints({ { 0, 0 }, { 0.1f, 0.3f }, { 0.25f, 0.45f }, { 0.5f, 0.6f }, { 0.8f, 0.7f }, { 1, 1 } });
        break;
    case ZRValueMapLogarithmic:
        map.setControlPoint({ 0.3f, 0 }, 1);
        break;
    case ZRValueMapQuadratic:
        map.setControlPoint({ 0.8f, 0.1f }, 1);
        break;
    default:
        map.setControlPoints({ { 0, 0 }, { 0.5f, 0.05f }, { 0.6f, 0.95f }, { 1, 1 } });
        break;
    }
    return map;
}

void BM_ValueMap_outputValueForInputValue(benchmark::State& state)
{
    const ZRValueMap map = curve(static_cast<uint32_t>(state.range(0)));
    const std::vector<float> values = inputs();
    float sink = 0;
    double referenceSink = 0;
    long allocations = 0;
    ZRBenchmarkRatio(
        state,
        [&] {
            const long before = allocationCount.load(std::memory_order_relaxed);
            for (float value : values)
                sink += map.outputValueForInputValue(value);
            allocations += allocationCount.load(std::memory_order_relaxed) - before;
        },
        [&] {
            for (float value : values)
                referenceSink += std::pow(static_cast<double>(value), 1.7);
        });
    benchmark::DoNotOptimize(sink);
    benchmark::DoNotOptimize(referenceSink);
    state.counters["allocations"] = static_cast<double>(allocations);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * inputCount));
}

}

void* operator new(size_t size)
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

BENCHMARK(BM_ValueMap_outputValueForInputValue)
    ->ArgName("kind")
    ->DenseRange(ZRValueMapSegmented, ZRValueMapCubic)
    ->UseManualTime();
