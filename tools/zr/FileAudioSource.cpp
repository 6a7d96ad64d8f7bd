#include "FileAudioSource.h"

#include "OutputFile.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/codec/ZRCoreAudioFile.h>
#include <zrbase/codec/ZRExtCoreAudioFile.h>
#include <zrbase/core/ZRCoreAudioFileError.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zr {

static const char* const openAction = "Opening an audio file";

// The path to open for an input: "-" is standard input, which is copied to an unnamed temporary file when it is a
// pipe (the container reader needs to seek); the copy lives as long as the process.
static std::optional<std::string> readablePath(const std::string& path, ZRErrorPtr* error)
{
    if (path != "-")
        return path;
    struct stat status { };
    if (::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode))
        return "/dev/stdin";
    const char* folder = std::getenv("TMPDIR");
    const int descriptor = ::open(folder && *folder ? folder : "/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        if (error)
            *error = fileError(errno, openAction);
        return std::nullopt;
    }
    char chunk[65536];
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0 || ::write(descriptor, chunk, size_t(count)) != count) {
            if (count == 0)
                break;
            if (error)
                *error = fileError(errno, openAction);
            ::close(descriptor);
            return std::nullopt;
        }
    }
    return "/proc/self/fd/" + std::to_string(descriptor);
}

std::unique_ptr<FileAudioSource> FileAudioSource::open(const std::string& path, ZRErrorPtr* error)
{
    std::optional<std::string> location = readablePath(path, error);
    if (!location)
        return nullptr;
    // The audio file knows missing files; what the system says about folders and permissions reads clearer.
    struct stat status { };
    int failure = ::stat(location->c_str(), &status) != 0 ? errno : 0;
    if (!failure && S_ISDIR(status.st_mode))
        failure = EISDIR;
    if (!failure && ::access(location->c_str(), R_OK) != 0)
        failure = errno;
    if (failure) {
        if (error)
            *error = fileError(failure, openAction);
        return nullptr;
    }
    std::unique_ptr<ZRExtCoreAudioFile> file = ZRExtCoreAudioFile::openForReadingWithPath(*location, error);
    if (!file)
        return nullptr;
    std::unique_ptr<FileAudioSource> source(new FileAudioSource(path, std::move(*location), std::move(file)));
    if (source->_format.channels() == 0 || !(source->_format.rate() > 0)) {
        if (error)
            *error = ZRCoreAudioFileError::errorWithCode(kAudioFileUnsupportedDataFormatError, openAction);
        return nullptr;
    }
    return source;
}

FileAudioSource::FileAudioSource(std::string path, std::string location, std::unique_ptr<ZRExtCoreAudioFile> file)
    : _path(std::move(path))
    , _location(std::move(location))
    , _file(std::move(file))
    , _format(_file->format())
{
    if (const int64_t frames = _file->framesLong(); frames > 0)
        _frames = uint64_t(frames);
}

FileAudioSource::~FileAudioSource() = default;

std::unique_ptr<ZRCoreAudioFile> FileAudioSource::containerFile(ZRErrorPtr* error) const
{
    return ZRCoreAudioFile::fileWithPath(_location, error);
}

uint64_t FileAudioSource::byteSize() const noexcept
{
    struct stat status { };
    return ::stat(_location.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? uint64_t(status.st_size) : 0;
}

std::unique_ptr<AudioSource> FileAudioSource::parallelReader() const
{
    if (_format.format() != kAudioFormatLinearPCM)
        return nullptr;
    std::unique_ptr<ZRExtCoreAudioFile> file = ZRExtCoreAudioFile::openForReadingWithPath(_location);
    if (!file)
        return nullptr;
    return std::unique_ptr<AudioSource>(new FileAudioSource(_path, _location, std::move(file)));
}

bool FileAudioSource::seek(uint64_t frame, ZRErrorPtr* error)
{
    // Past the end the next read finds the end.
    return _file->seekToFrame(int64_t(std::min(frame, _frames.value_or(frame))), error);
}

std::optional<uint32_t> FileAudioSource::read(ZRNativeAudioBuffer& block, ZRErrorPtr* error)
{
    uint32_t frames = 0;
    if (!_file->readBuffer(block, &frames, error))
        return std::nullopt;
    if (frames < block.frames())
        block.setFrames(frames);
    return frames;
}

}
