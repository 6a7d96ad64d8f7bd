#include <zrbase/audio/ZRFFTBuffer.h>

#include "ZRBenchmarkRatio.h"

#include <fftw3.h>

#include <cmath>
#include <vector>

// One frame of analysis (window, transform, magnitudes, phases, accumulation) against FFTW's bare real transform
// of the same length, planned the way the library plans it, timed in the same iteration.

namespace {

void BM_FFTBuffer_analyzeFrame(benchmark::State& state)
{
    const auto length = uint32_t(state.range(0));
    auto buffer = ZRFFTBuffer::bufferWithResolution(uint32_t(std::log2(length)), ZRFFTBuffer::WindowHann);
    std::vector<float> samples(length);
    for (uint32_t n = 0; n < length; ++n)
        samples[n] = float(0.5 * std::sin(0.01 * n) + 0.25 * std::sin(0.37 * n));

    float* input = fftwf_alloc_real(length);
    fftwf_complex* output = fftwf_alloc_complex(length / 2 + 1);
    fftwf_plan plan = fftwf_plan_dft_r2c_1d(int(length), input, output, FFTW_ESTIMATE);
    std::copy(samples.begin(), samples.end(), input);

    ZRBenchmarkRatio(
        state,
        [&] {
            buffer->analyzeAudioBuffer(samples.data(), length);
            benchmark::ClobberMemory();
        },
        [&] {
            fftwf_execute_dft_r2c(plan, input, output);
            benchmark::ClobberMemory();
        },
        int64_t(length) * int64_t(sizeof(float)));

    fftwf_destroy_plan(plan);
    fftwf_free(output);
    fftwf_free(input);
}

}

BENCHMARK(BM_FFTBuffer_analyzeFrame)->UseManualTime()->RangeMultiplier(2)->Range(1 << 10, 1 << 16);
