#pragma once

#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

// An owned, variable-length AudioChannelLayout: a tag, a bitmap and mNumberChannelDescriptions channel
// descriptions.
class ZR_EXPORT ZRChannelLayout {
public:
    // A copy of a layout given as bytes; null when the bytes are too few for the header or for the channel
    // descriptions the header counts.
    static std::unique_ptr<ZRChannelLayout> layoutWithData(std::span<const uint8_t> data);
    // The channel layout of an open audio file (its WAVE channel mask, CAF 'chan' chunk or MPEG-4 channel
    // configuration); null when the file says nothing about one.
    static std::unique_ptr<ZRChannelLayout> layoutForCoreAudioFile(AudioFileID file);
    ZRChannelLayout(const ZRChannelLayout&) = delete;
    ZRChannelLayout& operator=(const ZRChannelLayout&) = delete;

    const AudioChannelLayout* layout() const noexcept { return _layout.get(); }
    AudioChannelLayout* layout() noexcept { return _layout.get(); }
    // 12 + 20 bytes per channel description.
    size_t layoutSize() const noexcept;
    // "layout size = 52"
    std::string description() const;

private:
    struct Free {
        void operator()(void* block) const noexcept { std::free(block); }
    };
    explicit ZRChannelLayout(std::unique_ptr<AudioChannelLayout, Free> layout) noexcept;

    std::unique_ptr<AudioChannelLayout, Free> _layout;
};
