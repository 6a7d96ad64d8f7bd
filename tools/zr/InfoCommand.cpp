#include "Commands.h"
#include "DurationText.h"
#include "FileAudioSource.h"
#include "FileJobs.h"
#include "JsonWriter.h"

#include <zrbase/audio/ZRChannelLayout.h>
#include <zrbase/codec/ZRCoreAudioFile.h>
#include <zrbase/codec/ZRMetadata.h>

#include <climits>
#include <cmath>
#include <cstdio>

namespace zr {

namespace {

    // A tag with its place in the metadata catalogue.
    struct Tag {
        // The key the file stores it under ("track number").
        std::string rawKey;
        // The catalogue's key and title ("trackNumber", "Track Number"); none for tags outside the catalogue.
        std::optional<std::string> key;
        std::optional<std::string> title;
        std::string value;
    };

    struct FileInfo {
        std::string container;
        std::string dataFormat;
        ZRAudioStreamDescription format;
        std::string channelLayout;
        uint64_t frames = 0;
        uint64_t packets = 0;
        uint32_t maximumPacketSize = 0;
        double bitRate = 0.0;
        std::vector<Tag> tags;
    };

    std::string dataFormatName(const ZRAudioStreamDescription& format)
    {
        ZRErrorPtr ignored;
        return format.name(&ignored).value_or(format.formatName());
    }

    // The layout in speaker names where the file gives them, else by the channel count.
    std::string layoutName(const ZRChannelLayout* channelLayout, uint32_t channels)
    {
        // The layout tag that says "the bitmap holds the channels".
        constexpr uint32_t useBitmap = 1u << 16;
        if (const AudioChannelLayout* layout = channelLayout ? channelLayout->layout() : nullptr;
            layout && layout->mChannelLayoutTag == useBitmap && layout->mChannelBitmap) {
            static const char* const speakers[] = { "L", "R", "C", "LFE", "Ls", "Rs", "Lc", "Rc", "Cs", "Lsd", "Rsd",
                "Ts", "Vhl", "Vhc", "Vhr", "Rls", "Rlc", "Rrs" };
            std::string names;
            for (uint32_t bit = 0; bit < std::size(speakers); ++bit)
                if (layout->mChannelBitmap & (1u << bit))
                    names += (names.empty() ? "" : " ") + std::string(speakers[bit]);
            return names;
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

    // The file's tags, those of the catalogue first in its order, then the others by key.
    std::vector<Tag> catalogueTags(const ZRDictionary& properties)
    {
        std::vector<Tag> tags;
        for (const std::string& key : ZRMetadata::keysForCategoryMask(UINT32_MAX)) {
            const std::optional<std::string> rawKey = ZRMetadata::infoDictionaryFormatKeyForKey(key);
            if (const auto entry = rawKey ? properties.find(*rawKey) : properties.end(); entry != properties.end())
                tags.push_back({ *rawKey, key, ZRMetadata::titleForKey(key), entry->second.stringValue() });
        }
        for (const auto& [rawKey, value] : properties)
            if (!ZRMetadata::keyForInfoDictionaryFormatKey(rawKey))
                tags.push_back({ rawKey, std::nullopt, std::nullopt, value.stringValue() });
        return tags;
    }

    bool readInfo(const std::string& path, FileInfo& info, ZRErrorPtr* error)
    {
        std::unique_ptr<FileAudioSource> source = FileAudioSource::open(path, error);
        if (!source)
            return false;
        std::unique_ptr<ZRCoreAudioFile> file = source->containerFile(error);
        if (!file)
            return false;
        info.format = source->fileFormat();
        info.frames = source->frames().value_or(0);
        info.dataFormat = dataFormatName(info.format);
        info.container = file->fileFormat();
        info.packets = file->numberOfPackets();
        info.maximumPacketSize = file->maximumPacketSize();
        info.channelLayout = layoutName(file->channelLayout().get(), info.format.channels());
        if (const std::optional<ZRDictionary> properties = file->properties())
            info.tags = catalogueTags(*properties);

        const double seconds = double(info.frames) / info.format.rate();
        if (seconds > 0)
            info.bitRate = double(source->byteSize()) * 8.0 / seconds;
        return true;
    }

    std::string infoJson(const std::string& path, const FileInfo& info)
    {
        JsonWriter json;
        json.beginObject();
        json.member("file", path);
        json.member("container", info.container);
        json.member("data_format", info.dataFormat);
        json.member("sample_rate", info.format.rate());
        json.member("channels", info.format.channels());
        json.member("channel_layout", info.channelLayout);
        if (info.format.range())
            json.member("bits_per_sample", info.format.range());
        json.member("frames", info.frames);
        json.member("duration_seconds", double(info.frames) / info.format.rate());
        json.member("bit_rate", std::round(info.bitRate));
        json.member("packets", info.packets);
        json.member("maximum_packet_size", info.maximumPacketSize);
        json.key("tags");
        json.beginArray();
        for (const Tag& tag : info.tags) {
            json.beginObject();
            json.member("key", tag.rawKey);
            // Tags outside the catalogue have neither.
            for (const auto& [name, text] : { std::pair { "catalogue_key", &tag.key }, { "title", &tag.title } }) {
                json.key(name);
                *text ? json.value(**text) : json.null();
            }
            json.member("value", tag.value);
            json.endObject();
        }
        json.endArray();
        json.endObject();
        return json.take();
    }

    std::string infoText(const std::string& path, const FileInfo& info)
    {
        std::string text = path + "\n";
        char line[256];
        // Names longer than the column keep a space before their value.
        const auto row = [&](const std::string& name, const std::string& value) {
            text += "  " + name + std::string(name.size() < 16 ? 16 - name.size() : 1, ' ') + value + "\n";
        };
        row("Container", info.container);
        row("Data format", info.dataFormat);
        row("Sample rate", std::to_string(int64_t(info.format.rate())) + " Hz");
        row("Channels", std::to_string(info.format.channels()) + " (" + info.channelLayout + ")");
        row("Frames", std::to_string(info.frames));
        row("Duration", durationText(double(info.frames) / info.format.rate()));
        std::snprintf(line, sizeof line, "%.0f kbit/s", info.bitRate / 1000.0);
        row("Bit rate", line);
        row("Packets",
            std::to_string(info.packets) + " of at most " + std::to_string(info.maximumPacketSize) + " bytes");
        for (const Tag& tag : info.tags)
            row(tag.title.value_or(tag.rawKey) + ":", tag.value);
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
