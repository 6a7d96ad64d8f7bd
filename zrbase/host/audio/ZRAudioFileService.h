#pragma once

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <optional>
#include <string>

// The frames of a file's packets: those that count, and the encoder's delay at the start and padding at the end
// that do not ('pnfo').
struct AudioFilePacketTableInfo {
    int64_t mNumberValidFrames;
    int32_t mPrimingFrames;
    int32_t mRemainderFrames;
};

// A frame and the packet that holds it ('pkfr', 'frpk').
struct AudioFramePacketTranslation {
    int64_t mFrame;
    int64_t mPacket;
    uint32_t mFrameOffsetInPacket;
};

// An open audio file of the audio file service.
struct OpaqueAudioFileID;
using AudioFileID = OpaqueAudioFileID*;
using AudioFileTypeID = uint32_t;

inline constexpr AudioFileTypeID kAudioFileAIFFType = ZRFourCharCode("AIFF");
inline constexpr AudioFileTypeID kAudioFileAIFCType = ZRFourCharCode("AIFC");
inline constexpr AudioFileTypeID kAudioFileWAVEType = ZRFourCharCode("WAVE");
inline constexpr AudioFileTypeID kAudioFileSoundDesigner2Type = ZRFourCharCode("Sd2f");
inline constexpr AudioFileTypeID kAudioFileMP1Type = ZRFourCharCode("MPG1");
inline constexpr AudioFileTypeID kAudioFileMP2Type = ZRFourCharCode("MPG2");
inline constexpr AudioFileTypeID kAudioFileMP3Type = ZRFourCharCode("MPG3");
inline constexpr AudioFileTypeID kAudioFileAC3Type = ZRFourCharCode("ac-3");
inline constexpr AudioFileTypeID kAudioFileCAFType = ZRFourCharCode("caff");
inline constexpr AudioFileTypeID kAudioFileM4AType = ZRFourCharCode("m4af");
inline constexpr AudioFileTypeID kAudioFileMPEG4Type = ZRFourCharCode("mp4f");
// Containers this service reads but has no type code for (FLAC, Ogg): reported as this code.
inline constexpr AudioFileTypeID kAudioFileUnknownType = 0;

// The service's result codes.
inline constexpr OSStatus kAudioFileUnspecifiedError = static_cast<OSStatus>(ZRFourCharCode("wht?"));
inline constexpr OSStatus kAudioFileUnsupportedFileTypeError = static_cast<OSStatus>(ZRFourCharCode("typ?"));
inline constexpr OSStatus kAudioFileUnsupportedDataFormatError = static_cast<OSStatus>(ZRFourCharCode("fmt?"));
inline constexpr OSStatus kAudioFileUnsupportedPropertyError = static_cast<OSStatus>(ZRFourCharCode("pty?"));
inline constexpr OSStatus kAudioFileBadPropertySizeError = static_cast<OSStatus>(ZRFourCharCode("!siz"));
inline constexpr OSStatus kAudioFilePermissionsError = static_cast<OSStatus>(ZRFourCharCode("prm?"));
inline constexpr OSStatus kAudioFileInvalidChunkError = static_cast<OSStatus>(ZRFourCharCode("chk?"));
inline constexpr OSStatus kAudioFileInvalidFileError = static_cast<OSStatus>(ZRFourCharCode("dta?"));
inline constexpr OSStatus kAudioFileOperationNotSupportedError = static_cast<OSStatus>(ZRFourCharCode("op??"));
inline constexpr OSStatus kAudioFileInvalidPacketOffsetError = static_cast<OSStatus>(ZRFourCharCode("pck?"));
inline constexpr OSStatus kAudioFileEndOfFileError = -39;
inline constexpr OSStatus kAudioFileNotFoundError = -43;

// Information-dictionary keys the service maps onto the containers' tags.
inline constexpr const char* kAFInfoDictionary_Title = "title";
inline constexpr const char* kAFInfoDictionary_Artist = "artist";
inline constexpr const char* kAFInfoDictionary_Album = "album";
inline constexpr const char* kAFInfoDictionary_Genre = "genre";
inline constexpr const char* kAFInfoDictionary_Year = "year";
inline constexpr const char* kAFInfoDictionary_Comments = "comments";
inline constexpr const char* kAFInfoDictionary_Composer = "composer";
inline constexpr const char* kAFInfoDictionary_TrackNumber = "track number";
inline constexpr const char* kAFInfoDictionary_Copyright = "copyright";
inline constexpr const char* kAFInfoDictionary_Lyricist = "lyricist";
inline constexpr const char* kAFInfoDictionary_EncodingApplication = "encoding application";
inline constexpr const char* kAFInfoDictionary_ApproximateDurationInSeconds = "approximate duration in seconds";

