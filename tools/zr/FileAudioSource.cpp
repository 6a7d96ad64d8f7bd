#include "FileAudioSource.h"

#include "OutputFile.h"
#include "ToolError.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/core/ZRCoreAudioFileError.h>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zr {

static const char* const openAction = "Opening an audio file";

ZRErrorPtr audioFileError(OSStatus status, std::string_view action)
{
    if (ZRCoreAudioFileError::failureReasonForError(status))
        return ZRCoreAudioFileError::errorWithCode(status, action);
    return toolError(action, "the audio file service answered " + std::to_string(status) + ".");
}

AudioStreamBasicDescription nativeFloatFormat(double sampleRate, uint32_t channels)
{
    AudioStreamBasicDescription format {};
    format.mSampleRate = sampleRate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved;
    format.mBytesPerPacket = sizeof(float);
    format.mFramesPerPacket = 1;
    format.mBytesPerFrame = sizeof(float);
    format.mChannelsPerFrame = channels;
    format.mBitsPerChannel = 32;
    return format;
}

std::optional<std::string> readablePath(const std::string& path, ZRErrorPtr* error)
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
    const std::optional<std::string> readable = readablePath(path, error);
    if (!readable)
        return nullptr;
    const std::string& location = *readable;
    // The service knows missing files; what the system says about folders and permissions reads clearer.
    struct stat status { };
    int failure = ::stat(location.c_str(), &status) != 0 ? errno : 0;
    if (!failure && S_ISDIR(status.st_mode))
        failure = EISDIR;
    if (!failure && ::access(location.c_str(), R_OK) != 0)
        failure = errno;
    if (failure) {
        if (error)
            *error = fileError(failure, openAction);
        return nullptr;
    }

    ExtAudioFileRef file = nullptr;
    AudioStreamBasicDescription format {};
    OSStatus result = ZRExtAudioFileService::open(location, file);
    if (result == noErr)
        result = ZRExtAudioFileService::fileDataFormat(file, format);
    if (result == noErr && (format.mChannelsPerFrame == 0 || !(format.mSampleRate > 0)))
        result = kAudioFileUnsupportedDataFormatError;
    if (result == noErr)
        result = ZRExtAudioFileService::setClientDataFormat(
            file, nativeFloatFormat(format.mSampleRate, format.mChannelsPerFrame));
    if (result != noErr) {
        if (file)
            ZRExtAudioFileService::dispose(file);
        if (error)
            *error = audioFileError(result, openAction);
        return nullptr;
    }
    std::unique_ptr<FileAudioSource> source(new FileAudioSource(path, file, format));
    int64_t frames = 0;
    if (ZRExtAudioFileService::fileLengthFrames(file, frames) == noErr && frames > 0)
        source->_frames = uint64_t(frames);
    return source;
}

FileAudioSource::FileAudioSource(std::string path, ExtAudioFileRef file, const AudioStreamBasicDescription& format)
    : _path(std::move(path))
    , _file(file)
    , _format(format)
{
}

FileAudioSource::~FileAudioSource() { ZRExtAudioFileService::dispose(_file); }

std::optional<uint32_t> FileAudioSource::read(ZRNativeAudioBuffer& block, ZRErrorPtr* error)
{
    uint32_t frames = block.frames();
    AudioBufferList* list = block.list();
    for (uint32_t c = 0; c < list->mNumberBuffers; ++c)
        list->mBuffers[c].mDataByteSize = frames * uint32_t(sizeof(float));
    const OSStatus status = ZRExtAudioFileService::read(_file, frames, list);
    if (status != noErr) {
        if (error)
            *error = audioFileError(status, "Reading from an audio file");
        return std::nullopt;
    }
    if (frames < block.frames())
        block.setFrames(frames);
    return frames;
}

}
