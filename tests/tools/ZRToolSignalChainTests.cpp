#include <Commands.h>
#include <OutputFile.h>
#include <SignalChain.h>
#include <ToolError.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>

#include "ZRToolTestSupport.h"

using namespace zr;

namespace {

// Channel c holds the constant c + 1.
std::unique_ptr<ZRNativeAudioBuffer> constants(uint32_t channels, uint32_t frames)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, frames);
    for (uint32_t c = 0; c < channels; ++c)
        std::fill_n(buffer->channel(c), frames, float(c + 1));
    return buffer;
}

std::vector<float> firstFrame(const ZRNativeAudioBuffer& buffer)
{
    std::vector<float> values;
    for (uint32_t c = 0; c < buffer.channels(); ++c)
        values.push_back(buffer.channel(c)[0]);
    return values;
}

std::vector<float> mixed(uint32_t inputs, uint32_t outputs)
{
    ChainSettings settings;
    settings.outputChannels = outputs;
    auto chain = SignalChain::chainWithSettings(settings, 48000, inputs, 16);
    return firstFrame(chain->process(*constants(inputs, 16)));
}

}

TEST(ZRToolSignalChain, mixesChannelsDownAndUp)
{
    EXPECT_EQ(mixed(2, 1), (std::vector<float> { 1.5f }));
    EXPECT_EQ(mixed(6, 1), (std::vector<float> { 3.5f }));
    // Six to two: the even channels fold onto the left, the odd ones onto the right.
    EXPECT_EQ(mixed(6, 2), (std::vector<float> { 3.0f, 4.0f }));
    EXPECT_EQ(mixed(1, 2), (std::vector<float> { 1.0f, 1.0f }));
    EXPECT_EQ(mixed(1, 4), (std::vector<float> { 1.0f, 1.0f, 0.0f, 0.0f }));
    EXPECT_EQ(mixed(2, 3), (std::vector<float> { 1.0f, 2.0f, 0.0f }));
    EXPECT_EQ(mixed(3, 3), (std::vector<float> { 1.0f, 2.0f, 3.0f }));
}

TEST(ZRToolSignalChain, fadesAndGainAcrossBlocks)
{
    ChainSettings settings;
    settings.gainDb = 20.0 * std::log10(0.5);
    settings.fadeInSeconds = 0.001; // 10 frames at 10 kHz
    settings.fadeOutSeconds = 0.002; // 20 frames
    auto chain = SignalChain::chainWithSettings(settings, 10000, 1, 100);
    ASSERT_TRUE(chain);
    std::vector<float> output;
    for (int block = 0; block < 4; ++block) {
        const ZRNativeAudioBuffer& processed = chain->process(*constants(1, 25));
        output.insert(output.end(), processed.channel(0), processed.channel(0) + 25);
    }
    EXPECT_FLOAT_EQ(output[0], 0.0f);
    EXPECT_FLOAT_EQ(output[5], 0.25f);
    EXPECT_FLOAT_EQ(output[10], 0.5f);
    EXPECT_FLOAT_EQ(output[50], 0.5f);
    EXPECT_FLOAT_EQ(output[89], 0.5f * 10.0f / 20.0f);
    EXPECT_FLOAT_EQ(output[99], 0.0f);

    // A fade-out needs the length.
    ZRErrorPtr error;
    EXPECT_FALSE(SignalChain::chainWithSettings(settings, 10000, 1, std::nullopt, &error));
    EXPECT_EQ(sentence(error), "Converting the audio failed because a fade-out needs the input's length beforehand");
}

TEST(ZRToolSignalChain, filtersByName)
{
    for (const char* name :
        { "a", "b", "c", "dc", "lowpass:1000", "highpass:80", "bandpass:1000", "bandpass:1000:0.5" })
        EXPECT_TRUE(SignalChain::isFilter(name)) << name;
    for (const char* name : { "", "d", "lowpass", "lowpass:0", "lowpass:30000", "bandpass:1000:0", "notch:100",
             "lowpass:100:1:2", "lowpass:100x" })
        EXPECT_FALSE(SignalChain::isFilter(name)) << name;

    // The DC filter takes a constant away.
    ChainSettings settings;
    settings.filter = "dc";
    auto chain = SignalChain::chainWithSettings(settings, 48000, 1, std::nullopt);
    float last = 1.0f;
    for (int block = 0; block < 50; ++block)
        last = chain->process(*constants(1, 4800)).channel(0)[4799];
    EXPECT_LT(std::fabs(last), 0.01f);
}

TEST(ZRToolOutputFile, replacesTheTargetWholeOrNotAtAll)
{
    const std::string folder = ZRToolScratch("outputFile");
    const std::string target = folder + "/out.bin";
    ASSERT_TRUE(writeOutputFile(target, "first"));
    ASSERT_TRUE(writeOutputFile(target, "second"));
    EXPECT_EQ(ZRToolReadFile(target), "second");
    EXPECT_EQ(std::filesystem::status(target).permissions() & std::filesystem::perms::owner_read,
        std::filesystem::perms::owner_read);

    // Past a file-size limit the old content stays and no temporary file is left.
    struct rlimit old { };
    getrlimit(RLIMIT_FSIZE, &old);
    struct rlimit small = old;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    signal(SIGXFSZ, SIG_IGN);
    ZRErrorPtr error;
    const bool written = writeOutputFile(target, std::string(10000, 'x'), &error);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_FALSE(written);
    EXPECT_EQ(sentence(error), "Writing the output file failed because file too large. (EFBIG)");
    EXPECT_EQ(ZRToolReadFile(target), "second");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()), 1);

    EXPECT_EQ(outputType("a/b.c/take.PNG", ""), "png");
    EXPECT_EQ(outputType("a/b.c/take", ""), "");
    EXPECT_EQ(outputType("-", "dat"), "dat");
}
