#include "ZRFuzzAudioFile.h"

#include <zrbase/host/system/ZRAppleDouble.h>
#include <zrbase/host/system/ZRResourceFork.h>
#include <zrbase/host/system/ZRResourceMap.h>

#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>

// Outside bytes as a Sound Designer II file. The first byte chooses which of the format's 'STR ' resources the fork
// holds (bits 0 to 2), whether the fork lies in the AppleDouble companion rather than the attribute (bit 3) and
// whether another 'STR ' resource comes first (bit 4); the rest, cut at line feeds, is the three resources' bytes
// (a Pascal string when all goes well) and then the data fork.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "/tmp/ZRSoundDesignerIIFuzzer-" + std::to_string(getpid());
    if (size == 0)
        return 0;
    const uint8_t choice = data[0];
    std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::string_view parts[3];
    for (std::string_view& part : parts) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        part = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }

    ZRResourceMap map;
    constexpr uint32_t STR = ZRFourCharCode("STR ");
    if (choice & 0x10)
        map.add({ 128, STR, "sample-rate ", 0, std::make_shared<ZRData>(2, '4') });
    static constexpr const char* names[] = { "sample-size", "sample-rate", "channels" };
    for (int16_t index = 0; index < 3; ++index) {
        if (choice & (1 << index))
            map.add({ int16_t(1000 + index), STR, names[index], 0,
                std::make_shared<ZRData>(parts[index].begin(), parts[index].end()) });
    }
    const ZRData fork = *map.data();

    ::removexattr(path.c_str(), ZRResourceFork::attributeName);
    const std::string companion = ZRAppleDouble::companionPath(path);
    ::unlink(companion.c_str());
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(rest.data(), 1, rest.size(), file);
        std::fclose(file);
    }
    if (choice & 0x08) {
        ZRAppleDouble appleDouble;
        appleDouble.setEntry(ZRAppleDouble::resourceForkEntry, fork);
        const ZRData bytes = appleDouble.data();
        if (FILE* file = std::fopen(companion.c_str(), "wb")) {
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        }
    } else {
        ::setxattr(path.c_str(), ZRResourceFork::attributeName, fork.data(), fork.size(), 0);
    }

    AudioFileID file = nullptr;
    if (ZRAudioFileService::open(path, file) == noErr) {
        AudioFileTypeID type = 0;
        AudioStreamBasicDescription format {};
        uint64_t packets = 0;
        ZRAudioFileService::fileFormat(file, type);
        ZRAudioFileService::dataFormat(file, format);
        ZRAudioFileService::packetCount(file, packets);
        ZRAudioFileService::close(file);
        // What the fork describes is a frame of whole samples, and the data fork holds every packet counted.
        if (type == kAudioFileSoundDesigner2Type
            && (format.mChannelsPerFrame == 0 || format.mBitsPerChannel % 8 != 0 || format.mBitsPerChannel > 32
                || format.mBytesPerPacket != format.mBitsPerChannel / 8 * format.mChannelsPerFrame
                || format.mSampleRate < 1 || packets * format.mBytesPerPacket > rest.size()))
            std::abort();
    }
    ZRFuzzReadAudioFile(path, rest.size());
    return 0;
}
