#include <zrbase/host/audio/ZRRealFFT.h>

#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

namespace {

void fill(std::span<float> samples)
{
    for (size_t n = 0; n < samples.size(); ++n)
        samples[n] = float(std::sin(0.37 * double(n * n % 101)));
}

}

// The transform itself, and the lengths it refuses, are checked through the FFT buffer. Plans are shared: objects
// made on several threads at once give the same spectrum as one made before.
TEST(ZRRealFFT, objectsMadeOnSeveralThreadsAgree)
{
    auto reference = ZRRealFFT::transformWithLog2Length(11);
    fill(reference->input());
    reference->transform();

    std::vector<int> agreed(4, 0);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < agreed.size(); ++t) {
        threads.emplace_back([&, t] {
            for (uint32_t other = 1; other <= 13; ++other)
                ZRRealFFT::transformWithLog2Length(other);
            auto fft = ZRRealFFT::transformWithLog2Length(11);
            fill(fft->input());
            fft->transform();
            agreed[t] = std::equal(fft->output().begin(), fft->output().end(), reference->output().begin());
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(agreed, std::vector<int>(agreed.size(), 1));
}
