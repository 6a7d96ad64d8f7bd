#include <zrbase/host/audio/ZRSoundDesignerIIPrivate.h>

#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRFFmpegPrivate.h>
#include <zrbase/host/system/ZRFinderInfo.h>
#include <zrbase/host/system/ZRResourceFork.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <string_view>

namespace {

constexpr uint32_t stringType = ZRFourCharCode("STR ");
constexpr uint32_t maximumChannels = 65535;

struct Field {
    int16_t id;
    const char* name;
};
constexpr Field sampleSize { 1000, "sample-size" };
constexpr Field sampleRate { 1001, "sample-rate" };
constexpr Field channelCount { 1002, "channels" };

enum class Text { Missing, Invalid, Number };

// The number a 'STR ' resource of that name holds: its Pascal string as decimal text, blanks around it allowed.
Text numberOfField(ZRResourceMap& map, const Field& field, double& number)
{
    for (const ZRResourceMap::Resource* resource : map.resourcesOfType(stringType)) {
        if (resource->name != field.name)
            continue;
        const ZRData& bytes = *resource->handle;
        if (bytes.empty() || bytes[0] >= bytes.size())
            return Text::Invalid;
        std::string_view text(reinterpret_cast<const char*>(bytes.data()) + 1, bytes[0]);
        const size_t first = text.find_first_not_of(" \t");
        if (first == std::string_view::npos)
            return Text::Invalid;
        text = text.substr(first, text.find_last_not_of(" \t") + 1 - first);
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        return error == std::errc() && end == text.data() + text.size() && std::isfinite(number) ? Text::Number
                                                                                                 : Text::Invalid;
    }
    return Text::Missing;
}

void addField(ZRResourceMap& map, const Field& field, std::string_view text)
{
    ZRData bytes(1 + text.size(), uint8_t(text.size()));
    std::copy(text.begin(), text.end(), bytes.begin() + 1);
    map.add({ field.id, stringType, std::string(field.name), 0, std::make_shared<ZRData>(std::move(bytes)) });
}

} // namespace

OSStatus ZRSoundDesignerIIFormatOfFile(const std::string& path, std::optional<AudioStreamBasicDescription>& format)
{
    format.reset();
    const std::optional<ZRData> fork = ZRResourceFork::read(path);
    std::optional<ZRResourceMap> map = fork ? ZRResourceMap::mapWithData(*fork) : std::nullopt;
    if (!map)
        return noErr;
    double size = 0, rate = 0, channels = 0;
    const std::array<Text, 3> texts { numberOfField(*map, sampleSize, size), numberOfField(*map, sampleRate, rate),
        numberOfField(*map, channelCount, channels) };
    if (std::all_of(texts.begin(), texts.end(), [](Text text) { return text == Text::Missing; }))
        return noErr;
    if (std::any_of(texts.begin(), texts.end(), [](Text text) { return text != Text::Number; }) || rate < 1
        || rate > INT_MAX || channels < 1 || channels != std::floor(channels) || size < 1 || size != std::floor(size))
        return kAudioFileInvalidFileError;
    if (size > 4 || channels > maximumChannels)
        return kAudioFileUnsupportedDataFormatError;
    const uint32_t bytes = uint32_t(size) * uint32_t(channels);
    format = AudioStreamBasicDescription { rate, kAudioFormatLinearPCM,
        kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsPacked, bytes, 1, bytes,
        uint32_t(channels), uint32_t(size) * 8, 0 };
    return noErr;
}

const char* ZRSoundDesignerIIMuxer(const AudioStreamBasicDescription& format) noexcept
{
    if (format.mFormatFlags & kAudioFormatFlagIsNonInterleaved)
        return nullptr;
    switch (ZRCodecIDForDescription(format)) {
    case AV_CODEC_ID_PCM_S8:
        return "s8";
    case AV_CODEC_ID_PCM_S16BE:
        return "s16be";
    case AV_CODEC_ID_PCM_S24BE:
        return "s24be";
    case AV_CODEC_ID_PCM_S32BE:
        return "s32be";
    default:
        return nullptr;
    }
}

bool ZRSoundDesignerIIWriteFork(const std::string& path, const AudioStreamBasicDescription& format, int& errorNumber)
{
    errorNumber = EOVERFLOW;
    ZRResourceMap map;
    addField(map, sampleSize, std::to_string(format.mBitsPerChannel / 8));
    std::array<char, 32> rate {};
    const auto written = std::to_chars(rate.begin(), rate.end(), format.mSampleRate, std::chars_format::fixed, 6);
    addField(map, sampleRate, std::string_view(rate.data(), written.ptr));
    addField(map, channelCount, std::to_string(format.mChannelsPerFrame));
    const std::optional<ZRData> fork = map.data();
    if (!fork || !ZRResourceFork::write(path, *fork, &errorNumber))
        return false;
    ZRFinderInfo finder = ZRFinderInfo::infoAtPath(path);
    finder.setTypeCode(kAudioFileSoundDesigner2Type);
    finder.writeToPath(path);
    return true;
}
