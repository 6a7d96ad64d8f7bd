#pragma once

#include <cmath>
#include <cstdint>

namespace zr {

// What the analysis and the waveform overviews keep of a run of samples: the extremes, the sum and the sum of
// squares (in double, so that hours of samples add up exactly enough), and the count of clipped samples (|x| ≥ 1).
struct SampleRun {
    float minimum = HUGE_VALF;
    float maximum = -HUGE_VALF;
    double sum = 0.0;
    double squares = 0.0;
    uint64_t clipped = 0;

    // Adds `count` samples, eight at a time in vectors (AVX2 where the processor has it).
    void add(const float* samples, uint32_t count) noexcept;
};

}
