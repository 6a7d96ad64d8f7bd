#pragma once

// Sound Designer II files: interleaved big-endian signed integer PCM from the first byte of the data fork to its last
// whole frame, and the format as text in three 'STR ' resources of the resource fork, each a Pascal string holding a
// decimal number: "sample-size" (ID 1000, bytes per sample, 1 to 4), "sample-rate" (ID 1001, in hertz, fractions
// allowed, written with six decimals) and "channels" (ID 1002). Reading finds them by name, whatever their IDs.

#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <optional>
#include <string>

// The format the resource fork of the file at `path` (its extended attribute or AppleDouble companion) gives it.
// noErr and nullopt when there is no fork, or it is no resource file or holds none of the three resources: the file
// is not of this kind. kAudioFileInvalidFileError when some are missing or not a number in range (no channel, a rate
// below 1 Hz); kAudioFileUnsupportedDataFormatError for a sample size other than 1 to 4 bytes or more than 65535
// channels.
OSStatus ZRSoundDesignerIIFormatOfFile(const std::string& path, std::optional<AudioStreamBasicDescription>& format);

// The name of FFmpeg's raw PCM writer that lays out the data fork of `format`; nullptr for a format the container
// cannot hold (anything but interleaved signed integers of 1 to 4 bytes, big-endian above one byte).
const char* ZRSoundDesignerIIMuxer(const AudioStreamBasicDescription& format) noexcept;

// Stores the resource file that describes `format` as the fork of the file at `path`, and marks the file's Finder type
// where the file system keeps the Finder information. False and the system's error number on failure.
bool ZRSoundDesignerIIWriteFork(const std::string& path, const AudioStreamBasicDescription& format, int& errorNumber);
