#pragma once

#include <zrbase/host/audio/ZRAudioFileService.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// Opens the file at `path` through the audio file service: opening either fails with a status or gives a file whose
// packets all read, in runs, within the room the file says they need, and whose properties answer. The largest
// packet is one the file holds, so it is never more than `bound`, the bytes the file has.
inline void ZRFuzzReadAudioFile(const std::string& path, size_t bound)
{
    AudioFileID file = nullptr;
    if (ZRAudioFileService::open(path, file) != noErr)
        return;
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
    if (maximum > bound)
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
}
