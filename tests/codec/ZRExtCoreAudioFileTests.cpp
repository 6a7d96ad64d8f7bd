#include <zrbase/codec/ZRExtCoreAudioFile.h>

#include "support/ZRTestAudioTools.h"
#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace {

constexpr uint32_t rate = 44100;
// Not a multiple of any codec's packet, so that the last packet is padded.
constexpr uint32_t length = 44100 + 37;

// Writes the test signal in blocks of 1000 frames.
bool writeSignal(ZRExtCoreAudioFile& file, uint32_t channels, uint32_t frames = length)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(channels, 1000);
    for (uint32_t done = 0; done < frames; done += 1000) {
        const uint32_t count = std::min(1000U, frames - done);
        buffer->setFrames(count);
        for (uint32_t channel = 0; channel < channels; ++channel) {
            for (uint32_t i = 0; i < count; ++i)
                buffer->setSampleValue(ZRTestSignal(channel, done + i), i, channel);
        }
        if (!file.writeBuffer(*buffer))
            return false;
    }
    return true;
}

std::vector<float> signal(uint32_t channel, uint32_t frames = length)
{
    std::vector<float> samples(frames);
    for (uint32_t i = 0; i < frames; ++i)
        samples[i] = ZRTestSignal(channel, i);
    return samples;
}

struct Encoding {
    const char* name;
    AudioFileTypeID type;
    AudioFormatID format;
    const char* codec;
    // Least signal-to-noise ratio of each channel; 0 for bit-exact.
    double snr;
};

} // namespace

TEST(ZRExtCoreAudioFile, EncodesEveryWritableFormatAndReadsBackTheFramesWritten)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileEncodings");
    const Encoding encodings[] = {
        { "aac.m4a", kAudioFileM4AType, kAudioFormatMPEG4AAC, "aac", 20 },
        { "aac.mp4", kAudioFileMPEG4Type, kAudioFormatMPEG4AAC, "aac", 20 },
        { "alac.m4a", kAudioFileM4AType, kAudioFormatAppleLossless, "alac", 0 },
        { "alac.caf", kAudioFileCAFType, kAudioFormatAppleLossless, "alac", 0 },
        { "lame.mp3", kAudioFileMP3Type, kAudioFormatMPEGLayer3, "mp3", 20 },
    };
    for (const Encoding& encoding : encodings) {
        SCOPED_TRACE(encoding.name);
        const std::string path = folder + "/" + encoding.name;
        auto file = ZRExtCoreAudioFile::createWithPath(path, encoding.type, encoding.format, rate, 16, 2);
        ASSERT_TRUE(file);
        ASSERT_TRUE(writeSignal(*file, 2));
        ZRErrorPtr error;
        ASSERT_TRUE(file->close(&error));

        EXPECT_EQ(ZRTestProbe(path, "codec_name"), encoding.codec);
        EXPECT_EQ(ZRTestProbe(path, "sample_rate"), "44100");
        EXPECT_EQ(ZRTestProbe(path, "channels"), "2");

        const auto frames = ZRTestReadWithExtCoreAudioFile(path, 1500);
        ASSERT_EQ(frames.size(), 2U);
        EXPECT_EQ(frames[0].size(), length);
        for (uint32_t channel = 0; channel < 2; ++channel) {
            if (encoding.snr == 0)
                EXPECT_EQ(frames[channel], signal(channel));
            else
                EXPECT_GT(ZRTestSNR(signal(channel), frames[channel]), encoding.snr) << "channel " << channel;
        }
        // The encoder's delay is gone: ffmpeg, which honours the container's record of it, agrees sample for sample
        // with the lossless files and closely with the lossy ones.
        const auto reference = ZRTestDecodeWithFFmpeg(path, 2);
        EXPECT_GT(ZRTestSNR(reference[0], frames[0]), encoding.snr == 0 ? 200 : 40);
    }
}

