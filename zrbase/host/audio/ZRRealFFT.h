#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <span>

// A forward discrete Fourier transform of N = 2^log2Length real samples. The plan for each length is made once per
// process and shared by every object of that length; each object has its own input and output arrays, so objects
// may transform on different threads at the same time.
class ZR_EXPORT ZRRealFFT {
public:
    // 2^24 samples, some six minutes at 44.1 kHz.
    static constexpr uint32_t maximumLog2Length = 24;

    // Null for a log2 length of 0 or above maximumLog2Length, or when memory runs out.
    static std::unique_ptr<ZRRealFFT> transformWithLog2Length(uint32_t log2Length);
    ~ZRRealFFT();
    ZRRealFFT(const ZRRealFFT&) = delete;
    ZRRealFFT& operator=(const ZRRealFFT&) = delete;

    uint32_t log2Length() const noexcept { return _log2Length; }
    uint32_t length() const noexcept { return uint32_t(1) << _log2Length; }

    // The N samples transform() reads; it leaves them as they are.
    std::span<float> input() const noexcept;
    // Bins 0 … N/2 of the last transform, unscaled, as interleaved real and imaginary parts (N + 2 floats). The
    // caller may change them; the next transform overwrites them.
    std::span<float> output() const noexcept;
    // Transforms input() into output(). Real-time safe.
    void transform() noexcept;

private:
    struct Impl;
    ZRRealFFT(uint32_t log2Length, std::unique_ptr<Impl> impl) noexcept;

    uint32_t _log2Length;
    std::unique_ptr<Impl> _impl;
};
