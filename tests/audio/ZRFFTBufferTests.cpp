#include <zrbase/audio/ZRFFTBuffer.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

namespace {

constexpr double pi = std::numbers::pi;
constexpr float infinity = std::numeric_limits<float>::infinity();

std::unique_ptr<ZRFFTBuffer> rectangular(uint32_t resolution)
{
    auto buffer = ZRFFTBuffer::bufferWithResolution(resolution, ZRFFTBuffer::WindowHann);
    buffer->setWindowType(ZRFFTBuffer::WindowRectangular);
    return buffer;
}

// Samples without a pattern the transform could hide a fault behind.
std::vector<float> testSignal(size_t count)
{
    std::vector<float> samples(count);
    for (size_t n = 0; n < count; ++n)
        samples[n] = float(std::sin(0.37 * double(n * n % 101)));
    return samples;
}

std::vector<float> harmonicTone(double fundamental, const std::vector<double>& amplitudes, double rate, size_t count)
{
    std::vector<float> samples(count);
    for (size_t n = 0; n < count; ++n) {
        for (size_t h = 0; h < amplitudes.size(); ++h)
            samples[n] += float(amplitudes[h] / 6 * std::sin(2 * pi * fundamental * double((h + 1) * n) / rate + h));
    }
    return samples;
}

}

TEST(ZRFFTBuffer, spectraAreThePackedDFTOfTheWindowedFrame)
{
    constexpr uint32_t length = 1024;
    auto buffer = ZRFFTBuffer::bufferWithResolution(10, ZRFFTBuffer::WindowHamming);
    const std::vector<float> samples = testSignal(length);
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data(), length));
    ASSERT_EQ(buffer->magnitudeForChannel(0).size(), length / 2);

    // Twice the DFT of the windowed frame, computed from the definition, with the Nyquist term in bin 0.
    std::vector<std::complex<double>> expected(length / 2 + 1);
    for (size_t k = 0; k <= length / 2; ++k) {
        for (size_t n = 0; n < length; ++n) {
            expected[k] += 2.0 * double(samples[n] * buffer->windowFunction()[n])
                * std::polar(1.0, -2 * pi * double(k * n % length) / length);
        }
    }
    expected[0].imag(expected[length / 2].real());
    for (size_t k = 0; k < length / 2; ++k) {
        const auto got = std::polar(double(buffer->magnitudeForChannel(0)[k]), double(buffer->phaseForChannel(0)[k]));
        EXPECT_NEAR(std::abs(got - expected[k]), 0.0, 2e-3) << "bin " << k;
    }
}

TEST(ZRFFTBuffer, framesDoNotOverlapTheLastIsZeroPaddedAndSpectraAddUp)
{
    auto buffer = rectangular(4);
    std::vector<float> samples(17, 0.0f);
    samples[16] = -0.5f;
    // A frame of silence, then one holding only -0.5 at its start: twice its DFT is -1 in every bin.
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 17));
    const auto magnitudes = buffer->magnitudeForChannel(0);
    const auto phases = buffer->phaseForChannel(0);
    EXPECT_FLOAT_EQ(magnitudes[0], float(std::sqrt(2.0)));
    EXPECT_FLOAT_EQ(phases[0], float(-3 * pi / 4));
    EXPECT_EQ(std::vector<float>(magnitudes.begin() + 1, magnitudes.end()), std::vector<float>(7, 1.0f));
    EXPECT_EQ(std::vector<float>(phases.begin() + 1, phases.end()), std::vector<float>(7, float(pi)));

    // No samples analyse one frame of silence, which adds nothing; the spectra are sums, not means.
    ASSERT_TRUE(buffer->analyzeAudioBuffer(nullptr, 0));
    EXPECT_EQ(phases[3], float(pi));
    ASSERT_TRUE(buffer->analyzeAudioBuffer(samples.data() + 16, 1));
    EXPECT_EQ(magnitudes[3], 2.0f);
    EXPECT_EQ(buffer->analysisCount(), 3u);

    EXPECT_FALSE(buffer->analyzeAudioBuffer(nullptr, 5));
    EXPECT_FALSE(buffer->analyzeAudioBuffer(samples.data(), 1, 1));
    buffer->reset();
    EXPECT_EQ(buffer->analysisCount(), 0u);
    EXPECT_EQ(buffer->magnitudeForChannel(0)[3], 0.0f);
}