TEST(ZRExtCoreAudioFile, MP3KeepsDelayPaddingAndTagsWhereOtherProgramsReadThem)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileMP3");
    struct Case {
        const char* name;
        uint32_t clientRate;
        uint32_t written;
        // The rate the encoder takes and the frames the file holds at it.
        uint32_t fileRate;
        uint32_t frames;
    };
    // 38 packets and 35 frames: with the encoder's delay of 1105 frames the padding outgrows the last packet.
    const Case cases[] = {
        { "padding-packet.mp3", rate, 1152 * 38 + 35, rate, 1152 * 38 + 35 },
        { "resampled.mp3", 96000, 30011, 48000, 15006 },
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        const std::string path = folder + "/" + entry.name;
        auto file = ZRExtCoreAudioFile::createWithPath(
            path, kAudioFileMP3Type, kAudioFormatMPEGLayer3, entry.clientRate, 16, 2);
        ASSERT_TRUE(file);
        ASSERT_EQ(ZRAudioFileService::setInfoDictionary(
                      file->audioFileID(), { { "title", "Layer Three" }, { "artist", "Encoder" }, { "year", "2026" } }),
            noErr);
        ASSERT_TRUE(writeSignal(*file, 2, entry.written));
        ASSERT_TRUE(file->close());

        EXPECT_EQ(ZRTestProbe(path, "codec_name"), "mp3");
        EXPECT_EQ(ZRTestProbe(path, "sample_rate"), std::to_string(entry.fileRate));
        EXPECT_EQ(ZRTestProbe(path, "channels"), "2");
        EXPECT_EQ(ZRTestProbe(path, "format_tags=title"), "Layer Three");
        EXPECT_EQ(ZRTestProbe(path, "format_tags=artist"), "Encoder");
        EXPECT_EQ(ZRTestProbe(path, "format_tags=date"), "2026");
        // ffprobe's duration counts every packet, the delay and the padding (each less than a packet) included.
        const double seconds = std::stod(ZRTestProbe(path, "duration"));
        EXPECT_GE(seconds * entry.fileRate, entry.frames - 1.0);
        EXPECT_LT(seconds * entry.fileRate, entry.frames + 2 * 1152.0);

        // The encoder tag gives ffmpeg and us the frames written, decoded alike.
        const auto ours = ZRTestReadWithExtCoreAudioFile(path, 1000);
        ASSERT_EQ(ours.size(), 2U);
        EXPECT_EQ(ours[0].size(), entry.frames);
        EXPECT_EQ(ours, ZRTestDecodeWithFFmpeg(path, 2));
        if (entry.clientRate == entry.fileRate) {
            EXPECT_GT(ZRTestSNR(signal(0, entry.frames), ours[0]), 20);
        }
    }
}

TEST(ZRExtCoreAudioFile, AC3KeepsNoDelayRecordSoItsPacketsReadWhole)
{
    const std::string path = ZRTestScratchFolder("ExtCoreAudioFileAC3") + "/signal.ac3";
    auto file = ZRExtCoreAudioFile::createWithPath(path, kAudioFileAC3Type, kAudioFormatAC3, 48000, 16, 2);
    ASSERT_TRUE(file);
    ASSERT_TRUE(writeSignal(*file, 2));
    ASSERT_TRUE(file->close());
    EXPECT_EQ(ZRTestProbe(path, "codec_name"), "ac3");
    auto reader = ZRExtCoreAudioFile::openWithPath(path);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->fileFormatName(), "AC-3 Audio File");
    // Only Apple Lossless takes the rate of the file; the others run at the client's.
    EXPECT_EQ(reader->format().rate(), 48000);
    EXPECT_EQ(reader->frames(), reader->numberOfPackets() * 1536);
    EXPECT_GE(reader->frames(), length);
    // The raw stream starts with the encoder's 256 frames of delay; past them the signal is there.
    const auto frames = ZRTestReadWithExtCoreAudioFile(path);
    ASSERT_EQ(frames.size(), 2U);
    const std::vector<float> delayed(frames[0].begin() + 256, frames[0].begin() + 256 + 40000);
    EXPECT_GT(ZRTestSNR(signal(0, 40000), delayed), 15);
}

