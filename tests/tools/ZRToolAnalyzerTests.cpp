#include <Analyzer.h>
#include <JsonWriter.h>
#include <Spectrogram.h>
#include <TruePeakMeter.h>
#include <WaveformBuilder.h>

#include <zrbase/audio/ZRFFTBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace zr;

namespace {

std::unique_ptr<ZRNativeAudioBuffer> bufferWith(uint32_t channels, uint32_t frames, float (*sample)(uint32_t, uint32_t))
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, frames);
    for (uint32_t c = 0; c < channels; ++c)
        for (uint32_t i = 0; i < frames; ++i)
            buffer->channel(c)[i] = sample(i, c);
    return buffer;
}

}

TEST(ZRToolJsonWriter, placesCommasEscapesTextAndWritesNonFiniteNumbersAsNull)
{
    JsonWriter json;
    json.beginObject();
    json.member("name", "a \"quoted\"\\path\n\x01");
    json.key("values");
    json.beginArray();
    json.value(1.5);
    json.value(-HUGE_VAL);
    json.value(std::nan(""));
    json.beginObject();
    json.endObject();
    json.value(uint64_t(1) << 40);
    json.endArray();
    json.member("flag", false);
    json.endObject();
    EXPECT_EQ(
        json.text(), R"({"name":"a \"quoted\"\\path\n\u0001","values":[1.5,null,null,{},1099511627776],"flag":false})");
}

TEST(ZRToolAnalyzer, blocksOfAnySizeGiveTheStatisticsOfTheWholeSignal)
{
    // Left: a full-scale square wave with a DC offset of 0.25 that clips on its upper half; right: silence.
    const auto square = [](uint32_t i, uint32_t c) { return c == 0 ? (i % 100 < 50 ? 1.25f : -0.75f) : 0.0f; };
    auto whole = bufferWith(2, 48000, square);
    auto first = Analyzer::analyzerWithFormat(48000, 2, false);
    auto second = Analyzer::analyzerWithFormat(48000, 2, false);
    ASSERT_TRUE(first && second);
    first->process(*whole);
    // The same signal in uneven blocks.
    for (uint32_t start = 0, size = 7; start < 48000; start += size, size = size * 3 % 9973 + 1) {
        const uint32_t count = std::min(size, 48000 - start);
        auto block = ZRNativeAudioBuffer::bufferWithChannels(2, count);
        for (uint32_t c = 0; c < 2; ++c)
            std::copy_n(whole->channel(c) + start, count, block->channel(c));
        second->process(*block);
    }
    const AnalysisResult a = first->finish(), b = second->finish();
    EXPECT_EQ(a.frames, 48000u);
    EXPECT_DOUBLE_EQ(a.perChannel[0].peak, 1.25);
    EXPECT_NEAR(a.perChannel[0].dcOffset, 0.25, 1e-9);
    EXPECT_NEAR(a.perChannel[0].rms, std::sqrt((1.25 * 1.25 + 0.75 * 0.75) / 2), 1e-6);
    EXPECT_EQ(a.perChannel[0].clippedSamples, 24000u);
    EXPECT_EQ(a.perChannel[1].peak, 0.0);
    EXPECT_EQ(a.perChannel[1].crestFactor(), 0.0);
    EXPECT_NEAR(a.overall.rms, a.perChannel[0].rms / std::sqrt(2.0), 1e-6);
    EXPECT_NEAR(a.overall.dcOffset, 0.125, 1e-9);
    EXPECT_EQ(a.overall.minimum, -0.75);
    EXPECT_EQ(a.overall.maximum, 1.25);

    EXPECT_NEAR(b.perChannel[0].rms, a.perChannel[0].rms, 1e-9);
    EXPECT_NEAR(b.perChannel[0].aWeightedRms, a.perChannel[0].aWeightedRms, 1e-6);
    EXPECT_NEAR(b.perChannel[0].truePeak, a.perChannel[0].truePeak, 1e-6);
    EXPECT_NEAR(b.integratedLufs, a.integratedLufs, 1e-6);
    EXPECT_NEAR(b.maxMomentaryLufs, a.maxMomentaryLufs, 1e-6);
    EXPECT_NEAR(b.spectralCentroidHz, a.spectralCentroidHz, 1e-3);
    // A square wave at 480 Hz: odd harmonics make the centroid lie well above the fundamental.
    EXPECT_GT(a.spectralCentroidHz, 960.0);
}

TEST(ZRToolAnalyzer, anEmptySignalReadsSilence)
{
    auto analyzer = Analyzer::analyzerWithFormat(44100, 1, false);
    const AnalysisResult result = analyzer->finish();
    EXPECT_EQ(result.frames, 0u);
    EXPECT_EQ(result.overall.peak, 0.0);
    EXPECT_EQ(result.overall.minimum, 0.0);
    EXPECT_EQ(result.pitchHz, 0.0);
    EXPECT_FALSE(Analyzer::analyzerWithFormat(44100, 0, false));
}

