#include <zrbase/codec/ZRCoreAudioFile.h>

#include "support/ZRRecordingAlertPresenter.h"
#include "support/ZRTestAudioTools.h"
#include "support/ZRTestChildProcess.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <unistd.h>

namespace {

AudioStreamBasicDescription pcm(uint32_t bits, AudioFormatFlags flags, uint32_t channels = 2)
{
    return { 44100, kAudioFormatLinearPCM, flags | kAudioFormatFlagIsPacked, bits / 8 * channels, 1,
        bits / 8 * channels, channels, bits, 0 };
}

void writeBytes(const std::string& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

ZRErrorPtr openError(const std::string& path)
{
    ZRErrorPtr error;
    EXPECT_FALSE(ZRCoreAudioFile::fileWithPath(path, &error)) << path;
    return error;
}

} // namespace

TEST(ZRCoreAudioFile, WritesAndReadsLinearPCMByteForByteInEveryContainer)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFilePCM");
    constexpr AudioFormatFlags sint = kAudioFormatFlagIsSignedInteger;
    constexpr AudioFormatFlags big = kAudioFormatFlagIsBigEndian;
    constexpr AudioFormatFlags flt = kAudioFormatFlagIsFloat;
    struct Case {
        const char* name;
        AudioFileTypeID type;
        AudioStreamBasicDescription format;
        const char* codec;
        const char* container;
    };
    const Case cases[] = {
        { "s16.wav", kAudioFileWAVEType, pcm(16, sint), "pcm_s16le", "WAVE Audio File" },
        { "s24.wav", kAudioFileWAVEType, pcm(24, sint, 6), "pcm_s24le", "WAVE Audio File" },
        { "f32.wav", kAudioFileWAVEType, pcm(32, flt), "pcm_f32le", "WAVE Audio File" },
        { "u8.wav", kAudioFileWAVEType, pcm(8, 0, 1), "pcm_u8", "WAVE Audio File" },
        { "s16.aiff", kAudioFileAIFFType, pcm(16, sint | big), "pcm_s16be", "AIFF Audio File" },
        { "s24.aiff", kAudioFileAIFFType, pcm(24, sint | big), "pcm_s24be", "AIFF Audio File" },
        { "sowt.aifc", kAudioFileAIFCType, pcm(16, sint), "pcm_s16le", "AIFF Audio File" },
        { "fl32.aifc", kAudioFileAIFCType, pcm(32, flt | big), "pcm_f32be", "AIFF Audio File" },
        { "s32.caf", kAudioFileCAFType, pcm(32, sint | big), "pcm_s32be", "CAF Audio File" },
        { "f64.caf", kAudioFileCAFType, pcm(64, flt), "pcm_f64le", "CAF Audio File" },
    };
    std::mt19937 random(7);
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        const std::string path = folder + "/" + entry.name;
        const uint32_t frames = 5000;
        auto data = ZRAudioBuffer::bufferWithNumberOfBuffers(1, frames * entry.format.mBytesPerFrame);
        auto* bytes = static_cast<uint8_t*>(data->buffer());
        for (uint32_t i = 0; i < data->length(); ++i)
            bytes[i] = uint8_t(random());
        auto file = ZRCoreAudioFile::fileWithPath(path, entry.type, ZRAudioStreamDescription(entry.format));
        ASSERT_TRUE(file);
        // Two runs: the second continues where the first ended.
        auto first = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 1000 * entry.format.mBytesPerFrame);
        std::memcpy(first->buffer(), bytes, first->length());
        auto rest = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4000 * entry.format.mBytesPerFrame);
        std::memcpy(rest->buffer(), bytes + first->length(), rest->length());
        ASSERT_TRUE(file->writeNumberOfPackets(1000, *first, nullptr));
        ASSERT_TRUE(file->writeNumberOfPackets(4000, *rest, nullptr));
        EXPECT_EQ(file->currentPacket(), frames);
        ASSERT_TRUE(file->close());
        EXPECT_EQ(ZRTestProbe(path, "codec_name"), entry.codec);
        EXPECT_EQ(ZRTestProbe(path, "channels"), std::to_string(entry.format.mChannelsPerFrame));

        auto reader = ZRCoreAudioFile::fileWithPath(path);
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->fileFormat(), entry.container);
        EXPECT_TRUE(reader->audioFormat().isEqualToDescription(ZRAudioStreamDescription(entry.format)));
        EXPECT_EQ(reader->numberOfPackets(), frames);
        EXPECT_EQ(reader->maximumPacketSize(), entry.format.mBytesPerPacket);
        uint32_t count = 3000;
        ASSERT_TRUE(reader->readNumberOfPackets(&count));
        ASSERT_EQ(count, 3000U);
        EXPECT_EQ(std::memcmp(reader->readBuffer()->buffer(), bytes, 3000 * entry.format.mBytesPerFrame), 0);
        EXPECT_EQ(reader->packetDescriptions()[2999].mStartOffset, 2999 * entry.format.mBytesPerFrame);
        count = 3000;
        ASSERT_TRUE(reader->readNumberOfPackets(&count));
        ASSERT_EQ(count, 2000U);
        EXPECT_EQ(std::memcmp(reader->readBuffer()->buffer(), bytes + 3000 * entry.format.mBytesPerFrame,
                      2000 * entry.format.mBytesPerFrame),
            0);
        // At the end: success, nothing read, the position kept.
        count = 10;
        ASSERT_TRUE(reader->readNumberOfPackets(&count));
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(reader->readBuffer()->length(), 0U);
        EXPECT_EQ(reader->currentPacket(), frames);
    }
}

