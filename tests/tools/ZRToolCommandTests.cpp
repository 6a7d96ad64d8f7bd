#include "ZRToolTestSupport.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace {

// A signal made by sox at test time, as a 16-bit WAVE for the reference tools and as the raw floats of the very
// same samples for zr.
struct Signal {
    std::string wave;
    std::string raw;
    std::string rawFormat;
};

Signal makeSignal(
    const std::string& folder, const std::string& name, int rate, int channels, const std::string& effects)
{
    Signal signal { folder + "/" + name + ".wav", folder + "/" + name + ".f32",
        std::to_string(rate) + "," + std::to_string(channels) };
    // Without dither, so that the reference tools and zr read exactly the synthesised samples.
    const ZRToolRun made = ZRToolRunShell("sox -D -n -r " + std::to_string(rate) + " -c " + std::to_string(channels)
        + " -b 16 " + ZRToolQuote(signal.wave) + " " + effects + " && sox " + ZRToolQuote(signal.wave) + " -t f32 "
        + ZRToolQuote(signal.raw));
    EXPECT_EQ(made.status, 0) << made.errors;
    return signal;
}

QJsonDocument parse(const std::string& text)
{
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << text.substr(0, 200);
    return document;
}

QJsonObject analyzeJson(const Signal& signal, bool basic = false)
{
    std::vector<std::string> arguments { "analyze", "--json", "--raw", signal.rawFormat, signal.raw };
    if (basic)
        arguments.push_back("--basic");
    const ZRToolRun run = ZRToolRunZr(arguments);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return parse(run.output).object();
}

// ffmpeg's EBU R128 summary: integrated loudness and true peak.
std::pair<double, double> ffmpegLoudness(const std::string& file)
{
    const ZRToolRun run
        = ZRToolRunShell("ffmpeg -nostats -hide_banner -i " + ZRToolQuote(file) + " -af ebur128=peak=true -f null -");
    const size_t summary = run.errors.rfind("Summary:");
    std::istringstream lines(run.errors.substr(summary == std::string::npos ? 0 : summary));
    std::string line;
    double integrated = NAN, peak = NAN;
    while (std::getline(lines, line)) {
        if (line.find("I:") != std::string::npos)
            integrated = std::stod(line.substr(line.find("I:") + 2));
        if (line.find("Peak:") != std::string::npos)
            peak = std::stod(line.substr(line.find("Peak:") + 5));
    }
    return { integrated, peak };
}

std::vector<std::string> filesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}

TEST(ZRToolCommand, analyzeAgreesWithSoxStatsPerChannel)
{
    const std::string folder = ZRToolScratch("analyzeSox");
    // Left: a sine with a DC offset; right: quieter pink noise. Different channels catch mixed-up columns.
    const Signal signal
        = makeSignal(folder, "mixed", 44100, 2, "synth 5 sine 440 pinknoise remix 1v0.5,2v0 2v0.2 dcshift 0.05");
    const QJsonObject result = analyzeJson(signal);
    EXPECT_EQ(result["sample_rate"].toDouble(), 44100.0);
    EXPECT_EQ(result["channels"].toInt(), 2);
    EXPECT_EQ(result["frames"].toInt(), 220500);
    EXPECT_NEAR(result["duration_seconds"].toDouble(), 5.0, 1e-9);

    const QJsonArray channels = result["channel_levels"].toArray();
    ASSERT_EQ(channels.size(), 2);
    for (int c = 0; c < 2; ++c) {
        const QJsonObject levels = channels[c].toObject();
        SCOPED_TRACE(c);
        // sox prints two decimals of dB: agreement to its rounding.
        EXPECT_NEAR(levels["peak_dbfs"].toDouble(), ZRToolSoxStat(signal.wave, "Pk lev dB", c + 1), 0.006);
        EXPECT_NEAR(levels["rms_dbfs"].toDouble(), ZRToolSoxStat(signal.wave, "RMS lev dB", c + 1), 0.006);
        EXPECT_NEAR(levels["dc_offset"].toDouble(), ZRToolSoxStat(signal.wave, "DC offset", c + 1), 6e-6);
        EXPECT_NEAR(levels["crest_factor"].toDouble(), ZRToolSoxStat(signal.wave, "Crest factor", c + 1), 0.006);
        EXPECT_NEAR(levels["aes17_rms_dbfs"].toDouble(), levels["rms_dbfs"].toDouble() + 3.0103, 1e-3);
        EXPECT_GE(levels["true_peak_dbfs"].toDouble(), levels["peak_dbfs"].toDouble());
    }
    EXPECT_NEAR(result["overall"].toObject()["peak_dbfs"].toDouble(), ZRToolSoxStat(signal.wave, "Pk lev dB"), 0.006);

    // The basic analysis gives the same statistics and nothing else.
    const QJsonObject basic = analyzeJson(signal, true);
    EXPECT_EQ(basic["channel_levels"].toArray()[1].toObject()["rms_dbfs"], channels[1].toObject()["rms_dbfs"]);
    EXPECT_FALSE(basic.contains("integrated_lufs"));
    EXPECT_FALSE(basic["overall"].toObject().contains("true_peak_dbfs"));
}