TEST(ZRExtCoreAudioFile, BitRateDecidesTheSizeOfAnAACFile)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileBitRate");
    size_t sizes[2] {};
    const uint32_t bitrates[2] { 64000, 192000 };
    for (int i = 0; i < 2; ++i) {
        const std::string path = folder + "/" + std::to_string(bitrates[i]) + ".m4a";
        auto file = ZRExtCoreAudioFile::createWithPath(path, kAudioFileM4AType, kAudioFormatMPEG4AAC, rate, 16, 2);
        ASSERT_TRUE(file);
        file->setBitrate(bitrates[i]);
        ASSERT_TRUE(writeSignal(*file, 2));
        ASSERT_TRUE(file->close());
        sizes[i] = ZRTestContentsOfFile(path).size();
    }
    EXPECT_GT(sizes[1], sizes[0] * 2);
}

TEST(ZRExtCoreAudioFile, TagsSetBeforeTheFirstWriteReachTheFile)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileTags");
    const std::string path = folder + "/tagged.m4a";
    auto file = ZRExtCoreAudioFile::createWithPath(path, kAudioFileM4AType, kAudioFormatMPEG4AAC, rate, 16, 1);
    ASSERT_TRUE(file);
    file->setProperties({ { "title", ZRPropertyList("Take 2") }, { "artist", ZRPropertyList("Quartet") } });
    ASSERT_TRUE(writeSignal(*file, 1));
    ASSERT_TRUE(file->close());
    const std::optional<ZRDictionary> tags = ZRExtCoreAudioFile::openWithPath(path)->properties();
    ASSERT_TRUE(tags);
    EXPECT_EQ(tags->at("title").stringValue(), "Take 2");
    EXPECT_EQ(tags->at("artist").stringValue(), "Quartet");
}

TEST(ZRExtCoreAudioFile, AnswersPacketsFramesCookieAndTagsOfACompressedFile)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFilePackets");
    const std::string path = folder + "/tone.m4a";
    ASSERT_TRUE(ZRTestRun("ffmpeg -v error -f lavfi -i sine=f=440:d=2 -ac 2 -c:a aac -metadata title=Tone -metadata "
                          "artist=Someone '"
        + path + "'"));
    auto file = ZRExtCoreAudioFile::openWithPath(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->fileFormatName(), "AAC Audio File");
    EXPECT_EQ(file->format().format(), kAudioFormatMPEG4AAC);
    EXPECT_EQ(file->frames(), 88200U);
    EXPECT_EQ(file->frameAtPacket(3), 3072U);
    EXPECT_EQ(file->packetForFrame(3000), 2U);
    EXPECT_EQ(file->offsetInPacketForFrame(3000), 952U);
    const std::optional<ZRData> cookie = file->magicCookie();
    ASSERT_TRUE(cookie);
    EXPECT_EQ(cookie->at(0), 0x03); // an elementary stream descriptor
    const std::optional<ZRDictionary> tags = file->properties();
    ASSERT_TRUE(tags);
    EXPECT_EQ(tags->at("title").stringValue(), "Tone");
    EXPECT_EQ(tags->at("artist").stringValue(), "Someone");

    uint32_t packets = 10;
    std::vector<uint8_t> bytes(packets * file->maximumPacketSize());
    std::vector<AudioStreamPacketDescription> descriptions(packets);
    uint32_t read = 0;
    ASSERT_TRUE(file->readPacketsFrom(5, &packets, bytes.data(), &read, descriptions.data()));
    EXPECT_EQ(packets, 10U);
    EXPECT_EQ(descriptions[9].mStartOffset + descriptions[9].mDataByteSize, read);
    uint32_t past = 4;
    ASSERT_TRUE(file->readPacketsFrom(file->numberOfPackets(), &past, bytes.data(), &read, descriptions.data()));
    EXPECT_EQ(past, 0U);

    // With the file closed every call fails, and the packet-to-frame question gives its argument back.
    ASSERT_TRUE(file->close());
    EXPECT_EQ(file->frameAtPacket(7), 7U);
}