TEST(ZRCoreAudioFile, CopiesCompressedPacketsWithTheirCookieAndTags)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileCopy");
    const std::string original = folder + "/original.m4a";
    const std::string copy = folder + "/copy.m4a";
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=f=440:d=1.5 -ac 2 -c:a aac '" + original + "'"));
    auto reader = ZRCoreAudioFile::fileWithPath(original);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->fileFormat(), "M4A Audio File");
    auto writer = ZRCoreAudioFile::fileWithPath(copy, kAudioFileM4AType, reader->audioFormat());
    ASSERT_TRUE(writer);
    writer->setMagicCookie(*reader->magicCookie());
    ZRDictionary tags { { "title", "Copied" }, { "artist", "Tester" }, { "album", "Packets" }, { "year", "2026" },
        { "comments", "no re-encoding" }, { "genre", "Test" }, { "composer", "Writer" }, { "track number", "3" },
        { "copyright", "Nobody" } };
    writer->setProperties(tags);
    uint32_t count = 7;
    while (reader->readNumberOfPackets(&count) && count > 0) {
        ASSERT_TRUE(writer->writeNumberOfPackets(count, *reader->readBuffer(), reader->packetDescriptions()));
        count = 7;
    }
    ASSERT_TRUE(writer->close());
    // The same packets decode to the same audio, and the tags are where other programs look for them.
    const auto packetHashes = [](const std::string& path) {
        // The sixth field of each packet line of ffmpeg's frame hashes is the MD5 of the packet's bytes.
        std::string hashes;
        std::istringstream lines(ZRTestOutputOf("ffmpeg -v error -i '" + path + "' -c copy -f framemd5 -"));
        for (std::string line; std::getline(lines, line);) {
            std::istringstream fields(line);
            std::string field;
            for (int i = 0; i < 6 && std::getline(fields, field, ','); ++i) { }
            if (!line.starts_with("#"))
                hashes += field + "\n";
        }
        return hashes;
    };
    EXPECT_FALSE(packetHashes(copy).empty());
    EXPECT_EQ(packetHashes(copy), packetHashes(original));
    EXPECT_EQ(ZRTestProbe(copy, "format_tags=title"), "Copied");
    EXPECT_EQ(ZRTestProbe(copy, "format_tags=artist"), "Tester");
    EXPECT_EQ(ZRTestProbe(copy, "format_tags=date"), "2026");
    EXPECT_EQ(ZRTestProbe(copy, "format_tags=track"), "3");
    const std::optional<ZRDictionary> read = ZRCoreAudioFile::fileWithPath(copy)->properties();
    ASSERT_TRUE(read);
    for (const auto& [key, value] : tags)
        EXPECT_EQ(read->at(key), value) << key;
    EXPECT_NEAR(read->at("approximate duration in seconds").doubleValue(), 1.5, 0.05);
}