TEST(ZRToolCommand, loudnessOfSinesAndSpeechAgreesWithFfmpeg)
{
    const std::string folder = ZRToolScratch("loudness");
    // A 1 kHz sine peaking at -23 dBFS in both channels reads -23 LUFS, and 10 dB lower reads 10 LU lower.
    for (const int level : { -23, -33 }) {
        const Signal sine = makeSignal(
            folder, "sine" + std::to_string(-level), 48000, 2, "synth 20 sine 1000 gain " + std::to_string(level));
        const QJsonObject result = analyzeJson(sine);
        EXPECT_NEAR(result["integrated_lufs"].toDouble(), level, 0.1);
        EXPECT_NEAR(result["loudness_range_lu"].toDouble(), 0.0, 0.1);
        EXPECT_NEAR(result["max_momentary_lufs"].toDouble(), level, 0.1);
        EXPECT_NEAR(result["max_short_term_lufs"].toDouble(), level, 0.1);
        // The A-weighting passes 1 kHz at about 0 dB; B and C likewise.
        const QJsonObject overall = result["overall"].toObject();
        for (const char* key : { "a_weighted_rms_dbfs", "b_weighted_rms_dbfs", "c_weighted_rms_dbfs" })
            EXPECT_NEAR(overall[key].toDouble(), overall["rms_dbfs"].toDouble(), 0.2) << key;
        EXPECT_NEAR(result["spectral_centroid_hz"].toDouble(), 1000.0, 25.0);
    }

    // Speech, with the true peak of a signal whose peaks fall between samples.
    const std::string speech = folder + "/speech.wav";
    ASSERT_EQ(ZRToolRunShell("espeak-ng -w " + ZRToolQuote(speech)
                  + " 'The quick brown fox jumps over the lazy dog, and then it runs away into the forest.'")
                  .status,
        0);
    ASSERT_EQ(
        ZRToolRunShell("sox " + ZRToolQuote(speech) + " -t f32 " + ZRToolQuote(folder + "/speech.f32")).status, 0);
    const ZRToolRun rate = ZRToolRunShell("soxi -r " + ZRToolQuote(speech));
    const ZRToolRun run = ZRToolRunZr(
        { "analyze", "--json", "--raw", std::to_string(std::stoi(rate.output)) + ",1", folder + "/speech.f32" });
    ASSERT_EQ(run.status, 0) << run.errors;
    const QJsonObject result = parse(run.output).object();
    const auto [integrated, truePeak] = ffmpegLoudness(speech);
    EXPECT_NEAR(result["integrated_lufs"].toDouble(), integrated, 0.1);
    EXPECT_NEAR(result["overall"].toObject()["true_peak_dbfs"].toDouble(), truePeak, 0.2);
    EXPECT_GT(result["pitch_hz"].toDouble(), 50.0);
    EXPECT_LT(result["pitch_hz"].toDouble(), 400.0);
}

