#include <zrbase/codec/ZRCoreAudioFile.h>
#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/system/ZRAppleDouble.h>
#include <zrbase/host/system/ZRFinderInfo.h>
#include <zrbase/host/system/ZRResourceFork.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include "support/ZRTestAudioTools.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <random>
#include <sys/xattr.h>

// Sound Designer II files: raw big-endian PCM in the data fork, its format in 'STR ' resources of the resource fork.

namespace {

constexpr uint32_t STR = ZRFourCharCode("STR ");

struct Text {
    int16_t id;
    std::string name;
    std::string text;
};

// The three resources as the format has them, with the texts given.
std::vector<Text> fields(const std::string& size, const std::string& rate, const std::string& channels)
{
    return { { 1000, "sample-size", size }, { 1001, "sample-rate", rate }, { 1002, "channels", channels } };
}

ZRData pascalString(const std::string& text)
{
    ZRData bytes(1 + text.size(), uint8_t(text.size()));
    std::copy(text.begin(), text.end(), bytes.begin() + 1);
    return bytes;
}

ZRData forkWith(const std::vector<Text>& texts)
{
    ZRResourceMap map;
    for (const Text& text : texts)
        map.add({ text.id, STR, text.name, 0, std::make_shared<ZRData>(pascalString(text.text)) });
    return *map.data();
}

void writeBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A file of `data` whose fork holds the texts, in the attribute.
std::string soundFile(
    const std::string& folder, const std::string& name, const std::string& data, const std::vector<Text>& texts)
{
    const std::string path = folder + "/" + name;
    writeBytes(path, data);
    EXPECT_TRUE(ZRResourceFork::write(path, forkWith(texts)));
    return path;
}

OSStatus openStatus(const std::string& path)
{
    AudioFileID file = nullptr;
    const OSStatus status = ZRAudioFileService::open(path, file);
    if (file)
        ZRAudioFileService::close(file);
    return status;
}

// Every packet of the file through ZRCoreAudioFile, in runs of 1000.
std::string readAllPackets(ZRCoreAudioFile& file)
{
    std::string bytes;
    for (;;) {
        uint32_t count = 1000;
        if (!file.readNumberOfPackets(&count) || count == 0)
            return bytes;
        bytes.append(static_cast<const char*>(file.readBuffer()->buffer()), file.readBuffer()->length());
    }
}

std::string stringOf(const ZRData& bytes) { return std::string(bytes.begin(), bytes.end()); }

} // namespace

TEST(ZRSoundDesignerII, readsRawBigEndianPCMWithItsForkAsSoxMakesItsWave)
{
    const std::string folder = ZRTestScratchFolder("SoundDesignerIIRead");
    struct Case {
        int bits;
        int channels;
        int rate;
    };
    for (const Case entry : { Case { 16, 2, 44100 }, Case { 24, 1, 48000 }, Case { 24, 3, 32000 } }) {
        const std::string name = std::to_string(entry.bits) + "-" + std::to_string(entry.channels);
        SCOPED_TRACE(name);
        const std::string signal = " -D -n -r " + std::to_string(entry.rate) + " -c " + std::to_string(entry.channels)
            + " -b " + std::to_string(entry.bits) + " -e signed ";
        const std::string synth = " synth 0.75 sine 440 sine 660 sine 880 gain -3";
        const std::string wave = folder + "/" + name + ".wav";
        const std::string raw = folder + "/" + name;
        ASSERT_TRUE(ZRTestRun("sox" + signal + "'" + wave + "'" + synth));
        ASSERT_TRUE(ZRTestRun("sox" + signal + "-t raw -B '" + raw + "'" + synth));
        const std::string pcm = ZRTestContentsOfFile(raw);
        const uint32_t frameBytes = uint32_t(entry.bits / 8 * entry.channels);
        ASSERT_EQ(pcm.size(), size_t(entry.rate) * 3 / 4 * frameBytes);
        ASSERT_TRUE(ZRResourceFork::write(raw,
            forkWith(fields(std::to_string(entry.bits / 8), std::to_string(entry.rate) + ".000000",
                std::to_string(entry.channels)))));

        auto file = ZRCoreAudioFile::fileWithPath(raw);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->fileFormat(), "Sound Designer II Audio File");
        EXPECT_EQ(file->numberOfPackets(), pcm.size() / frameBytes);
        EXPECT_EQ(file->maximumPacketSize(), frameBytes);
        const AudioStreamBasicDescription expected { double(entry.rate), kAudioFormatLinearPCM,
            kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsPacked, frameBytes, 1,
            frameBytes, uint32_t(entry.channels), uint32_t(entry.bits), 0 };
        EXPECT_EQ(std::memcmp(file->audioFormat().description(), &expected, sizeof expected), 0);
        EXPECT_TRUE(readAllPackets(*file) == pcm);

        const auto reference = ZRTestDecodeWithFFmpeg(wave, uint32_t(entry.channels));
        const auto ours = ZRTestReadWithExtCoreAudioFile(raw, 1000);
        ASSERT_EQ(ours.size(), size_t(entry.channels));
        EXPECT_EQ(ours[0].size(), pcm.size() / frameBytes);
        for (int channel = 0; channel < entry.channels; ++channel)
            EXPECT_TRUE(ours[channel] == reference[channel]) << "channel " << channel;
    }
}