TEST(ZRCoreAudioFile, NamesTheContainerItFindsInTheBytes)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileContainers");
    // Each file is named for a container it is not, so that only its bytes can tell.
    const std::pair<std::string, const char*> made[] = {
        { "-c:a pcm_s16le -f wav", "WAVE Audio File" },
        { "-c:a pcm_s16le -rf64 always -f wav", "WAVE Audio File" },
        { "-c:a pcm_s16le -f aiff", "AIFF Audio File" },
        { "-c:a pcm_s16le -f caf", "CAF Audio File" },
        { "-c:a aac -f ipod", "M4A Audio File" },
        { "-c:a aac -f mp4", "MPEG4 Audio File" },
        { "-c:a libmp3lame -f mp3", "MP3 Audio File" },
        { "-c:a mp2 -f mp2", "MP2 Audio File" },
        { "-c:a ac3 -f ac3", "AC-3 Audio File" },
        { "-c:a flac -f flac", "unknown" },
        { "-c:a libvorbis -f ogg", "unknown" },
    };
    int index = 0;
    for (const auto& [options, name] : made) {
        SCOPED_TRACE(options);
        const std::string path = folder + "/" + std::to_string(index++) + ".au";
        ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=d=0.2 " + options + " '" + path + "'"));
        auto file = ZRCoreAudioFile::fileWithPath(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->fileFormat(), name);
    }
}

TEST(ZRCoreAudioFile, InformationDictionaryCarriesTheTagsOtherProgramsWrote)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileReadTags");
    const std::string tags = "-metadata title=Ti -metadata artist=Ar -metadata album=Al -metadata genre=Ge -metadata "
                             "date=2026 -metadata comment=Co -metadata composer=Cm -metadata track=7 -metadata "
                             "copyright=Cp";
    const ZRDictionary all { { "title", "Ti" }, { "artist", "Ar" }, { "album", "Al" }, { "genre", "Ge" },
        { "year", "2026" }, { "comments", "Co" }, { "composer", "Cm" }, { "track number", "7" },
        { "copyright", "Cp" } };
    ZRDictionary riff = all;
    riff.erase("composer");
    struct Made {
        const char* name;
        std::string command;
        ZRDictionary expected;
    };
    const std::string ffmpeg = "ffmpeg -v error -f lavfi -i sine=d=0.5 " + tags;
    const Made made[] = {
        { "riff.wav", ffmpeg + " %s", riff },
        { "info.caf", ffmpeg + " %s", all },
        { "items.m4a", ffmpeg + " %s", all },
        { "id3.mp3", ffmpeg + " %s", all },
        { "comments.flac", ffmpeg + " %s", all },
        { "vorbis.ogg", ffmpeg + " %s", all },
        { "opus.ogg", ffmpeg + " -c:a libopus %s", all },
        // AIFF's own chunks: NAME, AUTH, (c) and ANNO.
        { "chunks.aiff", ffmpeg + " -metadata author=Au %s",
            { { "title", "Ti" }, { "artist", "Au" }, { "copyright", "Cp" }, { "comments", "Co" } } },
        { "sox.flac", "sox -n -r 44100 --comment 'Title=Sx' %s synth 0.5 sine 440", { { "title", "Sx" } } },
        { "sox.ogg", "sox -n -r 44100 --comment 'Artist=Sx' %s synth 0.5 sine 440", { { "artist", "Sx" } } },
    };
    for (const Made& file : made) {
        SCOPED_TRACE(file.name);
        const std::string path = folder + "/" + file.name;
        ASSERT_TRUE(ZRTestMakeFile(file.command, path));
        auto reader = ZRCoreAudioFile::fileWithPath(path);
        ASSERT_TRUE(reader);
        const std::optional<ZRDictionary> info = reader->properties();
        ASSERT_TRUE(info);
        for (const auto& [key, value] : file.expected) {
            ASSERT_TRUE(info->contains(key)) << key;
            EXPECT_EQ(info->at(key), value) << key;
        }
        // The container's structure is no tag; the duration is the file's.
        EXPECT_FALSE(info->contains("major_brand") || info->contains("handler_name"));
        EXPECT_NEAR(info->at("approximate duration in seconds").doubleValue(), 0.5, 0.01);
    }
}

