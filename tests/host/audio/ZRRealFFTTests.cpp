#include "host/audio/ZRRealFFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

namespace {

std::vector<std::complex<double>> slowHalfSpectrum(std::span<const float> samples)
{
    const size_t length = samples.size();
    std::vector<std::complex<double>> bins(length / 2 + 1);
    for (size_t k = 0; k < bins.size(); ++k) {
        for (size_t n = 0; n < length; ++n)
            bins[k] += double(samples[n]) * std::polar(1.0, -2 * std::numbers::pi * double(k * n % length) / length);
    }
    return bins;
}

void fillRandomly(std::span<float> samples, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> distribution(-1.0f, 1.0f);
    for (float& sample : samples)
        sample = distribution(generator);
}

}

TEST(ZRRealFFT, transformsLikeTheDefinitionAndKeepsItsInput)
{
    for (uint32_t log2Length : { 1u, 3u, 10u, 12u }) {
        auto fft = ZRRealFFT::transformWithLog2Length(log2Length);
        ASSERT_NE(fft, nullptr);
        ASSERT_EQ(fft->length(), 1u << log2Length);
        ASSERT_EQ(fft->output().size(), fft->length() + 2);
        fillRandomly(fft->input(), log2Length);
        const std::vector<float> samples(fft->input().begin(), fft->input().end());

        fft->transform();
        const auto expected = slowHalfSpectrum(samples);
        // A float FFT's error grows with the square root of the length's logarithm times the signal's size.
        const double tolerance = 2e-6 * std::sqrt(double(fft->length())) * log2Length;
        for (size_t k = 0; k < expected.size(); ++k) {
            EXPECT_NEAR(fft->output()[2 * k], expected[k].real(), tolerance) << log2Length << " bin " << k;
            EXPECT_NEAR(fft->output()[2 * k + 1], expected[k].imag(), tolerance) << log2Length << " bin " << k;
        }
        EXPECT_TRUE(std::equal(samples.begin(), samples.end(), fft->input().begin()));
    }
}

TEST(ZRRealFFT, refusesLengthsOutsideItsRange)
{
    EXPECT_EQ(ZRRealFFT::transformWithLog2Length(0), nullptr);
    EXPECT_EQ(ZRRealFFT::transformWithLog2Length(ZRRealFFT::maximumLog2Length + 1), nullptr);
    EXPECT_EQ(ZRRealFFT::transformWithLog2Length(UINT32_MAX), nullptr);
}

// Plans are shared: objects made on several threads at once, for the same lengths, give the same spectra.
TEST(ZRRealFFT, objectsMadeOnSeveralThreadsAgree)
{
    constexpr uint32_t log2Length = 11;
    auto reference = ZRRealFFT::transformWithLog2Length(log2Length);
    fillRandomly(reference->input(), 7);
    reference->transform();

    std::vector<int> agreed(4, 0);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < agreed.size(); ++t) {
        threads.emplace_back([&, t] {
            for (uint32_t other = 1; other <= 13; ++other)
                ZRRealFFT::transformWithLog2Length(other);
            auto fft = ZRRealFFT::transformWithLog2Length(log2Length);
            fillRandomly(fft->input(), 7);
            fft->transform();
            agreed[t] = std::equal(fft->output().begin(), fft->output().end(), reference->output().begin());
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(agreed, std::vector<int>(agreed.size(), 1));
}
