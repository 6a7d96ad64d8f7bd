#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

constexpr int callsPerSample = 2000;

template <typename Call> double nanosecondsPerCall(const Call& call)
{
    const auto start = std::chrono::steady_clock::now();
    for (int index = 0; index < callsPerSample; ++index)
        call();
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / callsPerSample;
}

}

// A log line's worth of directives, against snprintf of the same directives into a string.
static void BM_StringWithFormat_logLine(benchmark::State& state)
{
    const std::string date = "2009-03-14 09:26:53.589";
    const std::string domain = "Mixer";
    const std::string sender = "Studio::AuxiliaryBus";
    double formatTotal = 0;
    double referenceTotal = 0;
    for (auto _ : state) {
        formatTotal += nanosecondsPerCall([&] {
            benchmark::DoNotOptimize(ZRStringWithFormat(
                "%@ %-12.12s %-24.24s [i] level %.1f of bus %qi", date, domain, sender, 3.25, int64_t(12)));
        });
        referenceTotal += nanosecondsPerCall([&] {
            char buffer[128];
            const int length = std::snprintf(buffer, sizeof buffer, "%s %-12.12s %-24.24s [i] level %.1f of bus %lld",
                date.c_str(), domain.c_str(), sender.c_str(), 3.25, 12LL);
            benchmark::DoNotOptimize(std::string(buffer, static_cast<size_t>(length)));
        });
    }
    state.counters["ns_per_call"] = formatTotal / static_cast<double>(state.iterations());
    state.counters["ratio_to_snprintf"] = formatTotal / referenceTotal;
}
BENCHMARK(BM_StringWithFormat_logLine)->Unit(benchmark::kMillisecond);
