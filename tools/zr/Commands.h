#pragma once

#include "AudioSource.h"
#include "WaveformWriter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zr {

// What every command shares.
struct CommonOptions {
    SourceFormat format;
    bool quiet = false;
    // Whether the progress bar may be drawn: standard error is a terminal and -q was not given.
    bool progress() const noexcept;
};

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

struct AnalyzeOptions {
    CommonOptions common;
    std::vector<std::string> files;
    bool json = false;
    bool basic = false;
};

struct ConvertOptions {
    CommonOptions common;
    std::string input;
    std::string output;
    // The container, when the output's name does not say it: "wav", "aiff", "caf", "m4a", "mp3", …
    std::string type;
    // The data format: "pcm", "aac", "alac", "mp3" or "ac3"; the container's usual one when empty.
    std::string format;
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
    // kbit/s of the lossy encoders.
    uint32_t bitRate = 0;
    double gainDb = 0.0;
    // "peak" or "loudness", with the target in normalizeTarget (dBFS or LUFS).
    std::string normalize;
    double normalizeTarget = 0.0;
    double fadeInSeconds = 0.0;
    double fadeOutSeconds = 0.0;
    std::string filter;
    // "key=value"
    std::vector<std::string> tags;
};

struct WaveformOptions {
    CommonOptions common;
    std::string input;
    std::vector<std::string> outputs;
    // Given for "-" outputs: "png", "dat" or "json".
    std::string type;
    std::vector<double> pixelsPerSecond;
    std::vector<uint64_t> samplesPerPixel;
    uint32_t width = 0;
    uint32_t bits = 16;
    // The JSON output in the tool's own form (float minimum, maximum and RMS, every resolution).
    bool floatData = false;
    WaveformPicture picture;
};

struct SpectrumOptions {
    CommonOptions common;
    std::string input;
    std::string output;
    std::string type;
    bool spectrogram = false;
    std::string window = "hann";
    // log2 of the FFT length.
    uint32_t resolution = 12;
    uint32_t width = 0;
    uint32_t height = 0;
    double floorDb = -120.0;
};

int infoCommand(const InfoOptions& options);
int analyzeCommand(const AnalyzeOptions& options);
int convertCommand(const ConvertOptions& options);
int waveformCommand(const WaveformOptions& options);
int spectrumCommand(const SpectrumOptions& options);

// The keys of a map of names, in order.
template <typename Map> std::vector<std::string> namesOf(const Map& map)
{
    std::vector<std::string> names;
    for (const auto& entry : map)
        names.push_back(entry.first);
    return names;
}

// The names --window takes.
std::vector<std::string> spectrumWindowNames();

// The names --format and --type of convert take.
std::vector<std::string> convertFormatNames();
std::vector<std::string> convertTypeNames();

// The information-dictionary key of a tag that --tag names by its catalogue key or title ("trackNumber" or
// "Track Number" give "track number"); none for names outside the catalogue.
std::optional<std::string> tagInfoKey(const std::string& name);

// The type of an output: the type given, else the path's extension in lower case ("" for none).
std::string outputType(const std::string& path, const std::string& type);

}
