#include <zrbase/audio/ZRChannelLayout.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cstring>

ZRChannelLayout::ZRChannelLayout(std::unique_ptr<AudioChannelLayout, Free> layout) noexcept
    : _layout(std::move(layout))
{
}

std::unique_ptr<ZRChannelLayout> ZRChannelLayout::layoutWithData(std::span<const uint8_t> data)
{
    constexpr size_t headerSize = ZRAudioChannelLayoutSize(0);
    if (data.size() < headerSize)
        return nullptr;
    uint32_t count;
    std::memcpy(&count, data.data() + offsetof(AudioChannelLayout, mNumberChannelDescriptions), sizeof(count));
    if (data.size() < ZRAudioChannelLayoutSize(count))
        return nullptr;

    // Never smaller than the declared structure, so that its one declared description is always addressable.
    void* block = std::calloc(1, std::max(data.size(), sizeof(AudioChannelLayout)));
    if (!block)
        return nullptr;
    std::memcpy(block, data.data(), data.size());
    return std::unique_ptr<ZRChannelLayout>(
        new ZRChannelLayout(std::unique_ptr<AudioChannelLayout, Free>(static_cast<AudioChannelLayout*>(block))));
}

size_t ZRChannelLayout::layoutSize() const noexcept
{
    return ZRAudioChannelLayoutSize(_layout->mNumberChannelDescriptions);
}

std::string ZRChannelLayout::description() const { return ZRStringWithFormat("layout size = %d", layoutSize()); }

std::unique_ptr<ZRChannelLayout> ZRChannelLayout::layoutForCoreAudioFile(AudioFileID file)
{
    ZRData layout;
    if (ZRAudioFileService::channelLayout(file, layout) != noErr || layout.empty())
        return nullptr;
    return layoutWithData(layout);
}
