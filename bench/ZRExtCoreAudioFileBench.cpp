#include <zrbase/codec/ZRExtCoreAudioFile.h>

#include "ZRBenchmarkRatio.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <vector>

// Reading files into native float buffers against the bare work underneath: the WAVE file's bytes read with read(),
// and the AAC file decoded by FFmpeg's own demux and decode loop. "ratio" is the reference's time over ours.
namespace {

// A file made once by a command, its path put between the command's two parts.
std::string benchmarkFile(const char* name, const char* command, const char* arguments)
{
    const std::string path = (std::filesystem::temp_directory_path() / name).string();
    if (!std::filesystem::exists(path) || std::filesystem::file_size(path) == 0)
        std::system((std::string(command) + " '" + path + "' " + arguments + " >/dev/null 2>&1").c_str());
    return path;
}

// Opens, reads and closes a file, into a buffer made beforehand as the references' buffers are.
int64_t readAll(const std::string& path, ZRNativeAudioBuffer& buffer)
{
    auto file = ZRExtCoreAudioFile::openForReadingWithPath(path);
    if (!file)
        return -1;
    int64_t total = 0;
    uint32_t frames = 0;
    while (file->readBuffer(buffer, &frames) && frames > 0)
        total += frames;
    return total;
}

void BM_ExtCoreAudioFile_readWAVE(benchmark::State& state)
{
    const std::string path
        = benchmarkFile("ZRExtCoreAudioFileBench.wav", "sox -n -r 44100 -c 2 -b 16", "synth 60 sine 440 sine 660");
    std::vector<char> bytes(1 << 16);
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, uint32_t(state.range(0)));
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(readAll(path, *buffer)); },
        [&] {
            const int descriptor = ::open(path.c_str(), O_RDONLY);
            while (::read(descriptor, bytes.data(), bytes.size()) > 0)
                benchmark::ClobberMemory();
            ::close(descriptor);
        },
        int64_t(std::filesystem::file_size(path)));
}
BENCHMARK(BM_ExtCoreAudioFile_readWAVE)
    ->Arg(1024)
    ->Arg(4096)
    ->Arg(65536)
    ->MinTime(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// FFmpeg's decoder loop on the same file, to float planar as the decoder makes it.
int64_t decodeWithFFmpeg(const std::string& path)
{
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0)
        return -1;
    avformat_find_stream_info(context, nullptr);
    const int stream = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    const AVCodec* codec = avcodec_find_decoder(context->streams[stream]->codecpar->codec_id);
    AVCodecContext* decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, context->streams[stream]->codecpar);
    avcodec_open2(decoder, codec, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    int64_t total = 0;
    while (av_read_frame(context, packet) >= 0) {
        if (packet->stream_index == stream && avcodec_send_packet(decoder, packet) >= 0) {
            while (avcodec_receive_frame(decoder, frame) >= 0)
                total += frame->nb_samples;
        }
        av_packet_unref(packet);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&context);
    return total;
}

void BM_ExtCoreAudioFile_decodeAAC(benchmark::State& state)
{
    const std::string path = benchmarkFile("ZRExtCoreAudioFileBench.m4a",
        "ffmpeg -y -f lavfi -i sine=f=440:d=60 -f lavfi -i sine=f=660:d=60 -filter_complex amerge -c:a aac -f ipod",
        "");
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(2, 4096);
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(readAll(path, *buffer)); },
        [&] { benchmark::DoNotOptimize(decodeWithFFmpeg(path)); }, 0);
}
BENCHMARK(BM_ExtCoreAudioFile_decodeAAC)->MinTime(2)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
