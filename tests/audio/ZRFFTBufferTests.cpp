#include "audio/ZRFFTBuffer.h"

#include "audio/ZRNativeAudioBuffer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr double pi = std::numbers::pi;

std::unique_ptr<ZRFFTBuffer> rectangular(uint32_t resolution)
{
    auto buffer = ZRFFTBuffer::bufferWithResolution(resolution, ZRFFTBuffer::WindowHann);
    buffer->setWindowType(ZRFFTBuffer::WindowRectangular);
    return buffer;
}

std::vector<float> randomSamples(size_t count, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> distribution(-1.0f, 1.0f);
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = distribution(generator);
    return samples;
}

// The packed spectrum of one frame computed from the definition: twice the DFT, Nyquist in bin 0's imaginary part.
std::vector<std::complex<double>> slowPackedSpectrum(std::span<const float> frame)
{
    const size_t length = frame.size();
    std::vector<std::complex<double>> bins(length / 2 + 1);
    for (size_t k = 0; k < bins.size(); ++k) {
        for (size_t n = 0; n < length; ++n)
            bins[k] += 2.0 * double(frame[n]) * std::polar(1.0, -2 * pi * double(k * n % length) / double(length));
    }
    bins[0] = { bins[0].real(), bins.back().real() };
    bins.pop_back();
    return bins;
}

std::vector<float> harmonicTone(double fundamental, const std::vector<double>& amplitudes, double rate, size_t count)
{
    std::vector<float> samples(count);
    for (size_t n = 0; n < count; ++n) {
        double value = 0;
        for (size_t h = 0; h < amplitudes.size(); ++h)
            value += amplitudes[h] * std::sin(2 * pi * fundamental * double(h + 1) * double(n) / rate + 0.3 * h);
        samples[n] = float(value / amplitudes.size());
    }
    return samples;
}

}

TEST(ZRFFTBuffer, spectraAreThePackedDFTOfTheWindowedFrame)
{
    constexpr uint32_t resolution = 10, length = 1 << resolution;
    auto buffer = ZRFFTBuffer::bufferWithResolution(resolution, ZRFFTBuffer::WindowHamming);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->numberOfChannels(), 1u);
    EXPECT_EQ(buffer->magnitudeForChannel(0).size(), length / 2);

    const std::vector<float> samples = randomSamples(length, 1);
    std::vector<float> frame(length);
    for (size_t n = 0; n < length; ++n)
        frame[n] = samples[n] * buffer->windowFunction()[n];
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data(), length));

    const auto expected = slowPackedSpectrum(frame);
    for (size_t k = 0; k < expected.size(); ++k) {
        const auto got = std::polar(double(buffer->magnitudeForChannel(0)[k]), double(buffer->phaseForChannel(0)[k]));
        EXPECT_NEAR(std::abs(got - expected[k]), 0.0, 2e-3) << "bin " << k;
    }
}

TEST(ZRFFTBuffer, framesDoNotOverlapTheLastIsZeroPaddedAndSpectraAddUp)
{
    constexpr uint32_t length = 16;
    auto buffer = rectangular(4);
    std::vector<float> samples(length + 1, 0.0f);
    samples[length] = -0.5f;

    // A frame of silence, then a frame holding only -0.5 at its start: its DFT is -0.5 in every bin.
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data(), length + 1));
    EXPECT_EQ(buffer->analysisCount(), 1u);
    const auto magnitudes = buffer->magnitudeForChannel(0);
    const auto phases = buffer->phaseForChannel(0);
    EXPECT_FLOAT_EQ(magnitudes[0], float(std::sqrt(2.0)));
    EXPECT_FLOAT_EQ(phases[0], float(-3 * pi / 4));
    for (size_t k = 1; k < length / 2; ++k) {
        EXPECT_FLOAT_EQ(magnitudes[k], 1.0f);
        EXPECT_FLOAT_EQ(phases[k], float(pi));
    }

    // No samples still analyse one frame of silence, which leaves the sums and counts as a call.
    const std::vector<float> before(magnitudes.begin(), magnitudes.end());
    ASSERT_TRUE(buffer->analyzeAudioBuffer(nullptr, 0));
    EXPECT_EQ(buffer->analysisCount(), 2u);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), magnitudes.begin()));
    // Spectra are sums, not means.
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data() + length, 1));
    EXPECT_FLOAT_EQ(magnitudes[3], 2.0f);

    EXPECT_FALSE(buffer->analyzeAudioBuffer(nullptr, 5));
    EXPECT_FALSE(buffer->analyzeAudioBuffer(samples.data(), 1, 1));
    EXPECT_EQ(buffer->analysisCount(), 3u);
    buffer->reset();
    EXPECT_EQ(buffer->analysisCount(), 0u);
    EXPECT_EQ(buffer->magnitudeForChannel(0)[3], 0.0f);
}