TEST(ZRToolWaveformBuilder, levelsOfSeveralResolutionsFromOnePass)
{
    // A ramp 0, 1, 2, … (in thousandths) over 1000 frames, negated in the second channel.
    auto ramp = bufferWith(2, 1000, [](uint32_t i, uint32_t c) { return (c ? -1.0f : 1.0f) * float(i) / 1000.0f; });
    WaveformBuilder builder(2,
        { WaveformResolution::forSamplesPerPixel(300), WaveformResolution::forWidth(1000, 7),
            WaveformResolution::forWidth(1000, 1500) },
        1000);
    // Blocks that cut across the points.
    auto block = ZRNativeAudioBuffer::bufferWithChannels(2, 250);
    for (uint32_t start = 0; start < 1000; start += 250) {
        for (uint32_t c = 0; c < 2; ++c)
            std::copy_n(ramp->channel(c) + start, 250, block->channel(c));
        builder.process(*block);
    }
    const std::vector<WaveformLevel> levels = builder.finish();
    ASSERT_EQ(levels.size(), 3u);

    // 300 samples per point: three full points and a last one of 100 frames.
    const WaveformLevel& whole = levels[0];
    ASSERT_EQ(whole.length, 4u);
    EXPECT_FLOAT_EQ(whole.minimum(1, 0), 0.3f);
    EXPECT_FLOAT_EQ(whole.maximum(1, 0), 0.599f);
    EXPECT_FLOAT_EQ(whole.minimum(3, 1), -0.999f);
    EXPECT_FLOAT_EQ(whole.maximum(3, 1), -0.9f);
    double squares = 0.0;
    for (int i = 900; i < 1000; ++i)
        squares += (i / 1000.0) * (i / 1000.0);
    EXPECT_NEAR(whole.rmsAt(3, 0), std::sqrt(squares / 100), 1e-6);

    // Seven points over the whole signal: point i covers frames [i·1000/7, (i+1)·1000/7).
    const WaveformLevel& seven = levels[1];
    ASSERT_EQ(seven.length, 7u);
    EXPECT_FLOAT_EQ(seven.minimum(1, 0), 0.142f);
    EXPECT_FLOAT_EQ(seven.maximum(6, 0), 0.999f);
    EXPECT_FLOAT_EQ(seven.minimum(6, 0), 0.857f);

    // More points than frames: every point exists, those without a frame are empty.
    const WaveformLevel& wide = levels[2];
    ASSERT_EQ(wide.length, 1500u);
    EXPECT_FLOAT_EQ(wide.maximum(1499, 0), 0.999f);
    EXPECT_FLOAT_EQ(wide.maximum(1, 0), 0.0f);
    EXPECT_FLOAT_EQ(wide.maximum(2, 0), 0.001f);
}

TEST(ZRToolSpectrogram, aSineLightsTheRowOfItsFrequency)
{
    constexpr double rate = 16000.0;
    auto sine = bufferWith(
        1, 16000, [](uint32_t i, uint32_t) { return float(0.5 * std::sin(2 * std::numbers::pi * 1000.0 * i / rate)); });
    auto spectrogram = Spectrogram::spectrogramWithResolution(10, ZRFFTBuffer::WindowHann, rate, 16000, 20, 100);
    ASSERT_TRUE(spectrogram);
    spectrogram->process(*sine);
    spectrogram->finish();
    const uint32_t row = uint32_t(std::lround(spectrogram->axis().rowOfFrequency(1000.0)));
    for (uint32_t column = 1; column < 19; ++column) {
        SCOPED_TRACE(column);
        // A sine of amplitude 0.5 reads -6 dBFS at its row, give or take the window's scalloping.
        EXPECT_NEAR(spectrogram->level(column, row), -6.02, 1.5);
        EXPECT_LT(spectrogram->level(column, row + 15), -40.0);
        EXPECT_LT(spectrogram->level(column, row - 15), -40.0);
    }
    // The first and last columns are half silence.
    EXPECT_LT(spectrogram->level(0, row), spectrogram->level(10, row));
    EXPECT_FALSE(Spectrogram::spectrogramWithResolution(10, ZRFFTBuffer::WindowHann, rate, 16000, 0, 100));
}

TEST(ZRToolTruePeakMeter, findsThePeaksBetweenSamplesAcrossBlocks)
{
    // A quarter of the sample rate a quarter turn off the sample grid: every sample at ±0.707, the wave itself at
    // ±1 half way between them. Left that sine; then a slow one whose samples already hold its peak, which the
    // filter must neither raise nor lower; then one high in the band (17 kHz at 44.1 kHz), whose true peak exceeds
    // its samples too.
    auto buffer = bufferWith(3, 44100, [](uint32_t i, uint32_t c) {
        if (c == 0)
            return float(std::sin(std::numbers::pi / 2 * i + std::numbers::pi / 4));
        if (c == 1)
            return float(0.5 * std::sin(2 * std::numbers::pi * 100.0 / 44100.0 * i));
        return float(0.5 * std::sin(2 * std::numbers::pi * 17000.0 / 44100.0 * i + 0.3));
    });
    TruePeakMeter meter(3);
    // Blocks of odd sizes: the filter's history carries across them.
    for (uint32_t start = 0; start < 44100; start += 997) {
        const uint32_t count = std::min(997u, 44100 - start);
        auto block = ZRNativeAudioBuffer::bufferWithChannels(3, count);
        for (uint32_t c = 0; c < 3; ++c)
            std::copy_n(buffer->channel(c) + start, count, block->channel(c));
        meter.process(*block);
    }
    EXPECT_NEAR(20 * std::log10(meter.truePeak(0)), 0.0, 0.1);
    EXPECT_NEAR(meter.truePeak(1), 0.5, 1e-3);
    EXPECT_NEAR(20 * std::log10(meter.truePeak(2) / 0.5), 0.0, 0.2);
}
