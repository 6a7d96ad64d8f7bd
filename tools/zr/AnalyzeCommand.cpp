#include "Analyzer.h"
#include "Commands.h"
#include "DurationText.h"
#include "FileJobs.h"
#include "JsonWriter.h"
#include "ProgressBar.h"

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace zr {

bool CommonOptions::progress() const noexcept { return !quiet && ProgressBar::standardErrorIsTerminal(); }

static double decibels(double amplitude) { return 20.0 * std::log10(amplitude); }

static void writeLevels(JsonWriter& json, const LevelStatistics& levels, bool basic)
{
    json.beginObject();
    json.member("peak_dbfs", decibels(levels.peak));
    json.member("rms_dbfs", decibels(levels.rms));
    json.member("aes17_rms_dbfs", decibels(levels.aes17Rms()));
    json.member("crest_factor", levels.crestFactor());
    json.member("crest_factor_db", decibels(levels.crestFactor()));
    json.member("dc_offset", levels.dcOffset);
    json.member("minimum", levels.minimum);
    json.member("maximum", levels.maximum);
    json.member("clipped_samples", levels.clippedSamples);
    if (!basic) {
        json.member("true_peak_dbfs", decibels(levels.truePeak));
        json.member("a_weighted_rms_dbfs", decibels(levels.aWeightedRms));
        json.member("b_weighted_rms_dbfs", decibels(levels.bWeightedRms));
        json.member("c_weighted_rms_dbfs", decibels(levels.cWeightedRms));
    }
    json.endObject();
}

static std::string analysisJson(const std::string& file, const AnalysisResult& result)
{
    JsonWriter json;
    json.beginObject();
    json.member("file", file);
    json.member("sample_rate", result.sampleRate);
    json.member("channels", result.channels);
    json.member("frames", result.frames);
    json.member("duration_seconds", double(result.frames) / result.sampleRate);
    json.key("overall");
    writeLevels(json, result.overall, result.basic);
    json.key("channel_levels");
    json.beginArray();
    for (const LevelStatistics& levels : result.perChannel)
        writeLevels(json, levels, result.basic);
    json.endArray();
    if (!result.basic) {
        json.member("integrated_lufs", result.integratedLufs);
        json.member("loudness_range_lu", result.loudnessRangeLu);
        json.member("max_momentary_lufs", result.maxMomentaryLufs);
        json.member("max_short_term_lufs", result.maxShortTermLufs);
        json.member("spectral_centroid_hz", result.spectralCentroidHz);
        json.member("spectral_rolloff_hz", result.spectralRolloffHz);
        json.member("pitch_hz", result.pitchHz);
    }
    json.endObject();
    return json.take();
}

static std::string number(double value, const char* format = "%.2f")
{
    if (!std::isfinite(value))
        return "-inf";
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

static std::string analysisText(const std::string& file, const AnalysisResult& result)
{
    std::string text;
    char line[256];
    std::snprintf(line, sizeof line, "%s: %.0f Hz, %u channel%s, %llu frames, %s\n", file.c_str(), result.sampleRate,
        result.channels, result.channels == 1 ? "" : "s", static_cast<unsigned long long>(result.frames),
        durationText(double(result.frames) / result.sampleRate).c_str());
    text += line;

    std::vector<const LevelStatistics*> columns;
    std::snprintf(line, sizeof line, "%-22s", "");
    text += line;
    for (uint32_t c = 0; c < result.channels; ++c) {
        std::snprintf(line, sizeof line, "%12s", ("Ch " + std::to_string(c + 1)).c_str());
        text += line;
        columns.push_back(&result.perChannel[c]);
    }
    if (result.channels > 1) {
        text += "     Overall";
        columns.push_back(&result.overall);
    }
    text += '\n';
    const auto row = [&](const char* name, auto value) {
        std::snprintf(line, sizeof line, "%-22s", name);
        text += line;
        for (const LevelStatistics* levels : columns) {
            std::snprintf(line, sizeof line, "%12s", value(*levels).c_str());
            text += line;
        }
        text += '\n';
    };
    row("Peak dBFS", [](const LevelStatistics& l) { return number(decibels(l.peak)); });
    if (!result.basic)
        row("True peak dBFS", [](const LevelStatistics& l) { return number(decibels(l.truePeak)); });
    row("RMS dBFS", [](const LevelStatistics& l) { return number(decibels(l.rms)); });
    row("AES17 RMS dBFS", [](const LevelStatistics& l) { return number(decibels(l.aes17Rms())); });
    row("Crest factor", [](const LevelStatistics& l) { return number(l.crestFactor()); });
    row("DC offset", [](const LevelStatistics& l) { return number(l.dcOffset, "%.6f"); });
    row("Clipped samples", [](const LevelStatistics& l) { return std::to_string(l.clippedSamples); });
    if (!result.basic) {
        row("A-weighted RMS dBFS", [](const LevelStatistics& l) { return number(decibels(l.aWeightedRms)); });
        row("B-weighted RMS dBFS", [](const LevelStatistics& l) { return number(decibels(l.bWeightedRms)); });
        row("C-weighted RMS dBFS", [](const LevelStatistics& l) { return number(decibels(l.cWeightedRms)); });
        const auto single = [&](const char* name, double value, const char* unit, const char* format = "%.1f") {
            std::snprintf(line, sizeof line, "%-22s%12s %s\n", name, number(value, format).c_str(), unit);
            text += line;
        };
        single("Integrated loudness", result.integratedLufs, "LUFS");
        single("Loudness range", result.loudnessRangeLu, "LU");
        single("Max momentary", result.maxMomentaryLufs, "LUFS");
        single("Max short-term", result.maxShortTermLufs, "LUFS");
        single("Spectral centroid", result.spectralCentroidHz, "Hz", "%.0f");
        single("Spectral roll-off", result.spectralRolloffHz, "Hz", "%.0f");
        single("Pitch", result.pitchHz, "Hz", "%.1f");
    }
    return text;
}

int analyzeCommand(const AnalyzeOptions& options)
{
    ProgressBar progress(options.common.progress(), 0, 44100.0);
    const auto job = [&](const std::string& file) {
        FileOutcome outcome;
        std::unique_ptr<AudioSource> source = AudioSource::open(file, options.common.format, &outcome.error);
        if (!source)
            return outcome;
        if (source->frames())
            progress.addTotal(*source->frames());
        std::unique_ptr<Analyzer> analyzer
            = Analyzer::analyzerWithFormat(source->sampleRate(), source->channels(), options.basic, &outcome.error);
        if (!analyzer)
            return outcome;
        // The basic statistics cost far less than reading: two threads read. The full analysis keeps both cores
        // busy itself.
        if (!readAll(
                *source, &progress, [&](const ZRNativeAudioBuffer& block) { analyzer->process(block); }, &outcome.error,
                options.basic ? 2 : 1))
            return outcome;
        const AnalysisResult result = analyzer->finish();
        outcome.output = options.json ? analysisJson(file, result) : analysisText(file, result);
        return outcome;
    };

    const int status = printFileReports(options.files, options.json, job, [&] { progress.finish(); });
    progress.finish();
    return status;
}

}
