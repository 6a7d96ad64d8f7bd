#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>

// Times our operation and a reference side by side in every iteration, so that both see the same machine state,
// and reports "ratio" = reference time / our time: 1 means as fast as the reference, 0.5 half as fast.
// The benchmark's own time is ours (register it with UseManualTime()). `prepare` runs untimed before each
// iteration, for operations that change their data in place and would otherwise drift with every pass.
template <typename Prepare, typename Ours, typename Reference>
void ZRBenchmarkRatio(
    benchmark::State& state, Prepare&& prepare, Ours&& ours, Reference&& reference, int64_t bytesPerIteration)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration oursTotal {}, referenceTotal {};
    for (auto _ : state) {
        prepare();
        const auto start = Clock::now();
        ours();
        const auto middle = Clock::now();
        reference();
        const auto end = Clock::now();
        oursTotal += middle - start;
        referenceTotal += end - middle;
        state.SetIterationTime(std::chrono::duration<double>(middle - start).count());
    }
    if (bytesPerIteration > 0)
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytesPerIteration);
    state.counters["ratio"] = oursTotal.count() > 0
        ? static_cast<double>(referenceTotal.count()) / static_cast<double>(oursTotal.count())
        : 0.0;
}

template <typename Ours, typename Reference>
void ZRBenchmarkRatio(benchmark::State& state, Ours&& ours, Reference&& reference, int64_t bytesPerIteration = 0)
{
    ZRBenchmarkRatio(
        state, [] {}, ours, reference, bytesPerIteration);
}
