#include "AudioSource.h"

#include "BlockPrefetcher.h"
#include "FileAudioSource.h"
#include "ProgressBar.h"
#include "RawAudioSource.h"
#include "ToolError.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

namespace zr {

std::unique_ptr<AudioSource> AudioSource::open(const std::string& path, const SourceFormat& format, ZRErrorPtr* error)
{
    if (format.isRaw())
        return RawAudioSource::open(path, format.rawRate, format.rawChannels, error);
    return FileAudioSource::open(path, error);
}

bool AudioSource::seek(uint64_t, ZRErrorPtr* error)
{
    if (error)
        *error = toolError("Reading from an audio file", "the input cannot move to another place");
    return false;
}

bool readAll(AudioSource& source, ProgressBar* progress,
    const std::function<void(const ZRNativeAudioBuffer& block)>& consume, ZRErrorPtr* error, uint32_t threads)
{
    std::unique_ptr<BlockPrefetcher> blocks = BlockPrefetcher::prefetcherWithSource(source, threads, error);
    if (!blocks)
        return false;
    ZRErrorPtr failure;
    while (const ZRNativeAudioBuffer* block = blocks->next(&failure)) {
        consume(*block);
        if (progress)
            progress->add(block->frames());
    }
    if (error && failure)
        *error = failure;
    return !failure;
}

}
