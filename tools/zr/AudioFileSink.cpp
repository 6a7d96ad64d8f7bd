#include "AudioFileSink.h"

#include "ToolError.h"

#include <zrbase/audio/ZRAudioBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/codec/ZRConverter.h>
#include <zrbase/codec/ZRExtCoreAudioFile.h>
#include <zrbase/core/ZRCoreAudioFileError.h>

namespace zr {

static const char* const createAction = "Creating an audio file";

// The file's linear PCM: WAVE keeps 8-bit samples unsigned, 32 bits are float, AIFF is big-endian.
static ZRAudioStreamDescription pcmFormat(const SinkFormat& format)
{
    ZRAudioStreamDescription description;
    description.clear();
    description.setFormat(kAudioFormatLinearPCM);
    description.setRate(format.rate);
    description.setChannels(format.channels);
    const bool bigEndian = format.container == kAudioFileAIFFType || format.container == kAudioFileAIFCType;
    description.setFlags(
        (format.bits == 32                                                   ? kAudioFormatFlagIsFloat
                : format.bits == 8 && format.container == kAudioFileWAVEType ? 0
                                                                             : kAudioFormatFlagIsSignedInteger)
        | (bigEndian && format.bits > 8 ? kAudioFormatFlagIsBigEndian : 0));
    description.setRange(format.bits);
    description.complete();
    return description;
}

std::unique_ptr<AudioFileSink> AudioFileSink::sinkWithPath(
    const std::string& path, const SinkFormat& format, ZRErrorPtr* error)
{
    std::unique_ptr<AudioFileSink> sink(new AudioFileSink);
    if (format.format != kAudioFormatLinearPCM) {
        // The extended file's factory says nothing of why it failed: the usual reason is a format it cannot write.
        sink->_encodedFile = ZRExtCoreAudioFile::createWithPath(
            path, format.container, format.format, uint32_t(format.rate), format.bits, format.channels);
        if (!sink->_encodedFile) {
            if (error)
                *error = ZRCoreAudioFileError::errorWithCode(kAudioFileUnsupportedDataFormatError, createAction);
            return nullptr;
        }
        if (format.bitRate)
            sink->_encodedFile->setBitrate(format.bitRate);
        if (!format.tags.empty())
            sink->_encodedFile->setProperties(format.tags);
        return sink;
    }

    const ZRAudioStreamDescription fileFormat = pcmFormat(format);
    sink->_file = ZRCoreAudioFile::fileWithPath(path, format.container, fileFormat, error);
    if (!sink->_file)
        return nullptr;
    sink->_file->setProperties(format.tags);
    sink->_samples = ZRConverter::converterWithSourceFormat(
        ZRAudioStreamDescription(format.rate, format.channels), fileFormat, error);
    sink->_bytes = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 0, error);
    if (!sink->_samples || !sink->_bytes)
        return nullptr;
    sink->_bytes->setChannelsPerBuffer(format.channels);
    sink->_bytesPerFrame = fileFormat.description()->mBytesPerFrame;
    return sink;
}

AudioFileSink::~AudioFileSink() = default;

bool AudioFileSink::write(const ZRNativeAudioBuffer& block, ZRErrorPtr* error)
{
    if (_encodedFile) {
        if (_encodedFile->writeBuffer(block))
            return true;
        if (error)
            *error = toolError("Writing to an audio file", "the encoder or the disk took no more audio");
        return false;
    }
    const uint32_t frames = block.frames();
    if (frames == 0)
        return true;
    if (!_bytes->setLength(frames * _bytesPerFrame, error))
        return false;
    return _samples->convertNativeBuffer(block, *_bytes, error) == frames
        && _file->writeNumberOfPackets(frames, *_bytes, nullptr, error);
}

bool AudioFileSink::close(ZRErrorPtr* error) { return _encodedFile ? _encodedFile->close(error) : _file->close(error); }

}
