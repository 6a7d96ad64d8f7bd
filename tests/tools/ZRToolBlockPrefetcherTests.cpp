#include <AudioSource.h>
#include <BlockPrefetcher.h>
#include <ToolError.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace zr;

namespace {

// Blocks whose samples are their number, shorter than a full block, and then an end or a failure; a block's number
// is its first frame over blockFrames when a reader seeks.
class CountingSource final : public AudioSource {
public:
    CountingSource(uint32_t blocks, bool fails)
        : _blocks(blocks)
        , _fails(fails)
    {
    }
    const std::string& path() const noexcept override { return _path; }
    double sampleRate() const noexcept override { return 8000.0; }
    uint32_t channels() const noexcept override { return 2; }
    std::optional<uint64_t> frames() const noexcept override { return std::nullopt; }
    std::unique_ptr<AudioSource> parallelReader() const override
    {
        return std::make_unique<CountingSource>(_blocks, _fails);
    }
    bool seek(uint64_t frame, ZRErrorPtr*) override
    {
        _read = uint32_t(std::min<uint64_t>(frame / blockFrames, _blocks));
        return true;
    }
    std::optional<uint32_t> read(ZRNativeAudioBuffer& block, ZRErrorPtr* error) override
    {
        if (_read == _blocks) {
            if (!_fails)
                return 0;
            if (error)
                *error = toolError("Reading from an audio file", "the disk went away");
            return std::nullopt;
        }
        const uint32_t frames = 100 + _read;
        block.setFrames(frames);
        for (uint32_t c = 0; c < 2; ++c)
            std::fill_n(block.channel(c), frames, float(_read));
        ++_read;
        return frames;
    }

private:
    std::string _path = "counting";
    uint32_t _blocks;
    bool _fails;
    uint32_t _read = 0;
};

}

TEST(ZRToolBlockPrefetcher, handsOutEveryBlockInOrderThenTheEndOrTheFailureFromOneOrSeveralThreads)
{
    for (const auto& [threads, fails] : { std::pair { 1u, false }, { 1u, true }, { 2u, false }, { 3u, true } }) {
        SCOPED_TRACE(testing::Message() << threads << " threads, failing " << fails);
        CountingSource source(7, fails);
        auto blocks = BlockPrefetcher::prefetcherWithSource(source, threads);
        ASSERT_TRUE(blocks);
        ZRErrorPtr error;
        uint32_t count = 0;
        while (const ZRNativeAudioBuffer* block = blocks->next(&error)) {
            // A slow caller now and then: the reader must wait for the block it would overwrite.
            if (count % 3 == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            EXPECT_EQ(block->frames(), 100 + count);
            EXPECT_EQ(block->channel(0)[0], float(count));
            EXPECT_EQ(block->channel(1)[block->frames() - 1], float(count));
            ++count;
        }
        EXPECT_EQ(count, 7u);
        EXPECT_EQ(error != nullptr, fails);
        EXPECT_EQ(blocks->next(), nullptr);
    }
    // A caller that stops early leaves a reader that ends with it.
    CountingSource endless(1000, false);
    auto blocks = BlockPrefetcher::prefetcherWithSource(endless);
    ASSERT_TRUE(blocks->next());
}