TEST(ZRExtCoreAudioFile, TurnsLinearPCMAwayAndReportsLittle)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileRefusals");
    ASSERT_TRUE(ZRTestRun("sox -n -r 44100 -c 1 -b 16 '" + folder + "/pcm.wav' synth 0.1 sine 440"));
    ASSERT_TRUE(ZRTestRun("sox -n -r 44100 -c 1 -b 16 '" + folder + "/pcm.aiff' synth 0.1 sine 440"));
    EXPECT_FALSE(ZRExtCoreAudioFile::openWithPath(folder + "/pcm.wav"));
    EXPECT_FALSE(ZRExtCoreAudioFile::openWithPath(folder + "/pcm.aiff"));

    ZRErrorPtr error;
    EXPECT_FALSE(ZRExtCoreAudioFile::openWithPath(folder + "/missing.m4a", &error));
    EXPECT_FALSE(ZRExtCoreAudioFile::createWithPath(
        folder + "/no/such/folder.m4a", kAudioFileM4AType, kAudioFormatMPEG4AAC, rate, 16, 2, &error));
    EXPECT_FALSE(error);

    // The reading API, on the other hand, tells why.
    EXPECT_FALSE(ZRExtCoreAudioFile::openForReadingWithPath(folder + "/missing.m4a", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(), "Opening an audio file failed because the audio file was not found.");
}

TEST(ZRExtCoreAudioFile, AppleLosslessTakesItsSourceDepthAsFlags)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileDepth");
    auto twenty = ZRExtCoreAudioFile::createWithPath(
        folder + "/20.m4a", kAudioFileM4AType, kAudioFormatAppleLossless, rate, 20, 2);
    auto eighteen = ZRExtCoreAudioFile::createWithPath(
        folder + "/18.m4a", kAudioFileM4AType, kAudioFormatAppleLossless, rate, 18, 2);
    ASSERT_TRUE(twenty && eighteen);
    EXPECT_EQ(twenty->format().flags(), 2U);
    EXPECT_EQ(eighteen->format().flags(), 0U);
    EXPECT_EQ(twenty->format().rate(), rate);
}

