#include "ZRToolTestSupport.h"

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/system/ZRResourceFork.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

// What ffprobe says about a file's first stream and its tags, as "key=value" pairs.
std::map<std::string, std::string> probe(const std::string& file)
{
    const ZRToolRun run
        = ZRToolRunShell("ffprobe -v error -show_entries "
                         "stream=codec_name,sample_rate,channels,bits_per_raw_sample,bits_per_sample,bit_rate:"
                         "format=duration:format_tags -of default=noprint_wrappers=1 "
            + ZRToolQuote(file));
    std::map<std::string, std::string> values;
    std::istringstream lines(run.output);
    std::string line;
    while (std::getline(lines, line))
        if (const size_t equals = line.find('='); equals != std::string::npos)
            values.emplace(line.substr(0, equals), line.substr(equals + 1));
    return values;
}

QJsonObject analyze(const std::string& file, bool basic = true)
{
    std::vector<std::string> arguments { "analyze", "--json", file };
    if (basic)
        arguments.push_back("--basic");
    const ZRToolRun run = ZRToolRunZr(arguments);
    EXPECT_EQ(run.status, 0) << run.errors;
    return QJsonDocument::fromJson(QByteArray::fromStdString(run.output)).object();
}

double peakOf(const QJsonObject& analysis, int channel = -1)
{
    const QJsonObject levels
        = channel < 0 ? analysis["overall"].toObject() : analysis["channel_levels"].toArray()[channel].toObject();
    return levels["peak_dbfs"].toDouble();
}

void convert(const std::vector<std::string>& arguments, const std::string& prefix = {})
{
    std::vector<std::string> all { "convert" };
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ZRToolRun run = ZRToolRunZr(all, prefix);
    EXPECT_EQ(run.status, 0) << testing::PrintToString(arguments) << run.errors;
    EXPECT_EQ(run.errors, "");
}

}