TEST(ZRToolCommand, severalFilesAndStandardInput)
{
    const std::string folder = ZRToolScratch("several");
    const Signal loud = makeSignal(folder, "loud", 44100, 1, "synth 2 sine 300 gain -6");
    const Signal quiet = makeSignal(folder, "quiet", 44100, 1, "synth 2 sine 300 gain -30");

    // An array in the files' order, whichever finishes first; a failed file in the middle costs only its entry.
    const ZRToolRun run = ZRToolRunZr(
        { "analyze", "--json", "--basic", "--raw", "44100,1", loud.raw, folder + "/missing.f32", quiet.raw });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors,
        "zr: " + folder
            + "/missing.f32: Opening an audio file failed because the file or directory was not found. (ENOENT)\n");
    const QJsonArray array = parse(run.output).array();
    ASSERT_EQ(array.size(), 2);
    EXPECT_EQ(array[0].toObject()["file"].toString().toStdString(), loud.raw);
    EXPECT_NEAR(array[0].toObject()["overall"].toObject()["peak_dbfs"].toDouble(), -6.0, 0.01);
    EXPECT_NEAR(array[1].toObject()["overall"].toObject()["peak_dbfs"].toDouble(), -30.0, 0.01);

    // Standard input: the same numbers, without a length known beforehand.
    const ZRToolRun piped
        = ZRToolRunZr({ "analyze", "--json", "--raw", "44100,1", "-" }, "cat " + ZRToolQuote(quiet.raw) + " | ");
    ASSERT_EQ(piped.status, 0) << piped.errors;
    const QJsonObject fromInput = parse(piped.output).object();
    EXPECT_EQ(fromInput["frames"].toInt(), 88200);
    EXPECT_EQ(fromInput["overall"].toObject()["rms_dbfs"], array[1].toObject()["overall"].toObject()["rms_dbfs"]);

    // The text table names every measure once.
    const ZRToolRun text = ZRToolRunZr({ "analyze", "--raw", "44100,1", loud.raw });
    EXPECT_EQ(text.status, 0);
    for (const char* row : { "Peak dBFS", "True peak dBFS", "RMS dBFS", "Integrated loudness", "Pitch" })
        EXPECT_NE(text.output.find(row), std::string::npos) << row;
}

