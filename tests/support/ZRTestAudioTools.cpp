#include "support/ZRTestAudioTools.h"

#include <zrbase/codec/ZRExtCoreAudioFile.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numbers>

bool ZRTestRun(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

bool ZRTestMakeFile(const std::string& command, const std::string& path)
{
    std::string line = command;
    line.replace(line.find("%s"), 2, "'" + path + "'");
    return ZRTestRun(line);
}

std::string ZRTestOutputOf(const std::string& command)
{
    std::string output;
    if (FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r")) {
        char chunk[4096];
        size_t got = 0;
        while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0)
            output.append(chunk, got);
        pclose(pipe);
    }
    return output;
}

std::string ZRTestProbe(const std::string& path, const std::string& entry)
{
    const bool tag = entry.starts_with("format_tags=");
    const std::string selection
        = tag ? "-show_entries '" + entry + "'" : "-select_streams a:0 -show_entries stream=" + entry;
    std::string value = ZRTestOutputOf("ffprobe -v error " + selection + " -of default=nw=1:nk=1 '" + path + "'");
    while (!value.empty() && (value.back() == '\n' || value.back() == '\r'))
        value.pop_back();
    return value;
}

std::vector<std::vector<float>> ZRTestDecodeWithFFmpeg(const std::string& path, uint32_t channels)
{
    const std::string raw = ZRTestOutputOf("ffmpeg -v error -i '" + path + "' -f f32le -acodec pcm_f32le -");
    std::vector<std::vector<float>> result(channels);
    const size_t frames = raw.size() / (4 * channels);
    for (size_t frame = 0; frame < frames; ++frame) {
        for (uint32_t channel = 0; channel < channels; ++channel) {
            float value;
            std::memcpy(&value, raw.data() + (frame * channels + channel) * 4, 4);
            result[channel].push_back(value);
        }
    }
    return result;
}

std::vector<std::vector<float>> ZRTestReadWithExtCoreAudioFile(const std::string& path, uint32_t block)
{
    auto file = ZRExtCoreAudioFile::openForReadingWithPath(path);
    if (!file)
        return {};
    const uint32_t channels = file->format().channels();
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, block);
    std::vector<std::vector<float>> result(channels);
    uint32_t frames = 0;
    while (file->readBuffer(*buffer, &frames) && frames > 0) {
        for (uint32_t channel = 0; channel < channels; ++channel)
            result[channel].insert(result[channel].end(), buffer->channel(channel), buffer->channel(channel) + frames);
    }
    return result;
}

float ZRTestSignal(uint32_t channel, uint64_t frame, double rate)
{
    static constexpr double frequencies[] = { 440, 660, 880 };
    static constexpr double levels[] = { 0.5, 0.25, 0.125 };
    const uint32_t index = std::min<uint32_t>(channel, 2);
    const double value = levels[index] * std::sin(2 * std::numbers::pi * frequencies[index] * double(frame) / rate);
    return float(std::round(value * 32768) / 32768);
}

double ZRTestSNR(const std::vector<float>& expected, const std::vector<float>& actual)
{
    double signal = 0;
    double noise = 0;
    for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
        signal += double(expected[i]) * expected[i];
        noise += (double(actual[i]) - expected[i]) * (double(actual[i]) - expected[i]);
    }
    return noise == 0 ? 1000 : 10 * std::log10(signal / noise);
}
