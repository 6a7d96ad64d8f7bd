#include <zrbase/host/audio/ZRRealFFT.h>

#include <fftw3.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

// FFTW's planner may run on one thread at a time only; executing a plan on arrays of one's own may run anywhere.
// The plans live as long as the process, made the first time their length is asked for.
std::mutex planLock;
std::array<fftwf_plan, ZRRealFFT::maximumLog2Length + 1> plans {};

// Estimated rather than measured plans: measuring takes up to seconds at the largest lengths and gains only a few
// percent here, and an estimated plan is the same on every run, so the same samples give the same spectrum.
fftwf_plan planForLength(uint32_t log2Length, float* input, fftwf_complex* output)
{
    std::lock_guard lock(planLock);
    fftwf_plan& plan = plans[log2Length];
    if (!plan)
        plan = fftwf_plan_dft_r2c_1d(int(uint32_t(1) << log2Length), input, output, FFTW_ESTIMATE);
    return plan;
}

// FFTW runs a plan on other arrays only when they have the alignment of the arrays it was made with; every array
// here starts on a cache line.
void* allocateAligned(size_t bytes)
{
    constexpr size_t alignment = 64;
    return std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
}

}

struct ZRRealFFT::Impl {
    ~Impl()
    {
        std::free(input);
        std::free(output);
    }

    fftwf_plan plan = nullptr;
    float* input = nullptr;
    fftwf_complex* output = nullptr;
};

ZRRealFFT::ZRRealFFT(uint32_t log2Length, std::unique_ptr<Impl> impl) noexcept
    : _log2Length(log2Length)
    , _impl(std::move(impl))
{
}

ZRRealFFT::~ZRRealFFT() = default;

std::unique_ptr<ZRRealFFT> ZRRealFFT::transformWithLog2Length(uint32_t log2Length)
{
    if (log2Length == 0 || log2Length > maximumLog2Length)
        return nullptr;
    const size_t length = size_t(1) << log2Length;
    auto impl = std::make_unique<Impl>();
    impl->input = static_cast<float*>(allocateAligned(length * sizeof(float)));
    impl->output = static_cast<fftwf_complex*>(allocateAligned((length / 2 + 1) * sizeof(fftwf_complex)));
    if (!impl->input || !impl->output)
        return nullptr;
    std::memset(impl->input, 0, length * sizeof(float));
    std::memset(impl->output, 0, (length / 2 + 1) * sizeof(fftwf_complex));
    impl->plan = planForLength(log2Length, impl->input, impl->output);
    if (!impl->plan)
        return nullptr;
    return std::unique_ptr<ZRRealFFT>(new ZRRealFFT(log2Length, std::move(impl)));
}

std::span<float> ZRRealFFT::input() const noexcept { return { _impl->input, length() }; }

std::span<float> ZRRealFFT::output() const noexcept { return { &_impl->output[0][0], length() + 2 }; }

void ZRRealFFT::transform() noexcept { fftwf_execute_dft_r2c(_impl->plan, _impl->input, _impl->output); }