TEST(ZRFFTBuffer, windowsFollowTheirTables)
{
    constexpr uint32_t length = 16, middle = length / 2;
    auto buffer = ZRFFTBuffer::bufferWithResolution(4, ZRFFTBuffer::WindowRectangular);
    // Code 0 at creation leaves the window unbuilt, all zeros; setting it again after another code builds it.
    EXPECT_EQ(buffer->windowFunction()[3], 0.0f);
    buffer->setWindowType(ZRFFTBuffer::WindowHann);
    buffer->setWindowType(ZRFFTBuffer::WindowRectangular);
    EXPECT_EQ(buffer->windowFunction()[3], 1.0f);

    const auto window = [&](uint32_t code) {
        buffer->setWindowType(code);
        return std::vector<float>(buffer->windowFunction().begin(), buffer->windowFunction().end());
    };
    // Periodic windows: zero (or their end value) at n = 0, their peak at N/2, symmetric about it.
    const struct {
        uint32_t code;
        float first, peak;
    } cosineWindows[]
        = { { 1, 0.0f, 1.0f }, { 2, 0.07672f, 1.0f }, { 3, 0.0f, 1.0f }, { 7, 0.0f, 1.0f }, { 10, 0.0f, 1.0f },
              { 11, 0.000572f, 0.999488f }, { 12, 0.0003628f, 1.0f }, { 13, 0.0042f, 4.6402f }, { 14, 0.0f, 1.0f } };
    for (const auto& expected : cosineWindows) {
        const auto values = window(expected.code);
        EXPECT_NEAR(values[0], expected.first, 1e-6) << expected.code;
        EXPECT_NEAR(values[middle], expected.peak, 1e-6) << expected.code;
        for (uint32_t n = 1; n < middle; ++n)
            EXPECT_NEAR(values[n], values[length - n], 1e-6) << expected.code << " at " << n;
    }
    EXPECT_FLOAT_EQ(window(3)[4], 0.5f);

    const auto gaussian = window(4);
    EXPECT_FLOAT_EQ(gaussian[0], float(std::exp(-3.125)));
    EXPECT_FLOAT_EQ(gaussian[middle], 1.0f);
    // The triangle is centred on (N - 1)/2: zero at both ends, 14/15 at the two middle samples.
    const auto triangle = window(5);
    EXPECT_EQ(triangle[0], 0.0f);
    EXPECT_EQ(triangle[length - 1], 0.0f);
    EXPECT_FLOAT_EQ(triangle[7], 14.0f / 15);
    EXPECT_FLOAT_EQ(triangle[8], 14.0f / 15);

    // The linear ramp has no absolute value: before its middle the distance wraps to about 2^32.
    buffer->setResolution(3);
    const auto ramp = window(6);
    EXPECT_NEAR(ramp[0], -1.07374e9f, 1e4);
    EXPECT_LT(ramp[2], -1e9f);
    EXPECT_EQ(ramp[3], 1.0f);
    EXPECT_EQ(ramp[4], 0.75f);
    EXPECT_EQ(ramp[7], 0.0f);

    // Reserved codes give all-zero windows and so all-zero spectra.
    const std::vector<float> samples = randomSamples(8, 2);
    for (uint32_t code : { 8u, 9u, 15u, 1000u }) {
        const auto values = window(code);
        EXPECT_EQ(std::count(values.begin(), values.end(), 0.0f), 8) << code;
        buffer->reset();
        buffer->analyzeAudioBuffer(samples.data(), 8);
        for (float magnitude : buffer->magnitudeForChannel(0))
            EXPECT_EQ(magnitude, 0.0f) << code;
    }
}