TEST(ZRToolCommand, waveformDataFilesHoldTheSamplesExtremes)
{
    const std::string folder = ZRToolScratch("waveformData");
    // 1000 frames of a known stereo signal: left a rising ramp, right its negation, as 16-bit integers.
    std::string raw;
    for (int i = 0; i < 1000; ++i)
        for (const float value : { float(i * 30 - 15000) / 32768.0f, float(15000 - i * 30) / 32768.0f })
            raw.append(reinterpret_cast<const char*>(&value), sizeof value);
    const std::string input = folder + "/ramp.f32";
    {
        std::ofstream(input, std::ios::binary) << raw;
    }
    const ZRToolRun run = ZRToolRunZr({ "waveform", "--raw", "8000,2", input, "--samples-per-pixel", "100", "-o",
        folder + "/ramp.dat", "-o", folder + "/ramp.json" });
    ASSERT_EQ(run.status, 0) << run.errors;

    const std::string dat = ZRToolReadFile(folder + "/ramp.dat");
    ASSERT_EQ(dat.size(), 24u + 10 * 2 * 2 * 2);
    const auto word = [&](size_t offset) {
        int32_t value;
        std::memcpy(&value, dat.data() + offset, 4);
        return value;
    };
    EXPECT_EQ(word(0), 2); // version
    EXPECT_EQ(word(4), 0); // flags: 16-bit
    EXPECT_EQ(word(8), 8000); // sample rate
    EXPECT_EQ(word(12), 100); // samples per pixel
    EXPECT_EQ(word(16), 10); // length
    EXPECT_EQ(word(20), 2); // channels
    const auto point = [&](size_t index) {
        int16_t value;
        std::memcpy(&value, dat.data() + 24 + 2 * index, 2);
        return value;
    };
    for (int p = 0; p < 10; ++p) {
        SCOPED_TRACE(p);
        EXPECT_EQ(point(4 * p + 0), p * 3000 - 15000); // left minimum: the point's first sample
        EXPECT_EQ(point(4 * p + 1), p * 3000 + 99 * 30 - 15000); // left maximum: its last
        EXPECT_EQ(point(4 * p + 2), 15000 - p * 3000 - 99 * 30); // right minimum
        EXPECT_EQ(point(4 * p + 3), 15000 - p * 3000);
    }

    const QJsonObject json = parse(ZRToolReadFile(folder + "/ramp.json")).object();
    EXPECT_EQ(json["version"].toInt(), 2);
    EXPECT_EQ(json["channels"].toInt(), 2);
    EXPECT_EQ(json["sample_rate"].toInt(), 8000);
    EXPECT_EQ(json["samples_per_pixel"].toInt(), 100);
    EXPECT_EQ(json["bits"].toInt(), 16);
    EXPECT_EQ(json["length"].toInt(), 10);
    const QJsonArray data = json["data"].toArray();
    ASSERT_EQ(data.size(), 40);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(data[i].toInt(), point(size_t(i))) << i;

    // Eight bits, and two resolutions of the float form from one pass.
    ASSERT_EQ(ZRToolRunZr({ "waveform", "--raw", "8000,2", input, "--samples-per-pixel", "500", "--bits", "8", "-o",
                              folder + "/ramp8.dat" })
                  .status,
        0);
    const std::string dat8 = ZRToolReadFile(folder + "/ramp8.dat");
    ASSERT_EQ(dat8.size(), 24u + 2 * 2 * 2);
    EXPECT_EQ(dat8[4], 1);
    EXPECT_EQ(int8_t(dat8[24]), int8_t(std::lround(-15000 / 256.0)));
    const ZRToolRun both = ZRToolRunZr({ "waveform", "--raw", "8000,2", input, "--float", "--samples-per-pixel", "100",
        "--samples-per-pixel", "250", "-o", folder + "/levels.json", "-o", folder + "/levels.dat" });
    ASSERT_EQ(both.status, 0) << both.errors;
    const QJsonArray levels = parse(ZRToolReadFile(folder + "/levels.json")).object()["levels"].toArray();
    ASSERT_EQ(levels.size(), 2);
    EXPECT_EQ(levels[1].toObject()["length"].toInt(), 4);
    const QJsonObject right = levels[1].toObject()["channel_data"].toArray()[1].toObject();
    EXPECT_FLOAT_EQ(float(right["max"].toArray()[0].toDouble()), 15000.0f / 32768.0f);
    EXPECT_GT(right["rms"].toArray()[3].toDouble(), 0.0);
    EXPECT_EQ(filesIn(folder),
        (std::vector<std::string> {
            "levels-100.dat", "levels-250.dat", "levels.json", "ramp.dat", "ramp.f32", "ramp.json", "ramp8.dat" }));
}