TEST(ZRToolConvert, containersAndFormatsThatFfprobeReads)
{
    const std::string folder = ZRToolScratch("convertFormats");
    const std::string input = folder + "/in.wav";
    ASSERT_EQ(
        ZRToolRunShell("sox -D -n -r 44100 -c 2 -b 16 " + ZRToolQuote(input) + " synth 3 sine 440 sine 660").status, 0);

    struct Case {
        std::vector<std::string> options;
        std::string name, codec, rate, channels;
    };
    const std::vector<Case> cases {
        { { "--rate", "48000" }, "rate.wav", "pcm_s16le", "48000", "2" },
        { { "--bits", "32" }, "float.wav", "pcm_f32le", "44100", "2" },
        { { "--bits", "24", "--channels", "1" }, "mono.aiff", "pcm_s24be", "44100", "1" },
        { { "--channels", "6" }, "surround.caf", "pcm_s16le", "44100", "6" },
        { { "--bitrate", "96", "--rate", "48000" }, "lossy.m4a", "aac", "48000", "2" },
        { { "--format", "alac", "--bits", "24" }, "lossless.m4a", "alac", "44100", "2" },
        { {}, "dolby.ac3", "ac3", "44100", "2" },
        { { "--bitrate", "128", "--rate", "48000", "--tag", "title=Layer three" }, "lame.mp3", "mp3", "48000", "2" },
        { { "--type", "mp3", "--format", "mp3", "--channels", "1" }, "named.audio", "mp3", "44100", "1" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> arguments { input, folder + "/" + c.name };
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        convert(arguments);
        auto values = probe(folder + "/" + c.name);
        EXPECT_EQ(values["codec_name"], c.codec);
        EXPECT_EQ(values["sample_rate"], c.rate);
        EXPECT_EQ(values["channels"], c.channels);
        // AC-3 and MP3 end on a whole packet, MP3 after the encoder's delay.
        EXPECT_NEAR(std::stod(values["duration"]), 3.0, c.codec == "ac3" || c.codec == "mp3" ? 0.06 : 0.001);
    }
    auto mp3 = probe(folder + "/lame.mp3");
    EXPECT_EQ(mp3["TAG:title"], "Layer three");
    EXPECT_EQ(mp3["bit_rate"], "128000");
    // Lossless formats keep the signal: Apple Lossless at 24 bits gives the 16-bit samples back exactly.
    EXPECT_EQ(analyze(folder + "/lossless.m4a")["overall"], analyze(input)["overall"]);
    // The down-mix is the channels' mean (440 Hz left, 660 Hz right): no louder than either, and not silent.
    const double mono = peakOf(analyze(folder + "/mono.aiff")), louder = peakOf(analyze(input));
    EXPECT_LE(mono, louder + 0.01);
    EXPECT_GT(mono, louder - 6.03);
    // The up-mix keeps the channels in their places and adds silent ones.
    const QJsonArray surround = analyze(folder + "/surround.caf")["channel_levels"].toArray();
    EXPECT_EQ(
        surround[1].toObject()["peak_dbfs"], analyze(input)["channel_levels"].toArray()[1].toObject()["peak_dbfs"]);
    EXPECT_TRUE(surround[5].toObject()["peak_dbfs"].isNull());
}

TEST(ZRToolConvert, levelsFadesFiltersAndTags)
{
    const std::string folder = ZRToolScratch("convertLevels");
    const std::string input = folder + "/in.wav";
    // Left a sine at -10 dBFS, right white noise at about -20 dBFS.
    ASSERT_EQ(ZRToolRunShell("sox -D -n -r 48000 -c 2 -b 16 " + ZRToolQuote(input)
                  + " synth 6 sine 1000 whitenoise remix 1v0.316 2v0.1")
                  .status,
        0);
    const QJsonObject original = analyze(input);

    convert({ input, folder + "/gain.wav", "--gain", "-6", "--bits", "32" });
    EXPECT_NEAR(peakOf(analyze(folder + "/gain.wav"), 0), peakOf(original, 0) - 6.0, 0.01);

    // Tags that ffmpeg wrote into an M4A reach the new file; container notes such as the encoder do not.
    ASSERT_EQ(ZRToolRunShell("ffmpeg -v error -i " + ZRToolQuote(input) + " -metadata title=Take -metadata artist=Band "
                  + ZRToolQuote(folder + "/tagged.m4a"))
                  .status,
        0);
    convert({ folder + "/tagged.m4a", folder + "/tagged.wav" });
    auto tags = probe(folder + "/tagged.wav");
    EXPECT_EQ(tags["TAG:title"], "Take");
    EXPECT_EQ(tags["TAG:artist"], "Band");
    EXPECT_EQ(tags.count("TAG:major_brand"), 0u);

    // Tags are named by catalogue key or title.
    convert({ input, folder + "/peak.wav", "--normalize", "peak:-1", "--bits", "32", "--tag", "title=Mastered", "--tag",
        "Comments=Second pass" });
    EXPECT_NEAR(peakOf(analyze(folder + "/peak.wav")), -1.0, 0.01);
    tags = probe(folder + "/peak.wav");
    EXPECT_EQ(tags["TAG:title"], "Mastered");
    EXPECT_EQ(tags["TAG:comment"], "Second pass");

    convert({ input, folder + "/loud.wav", "--normalize", "loudness:-23", "--bits", "32" });
    const ZRToolRun ebur128 = ZRToolRunShell(
        "ffmpeg -nostats -hide_banner -i " + ZRToolQuote(folder + "/loud.wav") + " -af ebur128 -f null -");
    const size_t integrated = ebur128.errors.rfind("I:");
    ASSERT_NE(integrated, std::string::npos);
    EXPECT_NEAR(std::stod(ebur128.errors.substr(integrated + 2)), -23.0, 0.1);

    // Fades: silence at the very ends, full level in the middle.
    convert({ input, folder + "/fade.wav", "--fade-in", "1", "--fade-out", "2", "--bits", "32" });
    const auto peakOfPart
        = [&](const std::string& trim) { return ZRToolSoxStat(folder + "/fade.wav", "Pk lev dB", 0, trim); };
    EXPECT_LT(peakOfPart("trim 0 0.01"), -45.0);
    EXPECT_LT(peakOfPart("trim 5.99"), -45.0);
    EXPECT_NEAR(peakOfPart("trim 2 1"), peakOf(original), 0.05);
    // Half way into the two-second fade-out the level is three quarters.
    EXPECT_NEAR(peakOfPart("trim 4.5 0.01"), peakOf(original) + 20 * std::log10(0.75), 0.1);

    // A low pass at 200 Hz takes most of the white noise away and keeps little of the 1 kHz sine.
    convert({ input, folder + "/low.wav", "--filter", "lowpass:200", "--bits", "32" });
    const QJsonObject low = analyze(folder + "/low.wav");
    const auto rms = [](const QJsonObject& analysis, int channel) {
        return analysis["channel_levels"].toArray()[channel].toObject()["rms_dbfs"].toDouble();
    };
    EXPECT_LT(rms(low, 1), rms(original, 1) - 10.0);
    EXPECT_LT(rms(low, 0), rms(original, 0) - 10.0);
    convert({ input, folder + "/band.wav", "--filter", "bandpass:1000:1", "--bits", "32" });
    EXPECT_NEAR(rms(analyze(folder + "/band.wav"), 0), rms(original, 0), 0.5);
}

TEST(ZRToolConvert, standardInputToStandardOutput)
{
    const std::string folder = ZRToolScratch("convertPipe");
    const std::string input = folder + "/in.wav";
    ASSERT_EQ(ZRToolRunShell("sox -D -n -r 22050 -c 1 -b 16 " + ZRToolQuote(input) + " synth 1 sine 300").status, 0);
    const ZRToolRun run
        = ZRToolRunZr({ "convert", "-", "-", "--type", "caf", "--rate", "44100" }, "cat " + ZRToolQuote(input) + " | ");
    ASSERT_EQ(run.status, 0) << run.errors;
    {
        std::ofstream(folder + "/out.caf", std::ios::binary) << run.output;
    }
    auto values = probe(folder + "/out.caf");
    EXPECT_EQ(values["sample_rate"], "44100");
    EXPECT_NEAR(std::stod(values["duration"]), 1.0, 0.001);
}

TEST(ZRToolConvert, failuresLeaveNoFileBehind)
{
    const std::string folder = ZRToolScratch("convertFailures");
    const std::string input = folder + "/in.wav";
    ASSERT_EQ(ZRToolRunShell("sox -D -n -r 44100 -c 2 -b 16 " + ZRToolQuote(input) + " synth 2 sine 300").status, 0);
    const auto fails = [&](const std::vector<std::string>& arguments, int status, const std::string& prefix = {}) {
        std::vector<std::string> all { "convert" };
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ZRToolRun run = ZRToolRunZr(all, prefix);
        EXPECT_EQ(run.status, status) << testing::PrintToString(arguments);
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        return run.errors;
    };
    EXPECT_EQ(fails({ input, folder + "/out.xyz" }, 1),
        "zr: " + input + ": Writing the output file failed because the type of \"" + folder
            + "/out.xyz\" is not known (give a .wav, .aif, .aifc, .caf, .m4a, .mp4, .mp3 or .ac3 name, or --type)\n");
    EXPECT_EQ(fails({ folder + "/missing.wav", folder + "/out.wav" }, 1),
        "zr: " + folder
            + "/missing.wav: Opening an audio file failed because the file or directory was not found. (ENOENT)\n");
    fails({ input, folder + "/out.wav", "--gain", "-3", "--normalize", "peak:-1" }, 2);
    fails({ input, folder + "/out.wav", "--filter", "notch:100" }, 2);
    fails({ input, folder + "/out.wav", "--normalize", "loud" }, 2);
    fails({ input, folder + "/out.wav", "--tag", "novalue" }, 2);
    EXPECT_NE(
        fails({ input, folder + "/out.wav", "--tag", "mood=calm" }, 2).find("no tag \"mood\""), std::string::npos);
    // A 64 KiB file-size limit stops the WAVE half way.
    EXPECT_NE(fails({ input, folder + "/big.wav" }, 1, "ulimit -f 64; ").find("Writing to an audio file failed"),
        std::string::npos);
    // Bytes that are no audio file, and a file cut short after its header.
    ASSERT_EQ(ZRToolRunShell("head -c 5000 /dev/urandom > " + ZRToolQuote(folder + "/random.wav") + " && head -c 40 "
                  + ZRToolQuote(input) + " > " + ZRToolQuote(folder + "/cut.wav"))
                  .status,
        0);
    fails({ folder + "/random.wav", folder + "/out.wav" }, 1);
    fails({ folder + "/cut.wav", folder + "/out.wav" }, 1);

    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string> { "cut.wav", "in.wav", "random.wav" }));
}

