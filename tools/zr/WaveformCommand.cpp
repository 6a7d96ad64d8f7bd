#include "Commands.h"
#include "FileJobs.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "ToolError.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace zr {

std::string outputType(const std::string& path, const std::string& type)
{
    std::string result = type;
    if (result.empty()) {
        const size_t dot = path.rfind('.');
        const size_t slash = path.rfind('/');
        if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
            result = path.substr(dot + 1);
    }
    std::transform(result.begin(), result.end(), result.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return result;
}

// The path of one resolution's file when a run writes several: "out.dat" becomes "out-256.dat".
static std::string pathForResolution(const std::string& path, const WaveformResolution& resolution, bool several)
{
    if (!several || path == "-")
        return path;
    const size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    const size_t insert = dot != std::string::npos && (slash == std::string::npos || dot > slash) ? dot : path.size();
    return path.substr(0, insert) + "-" + std::to_string(resolution.numerator) + path.substr(insert);
}

static FileOutcome runWaveform(const WaveformOptions& options, ProgressBar& progress)
{
    FileOutcome outcome;
    for (const std::string& output : options.outputs) {
        const std::string type = outputType(output, options.type);
        if (type != "png" && type != "dat" && type != "json") {
            outcome.error = toolError("Writing the output file",
                "the type of \"" + output + "\" is not known (give a .png, .dat or .json name, or --type)");
            return outcome;
        }
    }
    std::unique_ptr<AudioSource> source = AudioSource::open(options.input, options.common.format, &outcome.error);
    if (!source)
        return outcome;
    const std::optional<uint64_t> frames = source->frames();
    if (frames)
        progress.addTotal(*frames);

    // The resolutions of pictures and of data files: a width gives pictures exactly that many points and data
    // files the whole number of samples per point that fits.
    std::vector<WaveformResolution> pictures, data;
    if (options.width || (options.pixelsPerSecond.empty() && options.samplesPerPixel.empty())) {
        if (!frames) {
            outcome.error = toolError("Drawing the waveform",
                "the input's length is not known beforehand (give --pixels-per-second or --samples-per-pixel)");
            return outcome;
        }
        const uint32_t width = options.width ? options.width : 1800;
        pictures.push_back(WaveformResolution::forWidth(*frames, width));
        data.push_back(options.width ? WaveformResolution::forSamplesPerPixel((*frames + width - 1) / width)
                                     : WaveformResolution::forSamplesPerPixel(256));
    } else {
        for (const double pixels : options.pixelsPerSecond)
            data.push_back(WaveformResolution::forSamplesPerPixel(
                uint64_t(std::max(1.0, std::round(source->sampleRate() / pixels)))));
        for (const uint64_t samples : options.samplesPerPixel)
            data.push_back(WaveformResolution::forSamplesPerPixel(samples));
        data.erase(std::unique(data.begin(), data.end()), data.end());
        pictures = data;
    }
    // Only the resolutions some output needs are computed.
    const bool anyPicture = std::any_of(options.outputs.begin(), options.outputs.end(),
        [&](const std::string& output) { return outputType(output, options.type) == "png"; });
    const bool anyData = std::any_of(options.outputs.begin(), options.outputs.end(),
        [&](const std::string& output) { return outputType(output, options.type) != "png"; });
    std::vector<WaveformResolution> all;
    if (anyData)
        all = data;
    if (anyPicture)
        for (const WaveformResolution& resolution : pictures)
            if (std::find(all.begin(), all.end(), resolution) == all.end())
                all.push_back(resolution);

    // The overviews cost far less than reading: two threads read.
    WaveformBuilder builder(source->channels(), all, frames);
    if (!readAll(
            *source, &progress, [&](const ZRNativeAudioBuffer& block) { builder.process(block); }, &outcome.error, 2))
        return outcome;
    const std::vector<WaveformLevel> levels = builder.finish();
    const uint64_t length = progress.done();
    const auto levelFor = [&](const WaveformResolution& resolution) -> const WaveformLevel& {
        return *std::find_if(
            levels.begin(), levels.end(), [&](const WaveformLevel& level) { return level.resolution == resolution; });
    };

    const uint32_t rate = uint32_t(std::lround(source->sampleRate()));
    for (const std::string& output : options.outputs) {
        const std::string type = outputType(output, options.type);
        if (type == "json" && options.floatData) {
            if (!writeOutputFile(output, waveformFloatJson(levels, source->sampleRate(), length), &outcome.error))
                return outcome;
            continue;
        }
        const std::vector<WaveformResolution>& resolutions = type == "png" ? pictures : data;
        for (const WaveformResolution& resolution : resolutions) {
            const WaveformLevel& level = levelFor(resolution);
            std::optional<std::string> bytes;
            if (type == "png")
                bytes = waveformPng(level, options.picture, &outcome.error);
            else if (type == "dat")
                bytes = waveformDat(level, rate, options.bits);
            else
                bytes = waveformDataJson(level, rate, options.bits);
            if (!bytes
                || !writeOutputFile(
                    pathForResolution(output, resolution, resolutions.size() > 1), *bytes, &outcome.error))
                return outcome;
        }
    }
    return outcome;
}

int waveformCommand(const WaveformOptions& options)
{
    return runSingleFile(options.input, options.common.progress(),
        [&](ProgressBar& progress) { return runWaveform(options, progress); });
}

}
