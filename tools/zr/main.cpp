#include "Commands.h"
#include "SignalChain.h"

#include <CLI/CLI.hpp>
#include <QGuiApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace zr;

// "RATE,CHANNELS" of raw input.
static std::string parseRaw(const std::string& text, SourceFormat& format)
{
    unsigned rate = 0, channels = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%u,%u%c", &rate, &channels, &rest) != 2 || rate == 0 || channels == 0
        || channels > 64)
        return "--raw takes RATE,CHANNELS, for example 44100,2";
    format.rawRate = rate;
    format.rawChannels = channels;
    return {};
}

static void addCommonOptions(CLI::App& command, CommonOptions& common)
{
    command
        .add_option_function<std::string>(
            "--raw",
            [&common](const std::string& text) {
                if (std::string problem = parseRaw(text, common.format); !problem.empty())
                    throw CLI::ValidationError(problem);
            },
            "Read raw interleaved 32-bit float samples at this rate and channel count")
        ->type_name("RATE,CHANNELS");
    command.add_flag("-q,--quiet", common.quiet, "Draw no progress bar");
}

int main(int argc, char** argv)
{
    // Writing past a file-size limit then fails with EFBIG like any other write, instead of killing the tool.
    std::signal(SIGXFSZ, SIG_IGN);

    CLI::App app("Analyses, draws and converts audio files.", "zr");
    app.set_version_flag("--version", std::string("zr ") + ZR_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    // A usage error is one line, like a failed file's.
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("zr: ") + error.what() + " (see zr --help)\n";
    });

    InfoOptions info;
    CLI::App* infoCommandLine = app.add_subcommand("info", "Container, format, length and tags of audio files");
    infoCommandLine->add_option("files", info.files, "Audio files (- for standard input)")->required();
    infoCommandLine->add_flag("--json", info.json, "Write one JSON document");

    AnalyzeOptions analyze;
    CLI::App* analyzeCommandLine = app.add_subcommand("analyze", "Levels, loudness and spectrum of audio files");
    analyzeCommandLine->add_option("files", analyze.files, "Audio files (- for standard input)")->required();
    analyzeCommandLine->add_flag("--json", analyze.json, "Write one JSON document");
    analyzeCommandLine->add_flag("--basic", analyze.basic, "Only peak, RMS, DC offset, crest factor and clipping");
    addCommonOptions(*analyzeCommandLine, analyze.common);

    ConvertOptions convert;
    CLI::App* convertCommandLine = app.add_subcommand("convert", "Any readable file to any writable format");
    convertCommandLine->add_option("input", convert.input, "Audio file (- for standard input)")->required();
    convertCommandLine->add_option("output", convert.output, "Output file (- for standard output with --type)")
        ->required();
    convertCommandLine->add_option("--type", convert.type, "Container when the name has none")
        ->check(CLI::IsMember(convertTypeNames()));
    convertCommandLine->add_option("--format", convert.format, "Data format (default: the container's usual one)")
        ->check(CLI::IsMember(convertFormatNames()));
    convertCommandLine->add_option("--rate", convert.rate, "Sample rate in Hz")->check(CLI::Range(1000u, 768000u));
    convertCommandLine->add_option("--channels", convert.channels, "Channels, mixed down or up")
        ->check(CLI::Range(1u, 64u));
    convertCommandLine->add_option("--bits", convert.bits, "Bits per sample of PCM (32 is float) or Apple Lossless")
        ->check(CLI::IsMember({ 8u, 16u, 20u, 24u, 32u }));
    convertCommandLine->add_option("--bitrate", convert.bitRate, "kbit/s of AAC, MP3 or AC-3")
        ->check(CLI::Range(8u, 640u));
    CLI::Option* gain = convertCommandLine->add_option("--gain", convert.gainDb, "Gain in dB");
    convertCommandLine
        ->add_option_function<std::string>(
            "--normalize",
            [&convert](const std::string& text) {
                char kind[16] = {};
                double target = 0.0;
                char rest = 0;
                if (std::sscanf(text.c_str(), "%15[a-z]:%lf%c", kind, &target, &rest) != 2
                    || (std::string(kind) != "peak" && std::string(kind) != "loudness") || target > 0.0)
                    throw CLI::ValidationError(
                        "--normalize takes peak:DBFS or loudness:LUFS, for example loudness:-23");
                convert.normalize = kind;
                convert.normalizeTarget = target;
            },
            "Bring the peak (dBFS) or the integrated loudness (LUFS) to a target: peak:-1, loudness:-23")
        ->excludes(gain);
    convertCommandLine->add_option("--fade-in", convert.fadeInSeconds, "Fade-in in seconds")
        ->check(CLI::NonNegativeNumber);
    convertCommandLine->add_option("--fade-out", convert.fadeOutSeconds, "Fade-out in seconds")
        ->check(CLI::NonNegativeNumber);
    convertCommandLine
        ->add_option("--filter", convert.filter, "a, b, c, dc, lowpass:HZ, highpass:HZ or bandpass:HZ[:OCTAVES]")
        ->check(CLI::Validator(
            [](std::string& text) {
                return SignalChain::isFilter(text) ? std::string() : "unknown filter \"" + text + "\"";
            },
            "FILTER"));
    convertCommandLine
        ->add_option("--tag", convert.tags, "Set a tag by its catalogue name or title: --tag title=Take 1")
        ->check(CLI::Validator(
            [](std::string& text) {
                const size_t equals = text.find('=');
                if (equals == 0 || equals == std::string::npos)
                    return std::string("a tag is NAME=VALUE");
                return tagInfoKey(text.substr(0, equals))
                    ? std::string()
                    : "the metadata catalogue has no tag \"" + text.substr(0, equals) + "\"";
            },
            "NAME=VALUE"));
    addCommonOptions(*convertCommandLine, convert.common);

    WaveformOptions waveform;
    CLI::App* waveformCommandLine = app.add_subcommand("waveform", "Waveform overviews as PNG, JSON or .dat");
    waveformCommandLine->add_option("input", waveform.input, "Audio file (- for standard input)")->required();
    waveformCommandLine
        ->add_option("-o,--output", waveform.outputs, "Output file (.png, .dat, .json; - for standard output)")
        ->required();
    waveformCommandLine->add_option("--type", waveform.type, "Output type when the name has none")
        ->check(CLI::IsMember({ "png", "dat", "json" }));
    CLI::Option* pixels = waveformCommandLine
                              ->add_option("--pixels-per-second", waveform.pixelsPerSecond,
                                  "Zoom; give several for several resolutions in one pass")
                              ->check(CLI::PositiveNumber);
    CLI::Option* samples = waveformCommandLine
                               ->add_option("--samples-per-pixel", waveform.samplesPerPixel,
                                   "Zoom in samples per point; may be given several times")
                               ->check(CLI::PositiveNumber);
    waveformCommandLine->add_option("--width", waveform.width, "Points across the whole file (default 1800)")
        ->check(CLI::Range(1u, 100000u))
        ->excludes(pixels)
        ->excludes(samples);
    waveformCommandLine->add_option("--height", waveform.picture.height, "Picture height (default 300)")
        ->check(CLI::Range(1u, 20000u));
    waveformCommandLine->add_option("--bits", waveform.bits, "Bits per point of .dat and data JSON")
        ->check(CLI::IsMember({ 8u, 16u }));
    waveformCommandLine->add_flag("--float", waveform.floatData, "JSON in float peak and RMS, every resolution");
    waveformCommandLine->add_flag("--combined", waveform.picture.combined, "One lane for all channels");
    waveformCommandLine->add_option("--color", waveform.picture.waveColor, "Peak colour (#rrggbb)");
    waveformCommandLine->add_option("--rms-color", waveform.picture.rmsColor, "RMS colour (#rrggbb)");
    waveformCommandLine->add_option("--background", waveform.picture.backgroundColor, "Background colour");
    addCommonOptions(*waveformCommandLine, waveform.common);

    SpectrumOptions spectrum;
    CLI::App* spectrumCommandLine = app.add_subcommand("spectrum", "Average spectrum (PNG or CSV) or spectrogram");
    spectrumCommandLine->add_option("input", spectrum.input, "Audio file (- for standard input)")->required();
    spectrumCommandLine->add_option("-o,--output", spectrum.output, "Output file (.png or .csv; - for standard output)")
        ->required();
    spectrumCommandLine->add_option("--type", spectrum.type, "Output type when the name has none")
        ->check(CLI::IsMember({ "png", "csv" }));
    spectrumCommandLine->add_flag("--spectrogram", spectrum.spectrogram, "A time-frequency picture");
    spectrumCommandLine->add_option("--window", spectrum.window, "Window function (default hann)")
        ->check(CLI::IsMember(spectrumWindowNames()));
    spectrumCommandLine->add_option("--resolution", spectrum.resolution, "log2 of the FFT length (default 12)")
        ->check(CLI::Range(4u, 16u));
    spectrumCommandLine->add_option("--width", spectrum.width, "Picture width")->check(CLI::Range(1u, 20000u));
    spectrumCommandLine->add_option("--height", spectrum.height, "Picture height")->check(CLI::Range(2u, 20000u));
    spectrumCommandLine->add_option("--floor", spectrum.floorDb, "Lowest level shown, in dBFS (default -120)")
        ->check(CLI::Range(-300.0, -1.0));
    addCommonOptions(*spectrumCommandLine, spectrum.common);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ParseError& failure) {
        app.exit(failure);
        return 2;
    }

    if (infoCommandLine->parsed())
        return infoCommand(info);
    if (analyzeCommandLine->parsed())
        return analyzeCommand(analyze);
    if (convertCommandLine->parsed())
        return convertCommand(convert);

    // Pictures are drawn off screen: no display is needed. Qt's own notes (about a missing runtime folder, say)
    // are not the tool's diagnostics and stay off standard error.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    int qtArgc = 1;
    QGuiApplication application(qtArgc, argv);
    if (waveformCommandLine->parsed())
        return waveformCommand(waveform);
    return spectrumCommand(spectrum);
}