TEST(ZRToolCommand, picturesHaveTheRequestedSizeAndAreNotBlank)
{
    const std::string folder = ZRToolScratch("pictures");
    const Signal signal = makeSignal(folder, "chord", 44100, 2, "synth 3 sine 220 sine 330 sine 100-8000 gain -6");
    const auto load = [&](const std::string& name) {
        QImage image;
        EXPECT_TRUE(image.load(QString::fromStdString(folder + "/" + name), "PNG")) << name;
        return image;
    };
    const auto colours = [](const QImage& image) {
        std::set<QRgb> seen;
        for (int y = 0; y < image.height(); y += 3)
            for (int x = 0; x < image.width(); x += 3)
                seen.insert(image.pixel(x, y));
        return seen.size();
    };

    ASSERT_EQ(ZRToolRunZr({ "waveform", "--raw", signal.rawFormat, signal.raw, "--width", "1800", "--height", "300",
                              "-o", folder + "/wave.png" })
                  .status,
        0);
    const QImage wave = load("wave.png");
    EXPECT_EQ(wave.size(), QSize(1800, 300));
    EXPECT_GE(colours(wave), 3u);
    // The waveform reaches the last column: the width covers the whole signal.
    EXPECT_NE(wave.pixel(1799, 75), wave.pixel(1799, 0));

    ASSERT_EQ(ZRToolRunZr({ "waveform", "--raw", signal.rawFormat, signal.raw, "--pixels-per-second", "50",
                              "--combined", "--height", "120", "--color", "#ff0000", "-o", folder + "/zoom.png" })
                  .status,
        0);
    const QImage zoom = load("zoom.png");
    EXPECT_EQ(zoom.size(), QSize(150, 120));
    // The peaks in the colour asked for, above the RMS in the default one.
    int red = 0;
    for (int y = 0; y < zoom.height(); ++y)
        red += QColor(zoom.pixel(75, y)) == QColor("#ff0000");
    EXPECT_GT(red, 4);

    for (const char* window : { "hann", "blackman-harris", "rectangular" }) {
        ASSERT_EQ(ZRToolRunZr({ "spectrum", "--raw", signal.rawFormat, signal.raw, "--window", window, "--width", "640",
                                  "--height", "320", "-o", folder + "/spectrum.png" })
                      .status,
            0);
        const QImage spectrum = load("spectrum.png");
        EXPECT_EQ(spectrum.size(), QSize(640, 320));
        EXPECT_GE(colours(spectrum), 3u) << window;
    }
    ASSERT_EQ(ZRToolRunZr({ "spectrum", "--raw", signal.rawFormat, signal.raw, "--spectrogram", "--resolution", "10",
                              "--width", "300", "--height", "200", "-o", folder + "/spectrogram.png" })
                  .status,
        0);
    const QImage spectrogram = load("spectrogram.png");
    EXPECT_EQ(spectrogram.size(), QSize(300, 200));
    EXPECT_GE(colours(spectrogram), 10u);
}

TEST(ZRToolCommand, spectrumCsvPeaksAtTheSine)
{
    const std::string folder = ZRToolScratch("spectrumCsv");
    const Signal signal = makeSignal(folder, "sine", 48000, 1, "synth 2 sine 3000 gain -12");
    const ZRToolRun run = ZRToolRunZr(
        { "spectrum", "--raw", signal.rawFormat, signal.raw, "--window", "flat-top", "-o", "-", "--type", "csv" });
    ASSERT_EQ(run.status, 0) << run.errors;
    std::istringstream lines(run.output);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "frequency_hz,magnitude_dbfs");
    double bestFrequency = 0.0, bestLevel = -HUGE_VAL;
    int rows = 0;
    while (std::getline(lines, line)) {
        ++rows;
        // A bin of pure silence has no level in dB: its field stays empty.
        const std::string field = line.substr(line.find(',') + 1);
        if (field.empty())
            continue;
        const double frequency = std::stod(line), level = std::stod(field);
        if (level > bestLevel)
            std::tie(bestFrequency, bestLevel) = std::tie(frequency, level);
    }
    EXPECT_EQ(rows, 2047);
    EXPECT_NEAR(bestFrequency, 3000.0, 48000.0 / 4096);
    // The flat-top window reads a sine's amplitude within a small fraction of a dB.
    EXPECT_NEAR(bestLevel, -12.0, 0.1);
}

