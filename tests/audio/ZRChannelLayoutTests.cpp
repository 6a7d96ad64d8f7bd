#include <zrbase/audio/ZRAudioChannelDescription.h>
#include <zrbase/audio/ZRChannelLayout.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::vector<uint8_t> layoutBytes(uint32_t tag, const std::vector<AudioChannelDescription>& descriptions)
{
    const uint32_t count = static_cast<uint32_t>(descriptions.size());
    std::vector<uint8_t> bytes(ZRAudioChannelLayoutSize(count));
    std::memcpy(bytes.data(), &tag, 4);
    std::memcpy(bytes.data() + 8, &count, 4);
    if (count)
        std::memcpy(bytes.data() + 12, descriptions.data(), count * sizeof(AudioChannelDescription));
    return bytes;
}

}

TEST(ZRChannelLayout, copiesALayoutFromData)
{
    const AudioChannelDescription left { 1, 0, { -1.0f, 0.0f, 0.0f } };
    const AudioChannelDescription right { 2, 0, { 1.0f, 0.0f, 0.0f } };
    std::vector<uint8_t> bytes = layoutBytes(0, { left, right });
    ASSERT_EQ(bytes.size(), 52u);

    const std::unique_ptr<ZRChannelLayout> layout = ZRChannelLayout::layoutWithData(bytes);
    ASSERT_TRUE(layout);
    std::fill(bytes.begin(), bytes.end(), 0);
    EXPECT_EQ(layout->layoutSize(), 52u);
    EXPECT_EQ(layout->description(), "layout size = 52");
    ASSERT_EQ(layout->layout()->mNumberChannelDescriptions, 2u);
    EXPECT_EQ(layout->layout()->mChannelDescriptions[1].mChannelLabel, 2u);
    const ZRAudioChannelDescription holder(layout->layout()->mChannelDescriptions[0]);
    EXPECT_EQ(holder.description()->mCoordinates[0], -1.0f);

    // A tagged layout without descriptions is the bare header.
    const auto tagged = ZRChannelLayout::layoutWithData(layoutBytes((101u << 16) | 2, {}));
    ASSERT_TRUE(tagged);
    EXPECT_EQ(tagged->layoutSize(), 12u);
    EXPECT_EQ(tagged->layout()->mChannelLayoutTag, (101u << 16) | 2);
}

TEST(ZRChannelLayout, refusesDataShorterThanTheLayoutItDescribes)
{
    const std::vector<uint8_t> bytes = layoutBytes(0, { {}, {} });
    EXPECT_FALSE(ZRChannelLayout::layoutWithData({}));
    EXPECT_FALSE(ZRChannelLayout::layoutWithData(std::span(bytes).first(11)));
    EXPECT_FALSE(ZRChannelLayout::layoutWithData(std::span(bytes).first(51)));

    std::vector<uint8_t> huge = layoutBytes(0, {});
    std::memset(huge.data() + 8, 0xFF, 4);
    EXPECT_FALSE(ZRChannelLayout::layoutWithData(huge));
}