TEST(ZRToolInfo, namesSoundDesignerIIFilesByTheirFork)
{
    const std::string folder = ZRToolScratch("info-sd2");
    const std::string path = folder + "/take";
    ASSERT_EQ(
        ZRToolRunShell("sox -D -n -r 48000 -c 2 -b 16 -e signed -B -t raw " + ZRToolQuote(path) + " synth 1 sine 300")
            .status,
        0);
    ZRResourceMap map;
    const std::pair<const char*, std::string> texts[]
        = { { "sample-size", "2" }, { "sample-rate", "48000.000000" }, { "channels", "2" } };
    int16_t id = 1000;
    for (const auto& [name, text] : texts) {
        auto bytes = std::make_shared<ZRData>(1 + text.size(), uint8_t(text.size()));
        std::copy(text.begin(), text.end(), bytes->begin() + 1);
        map.add({ id++, ZRFourCharCode("STR "), name, 0, bytes });
    }
    ASSERT_TRUE(ZRResourceFork::write(path, *map.data()));
    const ZRToolRun run = ZRToolRunZr({ "info", "--json", path });
    ASSERT_EQ(run.status, 0) << run.errors;
    const QJsonObject file = QJsonDocument::fromJson(QByteArray::fromStdString(run.output)).object();
    EXPECT_EQ(file["container"].toString(), "Sound Designer II Audio File");
    EXPECT_EQ(file["data_format"].toString(), "Linear PCM, 16-bit big-endian signed integer, stereo, 48000 Hz");
    EXPECT_EQ(file["frames"].toInt(), 48000);
}