TEST(ZRToolCommand, usageErrorsExitWithTwo)
{
    const ZRToolRun help = ZRToolRunZr({ "waveform", "--help" });
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("--pixels-per-second"), std::string::npos);
    EXPECT_EQ(ZRToolRunZr({ "--version" }).output, "zr 0.1.0\n");

    const std::vector<std::vector<std::string>> misuses {
        {},
        { "frobnicate" },
        { "analyze" },
        { "analyze", "--raw", "44100", "x" },
        { "waveform", "x.f32" },
        { "waveform", "x.f32", "-o", "x.png", "--width", "100", "--pixels-per-second", "10" },
        { "waveform", "x.f32", "-o", "x.dat", "--bits", "12" },
        { "spectrum", "x.f32", "-o", "x.png", "--window", "kaiser" },
    };
    for (const auto& arguments : misuses) {
        const ZRToolRun run = ZRToolRunZr(arguments);
        EXPECT_EQ(run.status, 2) << testing::PrintToString(arguments);
        EXPECT_FALSE(run.errors.empty());
    }
}

TEST(ZRToolCommand, failedFilesExitWithOneLineAndLeaveNothingBehind)
{
    const std::string folder = ZRToolScratch("failures");
    const Signal signal = makeSignal(folder, "sine", 44100, 1, "synth 1 sine 440");
    const auto expectFailure
        = [&](const std::vector<std::string>& arguments, const std::string& line, const std::string& prefix = {}) {
              const ZRToolRun run = ZRToolRunZr(arguments, prefix);
              EXPECT_EQ(run.status, 1) << testing::PrintToString(arguments);
              EXPECT_EQ(run.errors, line + "\n");
          };
    expectFailure({ "analyze", "--raw", "44100,1", folder },
        "zr: " + folder + ": Opening an audio file failed because is a directory. (EISDIR)");
    expectFailure({ "waveform", "--raw", "44100,1", signal.raw, "-o", folder + "/out.svg" },
        "zr: " + signal.raw + ": Writing the output file failed because the type of \"" + folder
            + "/out.svg\" is not known (give a .png, .dat or .json name, or --type)");
    expectFailure({ "spectrum", "--raw", "44100,1", signal.raw, "--spectrogram", "-o", folder + "/out.csv" },
        "zr: " + signal.raw + ": Writing the output file failed because the type of \"" + folder
            + "/out.csv\" is not known (give a .png name, or --type)");
    expectFailure({ "waveform", "--raw", "44100,1", signal.raw, "-o", folder + "/no/such/folder/out.png" },
        "zr: " + signal.raw + ": Writing the output file failed because the file or directory was not found. (ENOENT)");
    // A file-size limit of 4 KiB: the picture does not fit, and neither it nor its temporary file stays.
    expectFailure(
        { "waveform", "--raw", "44100,1", signal.raw, "-o", folder + "/big.json", "--samples-per-pixel", "1" },
        "zr: " + signal.raw + ": Writing the output file failed because file too large. (EFBIG)", "ulimit -f 8; ");
    if (getuid() != 0) {
        const std::string locked = folder + "/locked.f32";
        std::filesystem::copy_file(signal.raw, locked);
        std::filesystem::permissions(locked, std::filesystem::perms::none);
        expectFailure({ "analyze", "--raw", "44100,1", locked },
            "zr: " + locked + ": Opening an audio file failed because permission denied. (EACCES)");
        std::filesystem::permissions(locked, std::filesystem::perms::owner_all);
        std::filesystem::remove(locked);
    }
    EXPECT_EQ(filesIn(folder), (std::vector<std::string> { "sine.f32", "sine.wav" }));

    // Random bytes read as raw floats hold NaNs and infinities: a result, never a crash.
    ASSERT_EQ(ZRToolRunShell("head -c 100000 /dev/urandom > " + ZRToolQuote(folder + "/random.f32")).status, 0);
    for (const char* command : { "analyze", "waveform", "spectrum" }) {
        std::vector<std::string> arguments { command, "--raw", "44100,2", folder + "/random.f32" };
        if (std::string(command) != "analyze")
            arguments.insert(arguments.end(), { "-o", folder + "/random.png" });
        EXPECT_EQ(ZRToolRunZr(arguments).status, 0) << command;
    }
}