TEST(ZRFFTBuffer, channelsFollowTheAnalysedBufferWithoutTouchingForeignMemory)
{
    auto buffer = rectangular(3);
    auto stereo = ZRNativeAudioBuffer::bufferWithChannels(2, 8);
    stereo->setSampleValue(1.0f, 0, 1);
    ASSERT_TRUE(buffer->analyzeAudioBuffer(*stereo));
    EXPECT_EQ(buffer->numberOfChannels(), 2u);
    EXPECT_EQ(buffer->magnitudeForChannel(0)[1], 0.0f);
    EXPECT_EQ(buffer->magnitudeForChannel(1)[1], 2.0f);
    EXPECT_TRUE(buffer->magnitudeForChannel(2).empty());
    EXPECT_TRUE(buffer->phaseForChannel(2).empty());

    // Channels without frames analyse silence; a buffer without channels drops every spectrum, after which only
    // a reset gives room for analyses again.
    ASSERT_TRUE(buffer->analyzeAudioBuffer(*ZRNativeAudioBuffer::bufferWithChannels(3, 0)));
    EXPECT_EQ(buffer->numberOfChannels(), 3u);
    ASSERT_TRUE(buffer->analyzeAudioBuffer(ZRNativeAudioBuffer()));
    EXPECT_EQ(buffer->numberOfChannels(), 0u);
    EXPECT_FALSE(buffer->analyzeAudioBuffer(*stereo));
    EXPECT_TRUE(buffer->magnitudeForChannel(0).empty());
    EXPECT_EQ(buffer->pitchForRate(44100, 0), 0.0f);
    buffer->reset();
    EXPECT_EQ(buffer->numberOfChannels(), 1u);
    EXPECT_TRUE(buffer->analyzeAudioBuffer(*stereo));

    // Non-finite samples give non-finite spectra, nothing worse; a reset clears them.
    std::vector<float> wild(20, std::numeric_limits<float>::infinity());
    wild[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(buffer->analyzeAudioBuffer(wild.data(), 20, 1));
    EXPECT_TRUE(std::isnan(buffer->magnitudeForChannel(1)[2]));
    buffer->pitchForRate(48000, 1);
    buffer->reset();
    EXPECT_EQ(buffer->magnitudeForChannel(0)[2], 0.0f);
}

TEST(ZRFFTBuffer, resolutionChangesKeepTheSpectraUntilReset)
{
    EXPECT_EQ(ZRFFTBuffer::bufferWithResolution(0, 3), nullptr);
    EXPECT_EQ(ZRFFTBuffer::bufferWithResolution(25, 3), nullptr);
    auto buffer = ZRFFTBuffer::bufferWithResolution(4, ZRFFTBuffer::WindowHann);
    const std::vector<float> samples = randomSamples(64, 3);

    EXPECT_FALSE(buffer->setResolution(0));
    EXPECT_TRUE(buffer->setResolution(4));
    EXPECT_EQ(buffer->resolution(), 4u);
    // Larger: the old spectra are too short, so analyses fail until a reset makes them 32 bins long.
    EXPECT_TRUE(buffer->setResolution(6));
    EXPECT_EQ(buffer->windowFunction().size(), 64u);
    EXPECT_FLOAT_EQ(buffer->windowFunction()[16], 0.5f);
    EXPECT_FALSE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->magnitudeForChannel(0).size(), 8u);
    buffer->reset();
    EXPECT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->magnitudeForChannel(0).size(), 32u);
    // Smaller: frames fill the first bins of the longer spectra.
    EXPECT_TRUE(buffer->setResolution(2));
    const float last = buffer->magnitudeForChannel(0)[31];
    EXPECT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->magnitudeForChannel(0)[31], last);
    EXPECT_EQ(buffer->pitchForRate(48000), buffer->pitchForRate(48000, 0));
    buffer->reset();
    // Spectra of two bins are too short for a pitch.
    EXPECT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->pitchForRate(48000), 0.0f);
}