TEST(ZRCoreAudioFile, WritesTagsWhereOtherProgramsReadThem)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileWriteTags");
    // Our keys, the names ffprobe gives them, and the values.
    const std::vector<std::array<std::string, 3>> tags { { "title", "title", "Ti" }, { "artist", "artist", "Ar" },
        { "album", "album", "Al" }, { "genre", "genre", "Ge" }, { "year", "date", "2026" },
        { "comments", "comment", "Co" }, { "composer", "composer", "Cm" }, { "track number", "track", "7" },
        { "copyright", "copyright", "Cp" } };
    ZRDictionary dictionary;
    for (const auto& [key, name, value] : tags)
        dictionary.emplace(key, value);
    constexpr AudioFormatFlags sint = kAudioFormatFlagIsSignedInteger;
    const std::pair<const char*, AudioFileTypeID> cases[] = { { "tags.wav", kAudioFileWAVEType },
        { "tags.aiff", kAudioFileAIFFType }, { "tags.aifc", kAudioFileAIFCType }, { "tags.caf", kAudioFileCAFType } };
    for (const auto& [name, type] : cases) {
        SCOPED_TRACE(name);
        const std::string path = folder + "/" + name;
        const AudioStreamBasicDescription format
            = pcm(16, sint | (type == kAudioFileAIFFType ? kAudioFormatFlagIsBigEndian : 0));
        auto file = ZRCoreAudioFile::fileWithPath(path, type, ZRAudioStreamDescription(format));
        ASSERT_TRUE(file);
        file->setProperties(dictionary);
        auto silence = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 4410 * format.mBytesPerFrame);
        std::memset(silence->buffer(), 0, silence->length());
        ASSERT_TRUE(file->writeNumberOfPackets(4410, *silence, nullptr));
        ASSERT_TRUE(file->close());
        const std::optional<ZRDictionary> read = ZRCoreAudioFile::fileWithPath(path)->properties();
        ASSERT_TRUE(read);
        for (const auto& [key, probed, value] : tags) {
            // RIFF INFO has no composer; CAF's information chunk keeps our keys.
            if (type == kAudioFileWAVEType && key == "composer")
                continue;
            EXPECT_EQ(ZRTestProbe(path, "format_tags=" + (type == kAudioFileCAFType ? key : probed)), value) << key;
            EXPECT_EQ(read->at(key), value) << key;
        }
        EXPECT_EQ(read->at("approximate duration in seconds").stringValue(), "0.100");
    }
}

TEST(ZRCoreAudioFile, SettersOfAFileBeingReadShowTheirFailure)
{
    const std::string path = ZRTestScratchFolder("CoreAudioFileSetters") + "/tone.wav";
    ASSERT_TRUE(ZRTestRun("sox -n -r 44100 -c 1 -b 16 '" + path + "' synth 0.1 sine 440"));
    auto file = ZRCoreAudioFile::fileWithPath(path);
    ASSERT_TRUE(file);
    ZRRecordingAlertPresenter alerts;
    file->setProperties({});
    EXPECT_TRUE(alerts.alerts().empty());
    file->setProperties({ { "title", "x" } });
    file->setMagicCookie({});
    ASSERT_EQ(alerts.alerts().size(), 2U);
    EXPECT_EQ(alerts.alerts()[0].informativeText,
        "Setting the properties to the audio file failed because a permissions error occurred.");
    EXPECT_EQ(alerts.alerts()[1].messageText, "An audio file error occurred");
}

