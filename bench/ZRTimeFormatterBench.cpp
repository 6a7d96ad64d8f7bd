#include "ZRBenchmarkRatio.h"

#include <zrbase/formatters/ZRTimeFormatter.h>

#include <array>
#include <cstdio>
#include <random>
#include <string>

namespace {

constexpr size_t timesPerBatch = 1024;

struct Fields {
    long long hours, minutes, seconds, fraction;
};

// Random times over a day and their fields at the given count per second, worked out before the timing so that the
// reference is nothing but snprintf into a string.
void makeTimes(double unitsPerSecond, long long unitsPerSecondWhole, std::array<double, timesPerBatch>& times,
    std::array<Fields, timesPerBatch>& fields)
{
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> day(0, 86400);
    for (size_t index = 0; index < timesPerBatch; ++index) {
        times[index] = day(random);
        const auto count = static_cast<long long>(times[index] * unitsPerSecond);
        const long long perMinute = 60 * unitsPerSecondWhole;
        fields[index] = { count / (60 * perMinute), count / perMinute % 60, count / unitsPerSecondWhole % 60,
            count % unitsPerSecondWhole };
    }
}

void compareWithSnprintf(
    benchmark::State& state, int32_t format, double unitsPerSecond, long long wholeUnits, const char* pattern)
{
    ZRTimeFormatter formatter;
    formatter.setTimeFormat(format);
    std::array<double, timesPerBatch> times;
    std::array<Fields, timesPerBatch> fields;
    makeTimes(unitsPerSecond, wholeUnits, times, fields);
    ZRBenchmarkRatio(
        state,
        [&] {
            for (const double time : times)
                benchmark::DoNotOptimize(formatter.stringForObjectValue(time));
        },
        [&] {
            for (const Fields& field : fields) {
                char buffer[64];
                const int length = std::snprintf(
                    buffer, sizeof buffer, pattern, "", field.hours, field.minutes, field.seconds, field.fraction);
                benchmark::DoNotOptimize(std::string(buffer, static_cast<size_t>(length)));
            }
        });
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * timesPerBatch));
}

}

// h:mm:ss.mmm against one snprintf of "%s%lld:%02lld:%02lld.%03lld" per time.
static void BM_TimeFormatter_hoursMinutesSecondsMilliseconds(benchmark::State& state)
{
    compareWithSnprintf(state, ZRTimeFormatHoursMinutesSecondsMilliseconds, 1000, 1000, "%s%lld:%02lld:%02lld.%03lld");
}
BENCHMARK(BM_TimeFormatter_hoursMinutesSecondsMilliseconds)->UseManualTime();

// h:mm:ss:ff at 25 frames per second against one snprintf of "%s%lld:%02lld:%02lld:%02lld" per time.
static void BM_TimeFormatter_timeCode25(benchmark::State& state)
{
    compareWithSnprintf(state, ZRTimeFormatSMPTE25, 25, 25, "%s%lld:%02lld:%02lld:%02lld");
}
BENCHMARK(BM_TimeFormatter_timeCode25)->UseManualTime();
