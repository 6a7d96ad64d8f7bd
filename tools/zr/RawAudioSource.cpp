#include "RawAudioSource.h"

#include "OutputFile.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zr {

static const char* const openAction = "Opening an audio file";

std::unique_ptr<RawAudioSource> RawAudioSource::open(
    const std::string& path, uint32_t rate, uint32_t channels, ZRErrorPtr* error)
{
    const int descriptor = path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status { };
    int failure = descriptor < 0 ? errno : 0;
    if (!failure && ::fstat(descriptor, &status) != 0)
        failure = errno;
    if (!failure && S_ISDIR(status.st_mode))
        failure = EISDIR;
    if (failure) {
        if (descriptor >= 0)
            ::close(descriptor);
        if (error)
            *error = fileError(failure, openAction);
        return nullptr;
    }
    std::unique_ptr<RawAudioSource> source(new RawAudioSource(path, descriptor, rate, channels));
    if (S_ISREG(status.st_mode))
        source->_frames = uint64_t(status.st_size) / (uint64_t(channels) * sizeof(float));
    return source;
}

RawAudioSource::RawAudioSource(std::string path, int descriptor, uint32_t rate, uint32_t channels)
    : _path(std::move(path))
    , _descriptor(descriptor)
    , _rate(rate)
    , _channels(channels)
{
}

RawAudioSource::~RawAudioSource() { ::close(_descriptor); }

std::optional<uint32_t> RawAudioSource::read(ZRNativeAudioBuffer& block, ZRErrorPtr* error)
{
    const size_t frameBytes = size_t(_channels) * sizeof(float);
    const size_t wanted = size_t(block.frames()) * frameBytes;
    _interleaved.resize(block.frames() * size_t(_channels));
    char* bytes = reinterpret_cast<char*>(_interleaved.data());
    size_t filled = _pendingBytes;
    while (filled < wanted) {
        const ssize_t count = ::read(_descriptor, bytes + filled, wanted - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            if (error)
                *error = fileError(errno, "Reading from an audio file");
            return std::nullopt;
        }
        if (count == 0)
            break;
        filled += size_t(count);
    }
    const uint32_t frames = uint32_t(filled / frameBytes);
    if (frames < block.frames())
        block.setFrames(frames);
    for (uint32_t c = 0; c < _channels; ++c) {
        float* destination = block.channel(c);
        const float* source = _interleaved.data() + c;
        for (uint32_t i = 0; i < frames; ++i)
            destination[i] = source[size_t(i) * _channels];
    }
    _pendingBytes = filled - size_t(frames) * frameBytes;
    if (_pendingBytes)
        std::memmove(bytes, bytes + size_t(frames) * frameBytes, _pendingBytes);
    return frames;
}

}
