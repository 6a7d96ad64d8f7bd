#include <zrbase/host/audio/ZRAudioConverterService.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

// Outside bytes as packets of a compressed format decoded to native float: the first byte picks the format and
// the channels, the next two the length of a magic cookie that follows; the rest is cut into packets, each
// preceded by its 16-bit length. The decoder gives float audio or a status, never more frames than asked.
namespace {

struct Packets {
    const uint8_t* data;
    size_t size;
    size_t at = 0;
    std::vector<AudioStreamPacketDescription> descriptions;
    std::vector<uint8_t> bytes;

    static OSStatus supply(AudioConverterRef, uint32_t* count, AudioBufferList* list,
        AudioStreamPacketDescription** descriptions, void* user)
    {
        auto& self = *static_cast<Packets*>(user);
        self.bytes.clear();
        self.descriptions.clear();
        while (self.descriptions.size() < *count && self.at + 2 <= self.size) {
            const size_t length
                = std::min<size_t>(self.data[self.at] | (self.data[self.at + 1] << 8), self.size - self.at - 2);
            self.descriptions.push_back({ int64_t(self.bytes.size()), 0, uint32_t(length) });
            self.bytes.insert(self.bytes.end(), self.data + self.at + 2, self.data + self.at + 2 + length);
            self.at += 2 + length;
        }
        list->mBuffers[0] = { 1, uint32_t(self.bytes.size()), self.bytes.data() };
        *count = uint32_t(self.descriptions.size());
        *descriptions = self.descriptions.data();
        return noErr;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static constexpr std::array<AudioFormatID, 6> formats { kAudioFormatMPEG4AAC, kAudioFormatAppleLossless,
        kAudioFormatMPEGLayer3, kAudioFormatAC3, ZRFourCharCode("flac"), kAudioFormatULaw };
    if (size < 3)
        return 0;
    const uint32_t channels = 1 + (data[0] >> 4) % 2;
    AudioStreamBasicDescription source { 44100, formats[data[0] % formats.size()], 0, 0, 0, 0, channels, 0, 0 };
    if (source.mFormatID == kAudioFormatULaw)
        source = { 8000, kAudioFormatULaw, 0, channels, 1, channels, channels, 8, 0 };
    const AudioStreamBasicDescription native { 44100, kAudioFormatLinearPCM,
        kAudioFormatFlagsNativeFloatPacked | kAudioFormatFlagIsNonInterleaved, 4, 1, 4, channels, 32, 0 };
    AudioConverterRef converter = nullptr;
    if (ZRAudioConverterService::create(source, native, converter) != noErr)
        return 0;
    const size_t cookieSize = std::min<size_t>(data[1] | (data[2] << 8), size - 3);
    ZRAudioConverterService::setDecompressionMagicCookie(converter, ZRData(data + 3, data + 3 + cookieSize));
    Packets packets { data + 3 + cookieSize, size - 3 - cookieSize, 0, {}, {} };
    constexpr uint32_t frames = 2048;
    std::vector<float> left(frames), right(frames);
    std::array<uint8_t, ZRAudioBufferListSize(2)> listBytes {};
    auto* list = reinterpret_cast<AudioBufferList*>(listBytes.data());
    for (int round = 0; round < 64; ++round) {
        list->mNumberBuffers = channels;
        list->mBuffers[0] = { 1, frames * 4, left.data() };
        list->mBuffers[1] = { 1, frames * 4, right.data() };
        uint32_t count = frames;
        const OSStatus status
            = ZRAudioConverterService::fillComplexBuffer(converter, Packets::supply, &packets, count, list, nullptr);
        if (count > frames)
            std::abort();
        if (status != noErr || count == 0)
            break;
    }
    ZRAudioConverterService::dispose(converter);
    return 0;
}