TEST(ZRCoreAudioFile, ReadsTheChannelLayoutOfTheFile)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileLayout");
    // A tone on every channel of an FFmpeg layout of `channels` channels.
    const auto ffmpeg = [&](const std::string& layout, int channels, const std::string& options, const char* name) {
        std::string pan = "pan=" + layout;
        for (int i = 0; i < channels; ++i)
            pan += "|c" + std::to_string(i) + "=c0";
        return "ffmpeg -v error -f lavfi -i sine=d=0.1 -af '" + pan + "' " + options + " '" + folder + "/" + name + "'";
    };
    struct Case {
        const char* name;
        std::string command;
        uint32_t bitmap;
    };
    const Case cases[] = {
        // The WAVE channel mask, which sox writes for more than two channels.
        { "surround.wav", "sox -n -r 48000 -c 6 -b 24 '" + folder + "/surround.wav' synth 0.1 sine 440", 0x3F },
        { "quad.wav", ffmpeg("quad", 4, "-c:a pcm_s16le", "quad.wav"), 0x33 },
        // MPEG-4's channel configuration, from AAC's and Apple Lossless's own configuration.
        { "stereo.m4a", ffmpeg("stereo", 2, "-c:a aac", "stereo.m4a"), 0x3 },
        { "surround.m4a", ffmpeg("5.1", 6, "-c:a aac", "surround.m4a"), 0x3F },
        { "lossless.m4a", ffmpeg("5.1", 6, "-c:a alac", "lossless.m4a"), 0x3F },
        // CAF's 'chan' chunk: FFmpeg writes 5.1 with the surrounds at the sides.
        { "side.caf", ffmpeg("5.1(side)", 6, "-c:a pcm_s16le", "side.caf"), 0x60F },
        { "mono.caf", ffmpeg("mono", 1, "-c:a pcm_s16le", "mono.caf"), 0x4 },
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        ASSERT_TRUE(ZRTestRun(entry.command));
        const auto layout = ZRCoreAudioFile::fileWithPath(folder + "/" + entry.name)->channelLayout();
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->layout()->mChannelLayoutTag, 1U << 16);
        EXPECT_EQ(layout->layout()->mChannelBitmap, entry.bitmap);
    }
    // Three channels without a mask have no layout.
    ASSERT_TRUE(ZRTestRun("sox -n -r 48000 -c 3 '" + folder + "/three.wav' synth 0.1 sine 440"));
    EXPECT_FALSE(ZRCoreAudioFile::fileWithPath(folder + "/three.wav")->channelLayout());
}

