#pragma once

#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRExtAudioFileService.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// Opens the file at `path` through the audio file service: opening either fails with a status or gives a file whose
// packets all read, in runs, within the room the file says they need, and whose properties answer. The largest
// packet is one the file holds, so it is never more than `bound`, the bytes the file has. Linear PCM also reads as
// native float through the extended file, never more frames than asked.
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
    AudioStreamBasicDescription format {};
    ZRAudioFileService::dataFormat(file, format);
    ZRAudioFileService::close(file);
    ExtAudioFileRef extended = nullptr;
    if (format.mFormatID != kAudioFormatLinearPCM || format.mChannelsPerFrame > 8
        || ZRExtAudioFileService::open(path, extended) != noErr)
        return;
    const AudioStreamBasicDescription floats { format.mSampleRate, kAudioFormatLinearPCM,
        kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved, 4, 1, 4, format.mChannelsPerFrame, 32,
        0 };
    if (ZRExtAudioFileService::setClientDataFormat(extended, floats) == noErr) {
        constexpr uint32_t block = 1000;
        std::vector<float> samples(size_t(block) * floats.mChannelsPerFrame);
        std::vector<uint8_t> listBytes(ZRAudioBufferListSize(floats.mChannelsPerFrame));
        auto* list = reinterpret_cast<AudioBufferList*>(listBytes.data());
        for (int round = 0; round < 16; ++round) {
            list->mNumberBuffers = floats.mChannelsPerFrame;
            for (uint32_t channel = 0; channel < floats.mChannelsPerFrame; ++channel)
                list->mBuffers[channel] = { 1, block * 4, samples.data() + size_t(channel) * block };
            uint32_t frames = block;
            const OSStatus status = ZRExtAudioFileService::read(extended, frames, list);
            if (frames > block)
                std::abort();
            if (status != noErr || frames == 0)
                break;
        }
    }
    ZRExtAudioFileService::dispose(extended);
}