TEST(ZRSoundDesignerII, theAppleDoubleCompanionCarriesTheForkAndTheForkNotTheNameDecides)
{
    const std::string folder = ZRTestScratchFolder("SoundDesignerIICompanion");
    const std::string wave = folder + "/tone.wav";
    ASSERT_TRUE(ZRTestRun("sox -D -n -r 22050 -c 1 -b 16 '" + wave + "' synth 0.1 sine 440"));
    // The bytes of a WAVE file and its name, but a fork that makes it Sound Designer II: its header reads as samples.
    const std::string path = folder + "/tone.wav.sd2";
    const std::string bytes = ZRTestContentsOfFile(wave) + "x";
    writeBytes(path, bytes);
    ZRAppleDouble companion;
    companion.setEntry(ZRAppleDouble::finderInfoEntry, ZRData(32, 0));
    companion.setEntry(ZRAppleDouble::resourceForkEntry, forkWith(fields("1", "22050.5", "2")));
    writeBytes(ZRAppleDouble::companionPath(path), stringOf(companion.data()));

    auto file = ZRCoreAudioFile::fileWithPath(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->fileFormat(), "Sound Designer II Audio File");
    EXPECT_EQ(file->audioFormat().description()->mSampleRate, 22050.5);
    EXPECT_EQ(file->audioFormat().description()->mBitsPerChannel, 8u);
    // Whole frames only: the odd byte at the end is no frame.
    EXPECT_EQ(file->numberOfPackets(), bytes.size() / 2);
    EXPECT_EQ(readAllPackets(*file), bytes.substr(0, bytes.size() - 1));

    // A fork without the format's resources leaves the file to its bytes.
    const std::string other = soundFile(folder, "other", ZRTestContentsOfFile(wave), { { 128, "Rate", "1" } });
    file = ZRCoreAudioFile::fileWithPath(other);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->fileFormat(), "WAVE Audio File");
}

TEST(ZRSoundDesignerII, writesTheDataForkAndTheFormatsResourcesAndReadsThemBack)
{
    const std::string folder = ZRTestScratchFolder("SoundDesignerIIWrite");
    struct Case {
        const char* name;
        AudioStreamBasicDescription format;
        const char* size;
        const char* rate;
        const char* channels;
    };
    constexpr AudioFormatFlags sint = kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked;
    constexpr AudioFormatFlags big = kAudioFormatFlagIsBigEndian;
    const Case cases[] = {
        { "s16", { 44100, kAudioFormatLinearPCM, sint | big, 4, 1, 4, 2, 16, 0 }, "2", "44100.000000", "2" },
        { "s24", { 22050.25, kAudioFormatLinearPCM, sint | big, 3, 1, 3, 1, 24, 0 }, "3", "22050.250000", "1" },
        { "s32", { 96000, kAudioFormatLinearPCM, sint | big, 24, 1, 24, 6, 32, 0 }, "4", "96000.000000", "6" },
        { "s8", { 8000, kAudioFormatLinearPCM, sint, 1, 1, 1, 1, 8, 0 }, "1", "8000.000000", "1" },
    };
    std::mt19937 random(11);
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        const std::string path = folder + "/" + entry.name;
        std::string pcm(size_t(3000) * entry.format.mBytesPerFrame, '\0');
        for (char& byte : pcm)
            byte = char(random());
        {
            auto file = ZRCoreAudioFile::fileWithPath(
                path, kAudioFileSoundDesigner2Type, ZRAudioStreamDescription(entry.format));
            ASSERT_TRUE(file);
            for (size_t start = 0; start < pcm.size(); start += 1000 * entry.format.mBytesPerFrame) {
                auto run = ZRAudioBuffer::bufferWithNumberOfBuffers(1, 1000 * entry.format.mBytesPerFrame);
                std::memcpy(run->buffer(), pcm.data() + start, run->length());
                ASSERT_TRUE(file->writeNumberOfPackets(1000, *run, nullptr));
            }
            ASSERT_TRUE(file->close());
        }
        EXPECT_TRUE(ZRTestContentsOfFile(path) == pcm);
        ZRResourceFork::Location location;
        const std::optional<ZRData> fork = ZRResourceFork::read(path, &location);
        ASSERT_TRUE(fork);
        EXPECT_EQ(location, ZRResourceFork::Location::Attribute);
        std::optional<ZRResourceMap> map = ZRResourceMap::mapWithData(*fork);
        ASSERT_TRUE(map);
        ASSERT_EQ(map->types(), std::vector<uint32_t> { STR });
        const std::vector<Text> written = fields(entry.size, entry.rate, entry.channels);
        for (const Text& text : written) {
            const ZRResourceMap::Resource* resource = map->resource(STR, text.id);
            ASSERT_NE(resource, nullptr) << text.name;
            EXPECT_EQ(resource->name, text.name);
            EXPECT_EQ(*resource->handle, pascalString(text.text)) << text.name;
        }
        EXPECT_EQ(ZRFinderInfo::infoAtPath(path).typeCode(), kAudioFileSoundDesigner2Type);

        auto file = ZRCoreAudioFile::fileWithPath(path);
        ASSERT_TRUE(file);
        AudioStreamBasicDescription expected = entry.format;
        expected.mFormatFlags |= big;
        EXPECT_EQ(std::memcmp(file->audioFormat().description(), &expected, sizeof expected), 0);
        EXPECT_TRUE(readAllPackets(*file) == pcm);
    }

    // Only big-endian signed integers; other formats are refused before anything is made.
    const AudioStreamBasicDescription refused[] = {
        { 44100, kAudioFormatLinearPCM, sint, 4, 1, 4, 2, 16, 0 },
        { 44100, kAudioFormatLinearPCM, kAudioFormatFlagIsFloat | big | kAudioFormatFlagIsPacked, 8, 1, 8, 2, 32, 0 },
        { 44100, kAudioFormatLinearPCM, kAudioFormatFlagIsPacked, 1, 1, 1, 1, 8, 0 },
        { 44100, kAudioFormatLinearPCM, sint | big | kAudioFormatFlagIsNonInterleaved, 2, 1, 2, 2, 16, 0 },
        { 44100, ZRFourCharCode("aac "), 0, 0, 1024, 0, 2, 0, 0 },
    };
    for (const AudioStreamBasicDescription& format : refused) {
        AudioFileID file = nullptr;
        EXPECT_EQ(ZRAudioFileService::create(folder, "refused", kAudioFileSoundDesigner2Type, format, file),
            kAudioFileUnsupportedDataFormatError);
    }
    EXPECT_FALSE(ZRTestRun("test -e '" + folder + "/refused'"));
}