TEST(ZRFFTBuffer, pitchOfHarmonicTonesIsTheirFundamental)
{
    constexpr double rate = 44100;
    constexpr uint32_t resolution = 14;
    const double binWidth = rate / (1 << resolution);
    for (double fundamental : { 82.4, 110.0, 196.0, 440.0, 1046.5 }) {
        auto buffer = ZRFFTBuffer::bufferWithResolution(resolution, ZRFFTBuffer::WindowHann);
        const auto tone = harmonicTone(fundamental, { 1.0, 0.7, 0.5, 0.35, 0.25 }, rate, 3 << resolution);
        ASSERT_TRUE(buffer->analyzeAudioBuffer(tone.data(), uint32_t(tone.size())));
        EXPECT_NEAR(buffer->pitchForRate(uint32_t(rate)), fundamental, binWidth) << fundamental;
    }

    // A weak fundamental whose product still reaches a tenth of its octave's wins over it; a faint one does not.
    constexpr double onBin = 48000.0 / 4096 * 20;
    for (const auto& [third, expected] : { std::pair { 0.4, onBin }, std::pair { 0.01, 2 * onBin } }) {
        auto buffer = ZRFFTBuffer::bufferWithResolution(12, ZRFFTBuffer::WindowHann);
        const auto tone = harmonicTone(onBin, { 0.5, 1.0, third, 1.0, 0.0, 1.0 }, 48000, 4096);
        ASSERT_TRUE(buffer->analyzeAudioBuffer(tone.data(), 4096));
        EXPECT_FLOAT_EQ(buffer->pitchForRate(48000), float(expected)) << third;
    }
}

TEST(ZRFFTBuffer, phasesStayWithinTwoMillionthsOfAtan2)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> special = { 0.0f, -0.0f, 1e-45f, -1e-45f, 1e-38f, 3e-20f, -1.0f, 1.0f, 0.5f, 7e19f, -3e38f,
        std::numeric_limits<float>::max(), infinity, -infinity };
    std::vector<float> real, imaginary;
    for (float x : special) {
        for (float y : special) {
            real.push_back(x);
            imaginary.push_back(y);
        }
    }
    // A dense sweep of angles at several radii, the axes included.
    for (float radius : { 1e-30f, 1.0f, 1e30f }) {
        for (int step = 0; step <= 400000; ++step) {
            const double angle = -pi + 2 * pi * step / 400000;
            real.push_back(float(radius * std::cos(angle)));
            imaginary.push_back(float(radius * std::sin(angle)));
        }
    }
    real.push_back(std::numeric_limits<float>::quiet_NaN());
    imaginary.push_back(1.0f);

    std::vector<float> result(real.size() + 3, 9.0f);
    ZRFFTBuffer::phases(real, imaginary, result);
    EXPECT_EQ(result[real.size()], 9.0f);
    EXPECT_TRUE(std::isnan(result[real.size() - 1]));
    double worst = 0;
    for (size_t i = 0; i + 1 < real.size(); ++i) {
        const double expected = std::atan2(double(imaginary[i]), double(real[i]));
        worst = std::max(worst, std::abs(result[i] - expected));
        if (expected == 0 || std::abs(expected) == pi) {
            EXPECT_EQ(std::signbit(result[i]), std::signbit(expected)) << real[i] << ", " << imaginary[i];
        }
    }
    EXPECT_LE(worst, 2e-6);
}