TEST(ZRFFTBuffer, windowsFollowTheirTables)
{
    // Code 0 at creation leaves the window unbuilt, all zeros; setting it again after another code builds it.
    auto buffer = ZRFFTBuffer::bufferWithResolution(4, ZRFFTBuffer::WindowRectangular);
    EXPECT_EQ(buffer->windowFunction()[3], 0.0f);
    buffer->setWindowType(ZRFFTBuffer::WindowHann);
    buffer->setWindowType(ZRFFTBuffer::WindowRectangular);
    EXPECT_EQ(buffer->windowFunction()[3], 1.0f);

    // N = 16: periodic windows peak at n = 8; the triangle is centred on 7.5; Blackman-Harris peaks below 1 by
    // design and the flat top far above it.
    const struct {
        uint32_t code, n;
        double value;
    } values[] = { { 1, 0, 0.0 }, { 1, 8, 1.0 }, { 2, 0, 0.07672 }, { 2, 8, 1.0 }, { 3, 4, 0.5 }, { 3, 8, 1.0 },
        { 4, 0, std::exp(-3.125) }, { 4, 8, 1.0 }, { 5, 0, 0.0 }, { 5, 7, 14.0 / 15 }, { 5, 8, 14.0 / 15 },
        { 5, 15, 0.0 }, { 7, 0, 0.0 }, { 7, 8, 1.0 }, { 10, 0, 0.0 }, { 10, 8, 1.0 }, { 11, 0, 0.000572 },
        { 11, 8, 0.999488 }, { 12, 0, 0.0003628 }, { 12, 8, 1.0 }, { 13, 0, 0.0042 }, { 13, 8, 4.6402 }, { 14, 0, 0.0 },
        { 14, 4, 1 / pi }, { 14, 8, 1.0 } };
    for (const auto& expected : values) {
        buffer->setWindowType(expected.code);
        EXPECT_NEAR(buffer->windowFunction()[expected.n], expected.value, 1e-6) << expected.code << " " << expected.n;
    }

    // The linear ramp has no absolute value: before its middle the distance wraps to about 2^32.
    buffer->setResolution(3);
    buffer->setWindowType(ZRFFTBuffer::WindowLinearRamp);
    const std::vector<float> ramp(buffer->windowFunction().begin(), buffer->windowFunction().end());
    EXPECT_EQ(ramp, (std::vector<float> { -1073741824.0f, -1073741824.0f, -1073741824.0f, 1, 0.75f, 0.5f, 0.25f, 0 }));

    // Reserved codes give all-zero windows and so all-zero spectra.
    const std::vector<float> samples = testSignal(8);
    for (uint32_t code : { 8u, 9u, 15u, 1000u }) {
        buffer->setWindowType(code);
        buffer->reset();
        buffer->analyzeAudioBuffer(samples.data(), 8);
        EXPECT_EQ(std::vector<float>(buffer->magnitudeForChannel(0).begin(), buffer->magnitudeForChannel(0).end()),
            std::vector<float>(4, 0.0f))
            << code;
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
    EXPECT_TRUE(buffer->analyzeAudioBuffer(*stereo));

    // Non-finite samples give non-finite spectra, nothing worse.
    std::vector<float> wild(20, infinity);
    wild[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(buffer->analyzeAudioBuffer(wild.data(), 20, 1));
    EXPECT_TRUE(std::isnan(buffer->magnitudeForChannel(1)[2]));
    buffer->pitchForRate(48000, 1);
}

TEST(ZRFFTBuffer, resolutionChangesKeepTheSpectraUntilReset)
{
    EXPECT_EQ(ZRFFTBuffer::bufferWithResolution(0, 3), nullptr);
    EXPECT_EQ(ZRFFTBuffer::bufferWithResolution(25, 3), nullptr);
    auto buffer = ZRFFTBuffer::bufferWithResolution(4, ZRFFTBuffer::WindowHann);
    const std::vector<float> samples = testSignal(64);
    EXPECT_FALSE(buffer->setResolution(0));
    EXPECT_EQ(buffer->resolution(), 4u);

    // Larger: the window is rebuilt, but the spectra of 8 bins are too short until a reset.
    EXPECT_TRUE(buffer->setResolution(6));
    EXPECT_FLOAT_EQ(buffer->windowFunction()[16], 0.5f);
    EXPECT_FALSE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->magnitudeForChannel(0).size(), 8u);
    buffer->reset();
    EXPECT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 64));
    // Smaller: frames fill the first bins of the spectra of 32 bins.
    EXPECT_TRUE(buffer->setResolution(2));
    const float last = buffer->magnitudeForChannel(0)[31];
    EXPECT_TRUE(buffer->analyzeAudioBuffer(samples.data(), 64));
    EXPECT_EQ(buffer->magnitudeForChannel(0)[31], last);
    // Spectra of two bins are too short for a pitch.
    buffer->reset();
    EXPECT_EQ(buffer->pitchForRate(48000), 0.0f);
}

