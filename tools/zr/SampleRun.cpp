#include "SampleRun.h"
#include "VectorClones.h"

#include <algorithm>
#include <cstring>

namespace zr {

namespace {

    // Vectors that the compiler keeps in registers on every target: four floats, their four doubles, four counts.
    typedef float Floats __attribute__((vector_size(16)));
    typedef double Doubles __attribute__((vector_size(32)));
    typedef int32_t Counts __attribute__((vector_size(16)));

    // The lanes of one of two interleaved accumulators, so that consecutive vectors do not wait on each other.
    struct Lanes {
        Floats minimum, maximum;
        Doubles sum = {}, squares = {};
        Counts clipped = {};

        explicit Lanes(Floats first)
            : minimum(first)
            , maximum(first)
        {
        }

        void add(Floats x) noexcept
        {
            minimum = x < minimum ? x : minimum;
            maximum = x > maximum ? x : maximum;
            const Doubles wide = __builtin_convertvector(x, Doubles);
            sum += wide;
            squares += wide * wide;
            // A true comparison is -1 in every bit.
            clipped -= (x >= 1.0f) | (x <= -1.0f);
        }
    };

    Floats load(const float* samples) noexcept
    {
        Floats x;
        std::memcpy(&x, samples, sizeof x);
        return x;
    }

}

ZR_TOOL_VECTOR_CLONES static void zrAddSampleRun(const float* samples, uint32_t count, SampleRun& run) noexcept
{
    float minimum = run.minimum, maximum = run.maximum;
    double sum = run.sum, squares = run.squares;
    uint64_t clipped = run.clipped;
    uint32_t i = 0;
    // The lanes' counts stay far from overflowing in runs of this length.
    constexpr uint32_t longestRun = 1u << 24;
    while (count - i >= 8) {
        const uint32_t end = i + std::min((count - i) & ~7u, longestRun);
        Lanes first(load(samples + i)), second(load(samples + i + 4));
        for (; i < end; i += 8) {
            first.add(load(samples + i));
            second.add(load(samples + i + 4));
        }
        for (int lane = 0; lane < 4; ++lane) {
            minimum = std::min({ minimum, first.minimum[lane], second.minimum[lane] });
            maximum = std::max({ maximum, first.maximum[lane], second.maximum[lane] });
            sum += first.sum[lane] + second.sum[lane];
            squares += first.squares[lane] + second.squares[lane];
            clipped += uint64_t(first.clipped[lane]) + uint64_t(second.clipped[lane]);
        }
    }
    for (; i < count; ++i) {
        const float x = samples[i];
        minimum = std::min(minimum, x);
        maximum = std::max(maximum, x);
        sum += x;
        squares += double(x) * x;
        clipped += std::fabs(x) >= 1.0f;
    }
    run = { minimum, maximum, sum, squares, clipped };
}

void SampleRun::add(const float* samples, uint32_t count) noexcept { zrAddSampleRun(samples, count, *this); }

}
