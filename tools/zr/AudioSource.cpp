#include "AudioSource.h"

#include "FileAudioSource.h"
#include "ProgressBar.h"
#include "RawAudioSource.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

namespace zr {

std::unique_ptr<AudioSource> AudioSource::open(const std::string& path, const SourceFormat& format, ZRErrorPtr* error)
{
    if (format.isRaw())
        return RawAudioSource::open(path, format.rawRate, format.rawChannels, error);
    return FileAudioSource::open(path, error);
}

bool readAll(AudioSource& source, ProgressBar* progress,
    const std::function<void(const ZRNativeAudioBuffer& block)>& consume, ZRErrorPtr* error)
{
    std::unique_ptr<ZRNativeAudioBuffer> block
        = ZRNativeAudioBuffer::bufferWithChannels(source.channels(), blockFrames, error);
    if (!block)
        return false;
    for (;;) {
        const std::optional<uint32_t> frames = source.read(*block, error);
        if (!frames)
            return false;
        if (*frames == 0)
            return true;
        consume(*block);
        if (progress)
            progress->add(*frames);
    }
}

}
