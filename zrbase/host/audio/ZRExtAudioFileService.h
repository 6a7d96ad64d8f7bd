#pragma once

#include <zrbase/host/audio/ZRAudioConverterService.h>
#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <string>

// An audio file of the extended audio file service.
struct OpaqueExtAudioFile;
using ExtAudioFileRef = OpaqueExtAudioFile*;

// The extended audio file service: an audio file paired with a converter between its data format and a client
// format of the caller's choice, so that frames of the client format are read and written whatever the file
// holds. Writing encodes as buffers arrive and records the encoder's delay and padding where the container keeps
// them (MPEG-4 edit lists, the MP3 encoder tag), so that reading the file back gives the frames written, without the
// delay. Results are the audio file and converter services' codes.
class ZR_EXPORT ZRExtAudioFileService {
public:
    // Creates the file at `path` (an existing file is not replaced). A compressed format with a sample rate of 0
    // takes the rate of the client format when that is set.
    static OSStatus create(const std::string& path, AudioFileTypeID type, const AudioStreamBasicDescription& format,
        ExtAudioFileRef& file);
    static OSStatus open(const std::string& path, ExtAudioFileRef& file);
    // Writes what is still buffered and closes the file.
    static OSStatus dispose(ExtAudioFileRef file);

    // Reads up to ioFrames frames of the client format into `data` (its buffers give the room); ioFrames receives
    // the frames read, 0 at the end.
    static OSStatus read(ExtAudioFileRef file, uint32_t& ioFrames, AudioBufferList* data);
    // Appends `frames` frames of the client format.
    static OSStatus write(ExtAudioFileRef file, uint32_t frames, const AudioBufferList* data);
    // Moves the next read to a frame.
    static OSStatus seek(ExtAudioFileRef file, int64_t frame);

    // '#frm': the frames the file holds (those written so far, for a file being written).
    static OSStatus fileLengthFrames(ExtAudioFileRef file, int64_t& frames);
    // 'ffmt' and 'cfmt'. A client format must be linear PCM with the file's channels; setting it makes the
    // converter.
    static OSStatus fileDataFormat(ExtAudioFileRef file, AudioStreamBasicDescription& format);
    static OSStatus clientDataFormat(ExtAudioFileRef file, AudioStreamBasicDescription& format);
    static OSStatus setClientDataFormat(ExtAudioFileRef file, const AudioStreamBasicDescription& format);
    // 'afil': the audio file beneath, which the extended file owns (none before a created file has its client
    // format); 'acnv': its converter (none before the client format is set).
    static OSStatus audioFile(ExtAudioFileRef file, AudioFileID& audioFile);
    static OSStatus audioConverter(ExtAudioFileRef file, AudioConverterRef& converter);
};