TEST(ZRCoreAudioFile, BadInputGivesTheServiceErrorNeverACrash)
{
    const std::string folder = ZRTestScratchFolder("CoreAudioFileBadInput");
    const std::string wave = folder + "/good.wav";
    ASSERT_TRUE(ZRTestRun("sox -n -r 44100 -c 2 -b 16 '" + wave + "' synth 0.5 sine 440"));
    const std::string bytes = ZRTestContentsOfFile(wave);

    EXPECT_EQ(openError(folder + "/missing.wav")->localizedDescription(),
        "Opening an audio file failed because the audio file was not found.");
    writeBytes(folder + "/empty.wav", "");
    EXPECT_EQ(openError(folder + "/empty.wav")->code(), int32_t(kAudioFileInvalidFileError));
    // A file that ends within its header is a damaged file of its container, not one of an unknown type.
    writeBytes(folder + "/header.wav", bytes.substr(0, 20));
    EXPECT_EQ(openError(folder + "/header.wav")->code(), int32_t(kAudioFileInvalidFileError));
    std::mt19937 random(3);
    std::string noise(20000, '\0');
    for (char& byte : noise)
        byte = char(random());
    writeBytes(folder + "/noise.wav", noise);
    EXPECT_EQ(openError(folder + "/noise.wav")->code(), int32_t(kAudioFileUnsupportedFileTypeError));
    EXPECT_EQ(openError(folder)->code(), int32_t(kAudioFileInvalidFileError));
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=d=0.2 '" + folder + "/sun.au'"));
    EXPECT_EQ(openError(folder + "/sun.au")->localizedDescription(),
        "Opening an audio file failed because the file type is not supported.");
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=d=0.2 -c:a adpcm_ms '" + folder + "/adpcm.wav'"));
    EXPECT_EQ(openError(folder + "/adpcm.wav")->code(), int32_t(kAudioFileUnsupportedDataFormatError));
    writeBytes(folder + "/locked.wav", bytes);
    chmod((folder + "/locked.wav").c_str(), 0);
    const auto refused = [&] { return openError(folder + "/locked.wav")->code() == kAudioFilePermissionsError; };
    // Root reads any file; a child that gives root up meets the permission bits.
    EXPECT_TRUE(geteuid() != 0 ? refused() : ZRTestRunInChildProcess([&] {
        return setgid(65534) == 0 && setuid(65534) == 0 && refused();
    }));

    // A header that claims more data than the file holds: the frames that are there, then the end.
    writeBytes(folder + "/cut.wav", bytes.substr(0, bytes.size() / 2 + 1));
    auto cut = ZRCoreAudioFile::fileWithPath(folder + "/cut.wav");
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->numberOfPackets(), (bytes.size() / 2 + 1 - 44) / 4);
    uint32_t count = UINT32_MAX;
    ASSERT_TRUE(cut->readNumberOfPackets(&count));
    EXPECT_EQ(count, cut->numberOfPackets());
    EXPECT_EQ(cut->readBuffer()->length(), count * 4);
    // Past the end, and with an absurd count: nothing read and nothing allocated for it.
    cut->setCurrentPacket(UINT32_MAX - 5);
    count = UINT32_MAX;
    ASSERT_TRUE(cut->readNumberOfPackets(&count));
    EXPECT_EQ(count, 0U);

    // A header claiming megabytes per packet over a few bytes of data holds no packet, and says its largest is 0,
    // so that nobody sizes a buffer by the claim (the CAF description's bytes per packet sit at bytes 36 to 39).
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=d=0.01 -c:a pcm_s16be '" + folder + "/short.caf'"));
    std::string caf = ZRTestContentsOfFile(folder + "/short.caf");
    ASSERT_EQ(caf.substr(8, 4), "desc");
    caf.replace(36, 4, std::string("\x00\x32\x35\x36", 4));
    writeBytes(folder + "/claims.caf", caf);
    auto claims = ZRCoreAudioFile::fileWithPath(folder + "/claims.caf");
    ASSERT_TRUE(claims);
    EXPECT_EQ(claims->numberOfPackets(), 0U);
    EXPECT_EQ(claims->maximumPacketSize(), 0U);

    // A compressed file cut short reads the packets before the cut.
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=d=2 -c:a libmp3lame '" + folder + "/whole.mp3'"));
    const std::string mp3 = ZRTestContentsOfFile(folder + "/whole.mp3");
    writeBytes(folder + "/cut.mp3", mp3.substr(0, mp3.size() / 2));
    auto cutMP3 = ZRCoreAudioFile::fileWithPath(folder + "/cut.mp3");
    ASSERT_TRUE(cutMP3);
    EXPECT_GT(cutMP3->numberOfPackets(), 30U);
    EXPECT_LT(cutMP3->numberOfPackets(), 50U);
    // Cut within its first frame, it is damaged.
    writeBytes(folder + "/tag-only.mp3", mp3.substr(0, 200));
    EXPECT_EQ(openError(folder + "/tag-only.mp3")->code(), int32_t(kAudioFileInvalidFileError));

    // Creating where no folder is, or over an existing file.
    ZRErrorPtr error;
    EXPECT_FALSE(ZRCoreAudioFile::fileWithPath(folder + "/no/folder.wav", kAudioFileWAVEType,
        ZRAudioStreamDescription(pcm(16, kAudioFormatFlagIsSignedInteger)), &error));
    EXPECT_EQ(error->code(), -43);
    EXPECT_FALSE(ZRCoreAudioFile::fileWithPath(
        wave, kAudioFileWAVEType, ZRAudioStreamDescription(pcm(16, kAudioFormatFlagIsSignedInteger)), &error));
    EXPECT_EQ(error->code(), -48);
    // Big-endian samples have no place in a WAVE file.
    EXPECT_FALSE(ZRCoreAudioFile::fileWithPath(folder + "/big.wav", kAudioFileWAVEType,
        ZRAudioStreamDescription(pcm(16, kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsBigEndian)), &error));
    EXPECT_EQ(error->localizedDescription(), "Creating an audio file failed because the format is not supported.");
}