TEST(ZRSoundDesignerII, badForksAndDataForksGiveTheirStatus)
{
    const std::string folder = ZRTestScratchFolder("SoundDesignerIIBad");
    const std::string pcm(1000, '\x11');
    struct Case {
        const char* name;
        std::vector<Text> texts;
        OSStatus status;
    };
    const Case cases[] = {
        { "missing", { { 1000, "sample-size", "2" }, { 1002, "channels", "2" } }, kAudioFileInvalidFileError },
        { "words", fields("2", "fast", "2"), kAudioFileInvalidFileError },
        { "trailing", fields("2", "44100", "2 channels"), kAudioFileInvalidFileError },
        { "fraction", fields("2.5", "44100", "2"), kAudioFileInvalidFileError },
        { "empty", fields("2", "", "2"), kAudioFileInvalidFileError },
        { "silent", fields("2", "44100", "0"), kAudioFileInvalidFileError },
        { "negative", fields("2", "-44100", "1"), kAudioFileInvalidFileError },
        { "endless", fields("2", "inf", "1"), kAudioFileInvalidFileError },
        { "seven", fields("7", "44100", "2"), kAudioFileUnsupportedDataFormatError },
        { "crowd", fields("2", "44100", "70000"), kAudioFileUnsupportedDataFormatError },
        { "blanks", fields(" 2", "44100.000000 ", "2"), noErr },
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        EXPECT_EQ(openStatus(soundFile(folder, entry.name, pcm, entry.texts)), entry.status);
    }

    // A Pascal string longer than its resource.
    const std::string cut = soundFile(folder, "cut", pcm, fields("2", "44100", "2"));
    ZRResourceMap map = *ZRResourceMap::mapWithData(*ZRResourceFork::read(cut));
    map.resource(STR, 1001)->handle->pop_back();
    ASSERT_TRUE(ZRResourceFork::write(cut, *map.data()));
    EXPECT_EQ(openStatus(cut), kAudioFileInvalidFileError);

    // An empty data fork is a file without audio; less than a frame is one as well.
    for (const std::string& data : { std::string(), std::string(3, '\0') }) {
        SCOPED_TRACE(data.size());
        auto file = ZRCoreAudioFile::fileWithPath(soundFile(folder, "short", data, fields("2", "44100", "2")));
        ASSERT_TRUE(file);
        EXPECT_EQ(file->numberOfPackets(), 0u);
        EXPECT_EQ(file->maximumPacketSize(), 0u);
        uint32_t count = 10;
        EXPECT_TRUE(file->readNumberOfPackets(&count));
        EXPECT_EQ(count, 0u);
    }
}
