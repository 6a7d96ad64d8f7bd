#pragma once

#include <zrbase/audio/ZRAudioBuffer.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class ZRNativeAudioBuffer;
class ZRRealFFT;

// Accumulated magnitude and phase spectra, one pair per channel, of a real forward FFT of N = 2^resolution samples
// under a window, and a harmonic-product pitch estimate from them.
//
// Each frame's spectrum has N/2 bins in the packed layout and scale of the classic split-complex real FFT: every
// value is twice the mathematical DFT, and bin 0 holds the DC term as its real part and the Nyquist term as its
// imaginary part, so its magnitude combines the two. The spectra are sums over every frame and call since reset(),
// not means. One thread at a time.
class ZR_EXPORT ZRFFTBuffer {
public:
    // The window codes. Codes 8, 9 and from 15 up are reserved: their window is all zeros.
    enum WindowType : uint32_t {
        WindowRectangular = 0,
        WindowBlackman = 1,
        WindowHamming = 2,
        WindowHann = 3,
        WindowGaussian = 4,
        WindowTriangular = 5,
        // Deliberately no absolute value: the first (N - 1)/2 values are huge negative numbers (the distance to
        // the middle wraps as an unsigned number), the rest fall linearly from about 2 to 0.
        WindowLinearRamp = 6,
        WindowBartlettHann = 7,
        WindowNuttall = 10,
        WindowBlackmanHarris = 11,
        WindowBlackmanNuttall = 12,
        WindowFlatTop = 13,
        WindowBohman = 14,
    };

    // Null when no transform of 2^resolution samples can be made (resolution 0 or above 24, or no memory). The
    // window is built only when windowType differs from the rectangular code 0, which leaves it all zeros: to
    // analyse with the rectangular window, set another code and then 0.
    static std::unique_ptr<ZRFFTBuffer> bufferWithResolution(uint32_t resolution, uint32_t windowType);
    ~ZRFFTBuffer();
    ZRFFTBuffer(const ZRFFTBuffer&) = delete;
    ZRFFTBuffer& operator=(const ZRFFTBuffer&) = delete;

    // log2 of the frame length N.
    uint32_t resolution() const noexcept { return _resolution; }
    uint32_t windowType() const noexcept { return _windowType; }
    // The N factors every frame is multiplied by.
    std::span<const float> windowFunction() const noexcept { return _windowFunction; }
    // Changes N and rebuilds the window; the spectra keep their length until reset(), and analyses fail while
    // they are shorter than N/2. An equal value changes nothing; one that cannot be made answers false and keeps
    // the old resolution.
    bool setResolution(uint32_t resolution);
    // Rebuilds the window for a code different from the current one.
    void setWindowType(uint32_t windowType);

    // Empty spectra of N/2 zeros for one channel.
    void reset();
    uint32_t numberOfChannels() const noexcept { return _spectra.count() / 2; }
    // Single-channel analyses since reset().
    uint32_t analysisCount() const noexcept { return _analysisCount; }

    // Sets the number of spectrum pairs to the buffer's channels and analyses each channel in turn with its frame
    // count; false at the first channel that fails.
    bool analyzeAudioBuffer(const ZRNativeAudioBuffer& buffer);
    // Adds the spectra of `count` samples to those of a channel, in frames of N samples that do not overlap, the
    // last one padded with zeros; no samples still analyse one frame of silence. False for a channel not below
    // numberOfChannels(), spectra shorter than N/2 bins, or null samples with a count. Allocates nothing.
    bool analyzeAudioBuffer(const float* samples, uint32_t count, uint32_t channel = 0) noexcept;

    // The live spectra of a channel: its length in bins, valid until the next reset() or change of the number of
    // channels, and changed by every analysis. Empty for a channel not below numberOfChannels().
    std::span<const float> magnitudeForChannel(uint32_t channel) const noexcept;
    // Radians, summed like the magnitudes.
    std::span<const float> phaseForChannel(uint32_t channel) const noexcept;

    // The fundamental in Hz at the given sample rate: the largest product of the magnitude spectrum with its
    // copies compressed by 2 and 3, from bin 5 up, or the second largest when that lies an octave below (between
    // 0.4 and 0.6 of the first's bin) and reaches a tenth of it. 0 for a channel not below numberOfChannels() or
    // spectra of fewer than 6 bins.
    float pitchForRate(uint32_t rate, uint32_t channel = 0) const;

    // atan2(imaginary[k], real[k]) of each pair, to within 2e-6 radians, for the shortest of the three lengths.
    static void phases(std::span<const float> real, std::span<const float> imaginary, std::span<float> result) noexcept;

private:
    ZRFFTBuffer(uint32_t resolution, std::unique_ptr<ZRRealFFT> fft);
    void _buildWindowFunction();
    std::span<float> _spectrum(uint32_t index) const noexcept;

    uint32_t _resolution;
    std::unique_ptr<ZRRealFFT> _fft;
    std::vector<float> _windowFunction;
    uint32_t _windowType = WindowRectangular;
    // Buffer 2c holds the magnitudes of channel c, buffer 2c + 1 its phases.
    ZRAudioBuffer _spectra;
    uint32_t _analysisCount = 0;
};