TEST(ZRExtCoreAudioFile, ReadsFilesOtherToolsWroteAsTheyDecodeThem)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileInterop");
    struct Made {
        const char* name;
        std::string command;
        double snr; // against ffmpeg's own decoding; 0 for bit-exact
    };
    const std::string sine = "-f lavfi -i sine=f=440:d=1 -f lavfi -i sine=f=660:d=1 -filter_complex amerge";
    const Made made[] = {
        { "s16.wav", "sox -n -r 44100 -c 2 -b 16 %s synth 1 sine 440 sine 660", 0 },
        { "s16mono.wav", "sox -n -r 22050 -c 1 -b 16 %s synth 1 sine 440", 0 },
        { "s24x6.wav", "sox -n -r 48000 -c 6 -b 24 %s synth 0.5 sine 440", 0 },
        { "f32.wav", "sox -n -r 44100 -c 2 -e floating-point -b 32 %s synth 1 sine 440 sine 660", 0 },
        { "u8.wav", "sox -n -r 8000 -c 1 -b 8 %s synth 1 sine 440", 0 },
        { "s16.aiff", "sox -n -r 44100 -c 2 -b 16 %s synth 1 sine 440 sine 660", 0 },
        { "sowt.aifc", "ffmpeg -v error " + sine + " -c:a pcm_s16le -f aiff %s", 0 },
        { "fl32.aifc", "ffmpeg -v error " + sine + " -c:a pcm_f32be -f aiff %s", 0 },
        { "s24.caf", "ffmpeg -v error " + sine + " -c:a pcm_s24be %s", 0 },
        { "rf64.wav", "ffmpeg -v error " + sine + " -c:a pcm_s16le -rf64 always %s", 0 },
        { "ulaw.wav", "ffmpeg -v error " + sine + " -c:a pcm_mulaw %s", 0 },
        { "alaw.caf", "ffmpeg -v error " + sine + " -c:a pcm_alaw %s", 0 },
        { "ima4.aifc", "ffmpeg -v error " + sine + " -c:a adpcm_ima_qt -f aiff %s", 0 },
        { "flac.flac", "sox -n -r 44100 -c 2 -b 16 %s synth 1 sine 440 sine 660", 0 },
        { "ffmpeg.flac", "ffmpeg -v error " + sine + " -c:a flac %s", 0 },
        // Ogg keeps the delay in the first page and the padding in the last page's granule position, and Vorbis's
        // first packet makes no frames: the same decoder must give the same frames, every one of them.
        { "vorbis.ogg", "ffmpeg -v error " + sine + " -c:a libvorbis %s", 0 },
        { "sox.ogg", "sox -n -r 44100 -c 2 %s synth 1 sine 440 sine 660", 0 },
        { "opus.ogg", "ffmpeg -v error " + sine + " -c:a libopus %s", 0 },
        { "ffmpeg.mp3", "ffmpeg -v error " + sine + " -c:a libmp3lame %s", 60 },
        { "ffmpeg.m4a", "ffmpeg -v error " + sine + " -c:a aac %s", 60 },
        { "alac.m4a", "ffmpeg -v error " + sine + " -c:a alac %s", 0 },
        { "ffmpeg.ac3", "ffmpeg -v error " + sine + " -c:a ac3 %s", 60 },
    };
    for (const Made& file : made) {
        SCOPED_TRACE(file.name);
        const std::string path = folder + "/" + file.name;
        ASSERT_TRUE(ZRTestMakeFile(file.command, path));
        const auto ours = ZRTestReadWithExtCoreAudioFile(path, 1000);
        ASSERT_FALSE(ours.empty());
        auto theirs = ZRTestDecodeWithFFmpeg(path, uint32_t(ours.size()));
        if (file.snr == 0) {
            EXPECT_EQ(ours[0].size(), theirs[0].size());
        } else {
            // ffmpeg's command line drops the encoder's delay but keeps the padding after the last frame; raw AC-3
            // records neither.
            if (std::string_view(file.name) != "ffmpeg.ac3") {
                EXPECT_EQ(ours[0].size(), 44100U);
            }
            for (std::vector<float>& channel : theirs)
                channel.resize(std::min(channel.size(), ours[0].size()));
        }
        for (size_t channel = 0; channel < ours.size(); ++channel) {
            if (file.snr == 0)
                EXPECT_EQ(ours[channel], theirs[channel]) << "channel " << channel;
            else
                EXPECT_GT(ZRTestSNR(theirs[channel], ours[channel]), file.snr) << "channel " << channel;
        }
    }
}