TEST(ZRToolInfo, describesContainerFormatLengthAndTags)
{
    const std::string folder = ZRToolScratch("info");
    ASSERT_EQ(
        ZRToolRunShell("sox -D -n -r 48000 -c 2 -b 24 " + ZRToolQuote(folder + "/in.wav")
            + " synth 2.5 sine 300 && ffmpeg -v error -i " + ZRToolQuote(folder + "/in.wav")
            + " -metadata title=Song -metadata grouping=Demos -c:a aac -b:a 128k " + ZRToolQuote(folder + "/in.m4a"))
            .status,
        0);
    const ZRToolRun run = ZRToolRunZr({ "info", "--json", folder + "/in.wav", folder + "/in.m4a" });
    ASSERT_EQ(run.status, 0) << run.errors;
    const QJsonArray files = QJsonDocument::fromJson(QByteArray::fromStdString(run.output)).array();
    ASSERT_EQ(files.size(), 2);
    const QJsonObject wave = files[0].toObject(), aac = files[1].toObject();
    EXPECT_EQ(wave["container"].toString(), "WAVE Audio File");
    EXPECT_EQ(wave["data_format"].toString(), "Linear PCM, 24-bit little-endian signed integer, stereo, 48000 Hz");
    EXPECT_EQ(wave["sample_rate"].toDouble(), 48000.0);
    EXPECT_EQ(wave["channels"].toInt(), 2);
    EXPECT_EQ(wave["frames"].toInt(), 120000);
    EXPECT_DOUBLE_EQ(wave["duration_seconds"].toDouble(), 2.5);
    EXPECT_EQ(wave["packets"].toInt(), 120000);
    EXPECT_NEAR(wave["bit_rate"].toDouble(), 48000.0 * 48, 1000.0);
    EXPECT_EQ(aac["container"].toString(), "M4A Audio File");
    EXPECT_TRUE(aac["data_format"].toString().startsWith("AAC"));
    EXPECT_EQ(aac["frames"].toInt(), 120000);
    EXPECT_NEAR(aac["bit_rate"].toDouble(), 128000.0, 20000.0);
    // Tags of the catalogue come first with its key and title (the encoder's name is the encoding application);
    // tags outside it keep only their key.
    const QJsonArray tags = aac["tags"].toArray();
    ASSERT_GE(tags.size(), 2);
    EXPECT_EQ(tags[0].toObject(),
        (QJsonObject { { "key", "title" }, { "catalogue_key", "title" }, { "title", "Title" }, { "value", "Song" } }));
    const auto tagWithKey = [&](const char* key) {
        return std::find_if(
            tags.begin(), tags.end(), [&](const QJsonValue& tag) { return tag.toObject()["key"] == key; });
    };
    const auto encoder = tagWithKey("encoding application");
    ASSERT_NE(encoder, tags.end());
    EXPECT_EQ(encoder->toObject()["catalogue_key"], "encodingApplication");
    const auto grouping = tagWithKey("grouping");
    ASSERT_NE(grouping, tags.end());
    EXPECT_EQ(grouping->toObject()["value"], "Demos");
    EXPECT_TRUE(grouping->toObject()["catalogue_key"].isNull());
    EXPECT_TRUE(grouping->toObject()["title"].isNull());

    const ZRToolRun text = ZRToolRunZr({ "info", folder + "/in.m4a" });
    EXPECT_NE(text.output.find("  Container       M4A Audio File\n"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("  Title:          Song\n"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("  Approximate Duration: 2.5"), std::string::npos) << text.output;
}