// The audio file service: containers read and written packet by packet. Reading detects the container from the
// file's bytes (WAVE with its extensible and RF64 forms, AIFF and AIFC, CAF, MPEG-4, MPEG audio, AC-3, and FLAC and
// Ogg Vorbis or Opus as the unknown type), or a Sound Designer II file from the format its resource fork gives;
// writing makes WAVE, AIFF, AIFC, CAF, M4A, MPEG-4, MP3, AC-3 and Sound Designer II files.
// Linear PCM has one frame per packet and reads and writes the container's own bytes; compressed formats have the
// container's packets, their descriptions and the codec's magic cookie in the container's layout.
//
// Every call answers noErr or one of the codes above; results are written only on success. A file is used by one
// thread at a time.
class ZR_EXPORT ZRAudioFileService {
public:
    // Opens a file for reading.
    static OSStatus open(const std::string& path, AudioFileID& file);
    // Creates the file `name` in `folder` (an existing file is not replaced) holding `format` in a container of
    // `type`. Linear PCM must suit the container (WAVE little-endian, AIFF big-endian, AIFC either, CAF any, Sound
    // Designer II big-endian signed integers of 1 to 4 bytes, its resource fork written on closing).
    static OSStatus create(const std::string& folder, const std::string& name, AudioFileTypeID type,
        const AudioStreamBasicDescription& format, AudioFileID& file);
    // Writes what a created file still lacks and closes any file.
    static OSStatus close(AudioFileID file);

    // Reads up to ioNumPackets packets from startPacket into `buffer` of ioNumBytes bytes, stopping early where a
    // packet would not fit. On return ioNumPackets and ioNumBytes say what was read (0 packets at or past the end);
    // descriptions, when given, receive one entry per packet read with offsets into `buffer`.
    static OSStatus readPackets(AudioFileID file, int64_t startPacket, uint32_t& ioNumPackets, uint32_t& ioNumBytes,
        void* buffer, AudioStreamPacketDescription* descriptions);
    // Appends ioNumPackets packets of numBytes bytes at startPacket, which must be the number of packets written so
    // far. Variable packets need their descriptions; constant ones may go without.
    static OSStatus writePackets(AudioFileID file, int64_t startPacket, uint32_t& ioNumPackets, uint32_t numBytes,
        const void* buffer, const AudioStreamPacketDescription* descriptions);

    // 'dfmt': the data format; 'ffmt': the container type.
    static OSStatus dataFormat(AudioFileID file, AudioStreamBasicDescription& format);
    static OSStatus fileFormat(AudioFileID file, AudioFileTypeID& type);
    // 'pcnt' and 'psze'.
    static OSStatus packetCount(AudioFileID file, uint64_t& count);
    static OSStatus maximumPacketSize(AudioFileID file, uint32_t& size);
    // 'pkfr': the first frame of mPacket; 'frpk': the packet holding mFrame and the frame's offset in it. Only for
    // formats with a fixed number of frames per packet (kAudioFileUnsupportedPropertyError otherwise).
    static OSStatus packetToFrame(AudioFileID file, AudioFramePacketTranslation& translation);
    static OSStatus frameToPacket(AudioFileID file, AudioFramePacketTranslation& translation);
    // 'mgic': the codec's configuration in the container's layout ('esds' for AAC, the 'alac' atom for Apple
    // Lossless); none for formats without one. Setting it on a created file precedes the first write.
    static OSStatus magicCookie(AudioFileID file, ZRData& cookie);
    static OSStatus setMagicCookie(AudioFileID file, const ZRData& cookie);
    // 'info': the container's tags under the information-dictionary keys (unknown tags keep their own names) and
    // the approximate duration; setting it on a created file precedes the first write.
    static OSStatus infoDictionary(AudioFileID file, ZRDictionary& info);
    static OSStatus setInfoDictionary(AudioFileID file, const ZRDictionary& info);
    // 'cmap': the channel layout as AudioChannelLayout bytes, from the WAVE channel mask, the CAF 'chan' chunk or the
    // MPEG-4 channel configuration; kAudioFileUnsupportedPropertyError when the file says nothing about it.
    static OSStatus channelLayout(AudioFileID file, ZRData& layout);
    // 'pnfo': the valid frames as the container records them (delay and padding in MPEG-4 edit lists and MP3 encoder
    // tags), and for other containers the frames of all packets. A created file takes the priming before its first
    // packet is written and the remainder before it is closed; its valid frames follow from them.
    static OSStatus packetTableInfo(AudioFileID file, AudioFilePacketTableInfo& info);
    static OSStatus setPacketTableInfo(AudioFileID file, const AudioFilePacketTableInfo& info);
};