TEST(ZRFFTBuffer, pitchOfHarmonicTonesIsTheirFundamental)
{
    for (double fundamental : { 82.4, 110.0, 196.0, 440.0, 1046.5 }) {
        auto buffer = ZRFFTBuffer::bufferWithResolution(14, ZRFFTBuffer::WindowHann);
        const auto tone = harmonicTone(fundamental, { 1.0, 0.7, 0.5, 0.35, 0.25 }, 44100, 3 << 14);
        ASSERT_TRUE(buffer->analyzeAudioBuffer(tone.data(), uint32_t(tone.size())));
        EXPECT_NEAR(buffer->pitchForRate(44100), fundamental, 44100.0 / (1 << 14)) << fundamental;
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
    // Every pair of special values, then a dense sweep of angles at several radii, axes included.
    const float special[]
        = { 0.0f, -0.0f, 1e-45f, -1e-45f, 1e-38f, 3e-20f, -1.0f, 0.5f, 7e19f, -3e38f, infinity, -infinity };
    std::vector<float> real, imaginary;
    for (float x : special) {
        real.insert(real.end(), std::size(special), x);
        imaginary.insert(imaginary.end(), std::begin(special), std::end(special));
    }
    for (float radius : { 1e-30f, 1.0f, 1e30f }) {
        for (int step = 0; step <= 400000; ++step) {
            real.push_back(float(radius * std::cos(-pi + 2 * pi * step / 400000)));
            imaginary.push_back(float(radius * std::sin(-pi + 2 * pi * step / 400000)));
        }
    }
    std::vector<float> result(real.size() + 1, 9.0f);
    ZRFFTBuffer::phases(real, imaginary, result);
    EXPECT_EQ(result.back(), 9.0f);
    double worst = 0;
    for (size_t i = 0; i < real.size(); ++i) {
        const double expected = std::atan2(double(imaginary[i]), double(real[i]));
        worst = std::max(worst, std::abs(result[i] - expected));
        if (expected == 0 || std::abs(expected) == pi) {
            EXPECT_EQ(std::signbit(result[i]), std::signbit(expected)) << real[i] << ", " << imaginary[i];
        }
    }
    EXPECT_LE(worst, 2e-6);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    ZRFFTBuffer::phases(std::vector { nan, 1.0f }, std::vector { 1.0f, nan }, result);
    EXPECT_TRUE(std::isnan(result[0]) && std::isnan(result[1]));
}
