#include <zrbase/host/audio/ZRAudioFileService.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

// Outside bytes as an audio file: opening either fails with a status or gives a file whose packets all read, in
// runs, within the room the file says they need, and whose properties answer.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "/tmp/ZRAudioFileFuzzer-" + std::to_string(getpid());
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    AudioFileID file = nullptr;
    if (ZRAudioFileService::open(path, file) != noErr)
        return 0;
    uint64_t packets = 0;
    uint32_t maximum = 0;
    ZRAudioFileService::packetCount(file, packets);
    ZRAudioFileService::maximumPacketSize(file, maximum);
    ZRDictionary info;
    ZRAudioFileService::infoDictionary(file, info);
    ZRData bytes;
    ZRAudioFileService::magicCookie(file, bytes);
    ZRAudioFileService::channelLayout(file, bytes);
    constexpr uint32_t run = 16;
    // The largest packet is one the file holds, so the buffer is bounded by the input's size.
    if (maximum > size)
        std::abort();
    std::vector<uint8_t> buffer(size_t(run) * maximum + 1);
    std::vector<AudioStreamPacketDescription> descriptions(run);
    uint64_t read = 0;
    for (int64_t start = 0; uint64_t(start) < packets; start += run) {
        uint32_t count = run;
        uint32_t room = uint32_t(buffer.size());
        if (ZRAudioFileService::readPackets(file, start, count, room, buffer.data(), descriptions.data()) != noErr)
            break;
        if (room > buffer.size())
            std::abort();
        for (uint32_t i = 0; i < count; ++i) {
            if (descriptions[i].mDataByteSize > maximum
                || uint64_t(descriptions[i].mStartOffset) + descriptions[i].mDataByteSize > room)
                std::abort();
        }
        read += count;
        if (count == 0)
            break;
    }
    if (read > packets)
        std::abort();
    ZRAudioFileService::close(file);
    return 0;
}
