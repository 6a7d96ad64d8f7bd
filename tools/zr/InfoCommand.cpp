#include "Commands.h"
#include "DurationText.h"
#include "FileAudioSource.h"
#include "FileJobs.h"
#include "JsonWriter.h"
#include "OutputFile.h"

#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRAudioFormatService.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <map>
#include <sys/stat.h>

namespace zr {

namespace {

    struct FileInfo {
        std::string container;
        std::string dataFormat;
        AudioStreamBasicDescription format {};
        std::string channelLayout;
        uint64_t frames = 0;
        uint64_t packets = 0;
        uint32_t maximumPacketSize = 0;
        double bitRate = 0.0;
        ZRDictionary tags;
    };

    std::string fourCharacters(uint32_t code)
    {
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            const char c = char((code >> shift) & 0xff);
            text += c >= 0x20 && c < 0x7f ? c : '?';
        }
        return text;
    }

    std::string containerName(AudioFileTypeID type)
    {
        static const std::map<AudioFileTypeID, std::string> names {
            { kAudioFileWAVEType, "WAVE" },
            { kAudioFileAIFFType, "AIFF" },
            { kAudioFileAIFCType, "AIFC" },
            { kAudioFileCAFType, "CAF" },
            { kAudioFileM4AType, "M4A" },
            { kAudioFileMPEG4Type, "MPEG-4" },
            { kAudioFileMP1Type, "MPEG Layer 1" },
            { kAudioFileMP2Type, "MPEG Layer 2" },
            { kAudioFileMP3Type, "MP3" },
            { kAudioFileAC3Type, "AC-3" },
            { kAudioFileSoundDesigner2Type, "Sound Designer II" },
        };
        const auto name = names.find(type);
        return name != names.end() ? name->second : "unknown";
    }

    std::string dataFormatName(const AudioStreamBasicDescription& format)
    {
        std::string name;
        if (ZRAudioFormatService::name(format, name) == noErr)
            return name;
        const char* known = ZRAudioFormatService::formatName(format.mFormatID);
        return known ? known : "'" + fourCharacters(format.mFormatID) + "'";
    }

    // The layout in speaker names where the file gives them, else by the channel count.
    std::string layoutName(AudioFileID file, uint32_t channels)
    {
        ZRData bytes;
        if (ZRAudioFileService::channelLayout(file, bytes) == noErr && bytes.size() >= 12) {
            const auto* layout = reinterpret_cast<const AudioChannelLayout*>(bytes.data());
            static const char* const speakers[] = { "L", "R", "C", "LFE", "Ls", "Rs", "Lc", "Rc", "Cs", "Lsd", "Rsd",
                "Ts", "Vhl", "Vhc", "Vhr", "Rls", "Rlc", "Rrs" };
            // The layout tag that says "the bitmap holds the channels".
            constexpr uint32_t useBitmap = 1u << 16;
            if (layout->mChannelLayoutTag == useBitmap && layout->mChannelBitmap) {
                std::string names;
                for (uint32_t bit = 0; bit < std::size(speakers); ++bit)
                    if (layout->mChannelBitmap & (1u << bit))
                        names += (names.empty() ? "" : " ") + std::string(speakers[bit]);
                return names;
            }
        }
        switch (channels) {
        case 1:
            return "mono";
        case 2:
            return "stereo";
        default:
            return std::to_string(channels) + " channels";
        }
    }

    bool readInfo(const std::string& path, FileInfo& info, ZRErrorPtr* error)
    {
        const std::optional<std::string> readable = readablePath(path, error);
        if (!readable)
            return false;
        const std::string& location = *readable;
        std::unique_ptr<FileAudioSource> source = FileAudioSource::open(location, error);
        if (!source)
            return false;
        info.format = source->fileFormat();
        info.frames = source->frames().value_or(0);
        info.dataFormat = dataFormatName(info.format);

        AudioFileID file = nullptr;
        if (const OSStatus status = ZRAudioFileService::open(location, file); status != noErr) {
            if (error)
                *error = audioFileError(status, "Opening an audio file");
            return false;
        }
        AudioFileTypeID type = 0;
        ZRAudioFileService::fileFormat(file, type);
        info.container = containerName(type);
        ZRAudioFileService::packetCount(file, info.packets);
        ZRAudioFileService::maximumPacketSize(file, info.maximumPacketSize);
        ZRAudioFileService::infoDictionary(file, info.tags);
        info.channelLayout = layoutName(file, info.format.mChannelsPerFrame);
        ZRAudioFileService::close(file);

        struct stat status { };
        const double seconds = double(info.frames) / info.format.mSampleRate;
        if (::stat(location.c_str(), &status) == 0 && S_ISREG(status.st_mode) && seconds > 0)
            info.bitRate = double(status.st_size) * 8.0 / seconds;
        return true;
    }

    std::string infoJson(const std::string& path, const FileInfo& info)
    {
        JsonWriter json;
        json.beginObject();
        json.member("file", path);
        json.member("container", info.container);
        json.member("data_format", info.dataFormat);
        json.member("sample_rate", info.format.mSampleRate);
        json.member("channels", info.format.mChannelsPerFrame);
        json.member("channel_layout", info.channelLayout);
        if (info.format.mBitsPerChannel)
            json.member("bits_per_sample", info.format.mBitsPerChannel);
        json.member("frames", info.frames);
        json.member("duration_seconds", double(info.frames) / info.format.mSampleRate);
        json.member("bit_rate", std::round(info.bitRate));
        json.member("packets", info.packets);
        json.member("maximum_packet_size", info.maximumPacketSize);
        json.key("tags");
        json.beginObject();
        for (const auto& [key, value] : info.tags)
            json.member(key, value.stringValue());
        json.endObject();
        json.endObject();
        return json.take();
    }

    std::string infoText(const std::string& path, const FileInfo& info)
    {
        std::string text = path + "\n";
        char line[256];
        const auto row = [&](const char* name, const std::string& value) {
            std::snprintf(line, sizeof line, "  %-16s%s\n", name, value.c_str());
            text += line;
        };
        row("Container", info.container);
        row("Data format", info.dataFormat);
        row("Sample rate", std::to_string(int64_t(info.format.mSampleRate)) + " Hz");
        row("Channels", std::to_string(info.format.mChannelsPerFrame) + " (" + info.channelLayout + ")");
        row("Frames", std::to_string(info.frames));
        row("Duration", durationText(double(info.frames) / info.format.mSampleRate));
        std::snprintf(line, sizeof line, "%.0f kbit/s", info.bitRate / 1000.0);
        row("Bit rate", line);
        row("Packets",
            std::to_string(info.packets) + " of at most " + std::to_string(info.maximumPacketSize) + " bytes");
        for (const auto& [key, value] : info.tags)
            row((key + ":").c_str(), value.stringValue());
        return text;
    }

}

int infoCommand(const InfoOptions& options)
{
    const auto job = [&](const std::string& file) {
        FileOutcome outcome;
        FileInfo info;
        if (readInfo(file, info, &outcome.error))
            outcome.output = options.json ? infoJson(file, info) : infoText(file, info);
        return outcome;
    };
    return printFileReports(options.files, options.json, job);
}

}
