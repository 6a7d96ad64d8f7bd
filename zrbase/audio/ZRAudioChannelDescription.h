#pragma once

#include <zrbase/host/audio/ZRCoreAudioTypes.h>

// A holder of one AudioChannelDescription (label, flags, coordinates), all zero when made empty.
class ZRAudioChannelDescription {
public:
    ZRAudioChannelDescription() = default;
    explicit ZRAudioChannelDescription(const AudioChannelDescription& description) noexcept
        : _description(description)
    {
    }

    const AudioChannelDescription* description() const noexcept { return &_description; }
    AudioChannelDescription* description() noexcept { return &_description; }

private:
    AudioChannelDescription _description {};
};