TEST(ZRExtCoreAudioFile, SeeksToAFrame)
{
    const std::string folder = ZRTestScratchFolder("ExtCoreAudioFileSeek");
    const std::string path = folder + "/signal.m4a";
    auto file = ZRExtCoreAudioFile::createWithPath(path, kAudioFileM4AType, kAudioFormatAppleLossless, rate, 16, 2);
    ASSERT_TRUE(file && writeSignal(*file, 2) && file->close());
    auto reader = ZRExtCoreAudioFile::openForReadingWithPath(path);
    ASSERT_TRUE(reader);
    ASSERT_TRUE(reader->seekToFrame(30001));
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 100);
    uint32_t frames = 0;
    ASSERT_TRUE(reader->readBuffer(*buffer, &frames));
    ASSERT_EQ(frames, 100U);
    for (uint32_t i = 0; i < 100; ++i)
        ASSERT_EQ(buffer->sampleValueAtIndex(i, 1), ZRTestSignal(1, 30001 + i)) << i;

    // After a seek, the frames a reading from the start gives there: exactly where the decoder's state depends on
    // the packets alone, closely where it settles over time (AAC, Opus).
    const std::string sine = "ffmpeg -v error -f lavfi -i sine=f=440:d=1 -ac 2 ";
    const std::tuple<const char*, std::string, double> made[] = {
        { "seek.flac", sine + "-c:a flac %s", 0 },
        { "seek.ogg", sine + "-c:a libvorbis %s", 0 },
        { "seek.mp3", sine + "-c:a libmp3lame %s", 0 },
        { "seek.m4a", sine + "-c:a aac %s", 60 },
        { "seek.opus", sine + "-c:a libopus %s", 40 },
        // Opus packets of 60 ms, not the 20 ms its header would suggest: the pass over the packets tells.
        { "seek60.opus", sine + "-c:a libopus -frame_duration 60 %s", 40 },
    };
    for (const auto& [name, command, snr] : made) {
        SCOPED_TRACE(name);
        const std::string made = folder + "/" + name;
        ASSERT_TRUE(ZRTestMakeFile(command, made));
        const auto whole = ZRTestReadWithExtCoreAudioFile(made);
        ASSERT_FALSE(whole.empty());
        auto seeking = ZRExtCoreAudioFile::openForReadingWithPath(made);
        ASSERT_TRUE(seeking);
        auto block = ZRNativeAudioBuffer::bufferWithChannels(2, 500);
        for (const uint32_t target : { 30001U, 7U }) {
            ASSERT_TRUE(seeking->seekToFrame(target));
            ASSERT_TRUE(seeking->readBuffer(*block, &frames));
            ASSERT_EQ(frames, 500U);
            const std::vector<float> expected(whole[0].begin() + target, whole[0].begin() + target + 500);
            const std::vector<float> actual(block->channel(0), block->channel(0) + 500);
            if (snr == 0)
                EXPECT_EQ(actual, expected) << target;
            else
                EXPECT_GT(ZRTestSNR(expected, actual), snr) << target;
        }
    }
}

TEST(ZRExtCoreAudioFile, ReadsLinearPCMAlikeInAnyBlocksAndAfterSeeks)
{
    // Linear PCM is read from the file ahead of the caller: blocks of any size, and seeks into, before and past what
    // was read ahead, give the frames the file holds.
    const std::string path = ZRTestScratchFolder("ExtCoreAudioFilePCMBlocks") + "/s16.wav";
    ASSERT_TRUE(ZRTestRun("sox -n -r 44100 -c 2 -b 16 '" + path + "' synth 1 sine 440 sine 660"));
    const auto whole = ZRTestReadWithExtCoreAudioFile(path, 44100);
    ASSERT_EQ(whole.size(), 2U);
    ASSERT_EQ(whole[0].size(), 44100U);
    EXPECT_EQ(ZRTestReadWithExtCoreAudioFile(path, 333), whole);
    auto reader = ZRExtCoreAudioFile::openForReadingWithPath(path);
    ASSERT_TRUE(reader);
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 100);
    for (const uint32_t frame : { 30001U, 5U, 30101U, 16383U, 44050U }) {
        SCOPED_TRACE(frame);
        ASSERT_TRUE(reader->seekToFrame(frame));
        buffer->setFrames(100);
        uint32_t frames = 0;
        ASSERT_TRUE(reader->readBuffer(*buffer, &frames));
        ASSERT_EQ(frames, std::min(100U, 44100 - frame));
        for (uint32_t channel = 0; channel < 2; ++channel) {
            for (uint32_t i = 0; i < frames; ++i)
                ASSERT_EQ(buffer->sampleValueAtIndex(i, channel), whole[channel][frame + i]) << channel << " " << i;
        }
    }
}
