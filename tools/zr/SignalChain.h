#pragma once

#include <zrbase/core/ZRError.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class ZRFilter;
class ZRNativeAudioBuffer;

namespace zr {

// What the chain does to the signal, in this order: channels mixed to the output's count, a filter, a gain, and
// linear fades at the ends.
struct ChainSettings {
    uint32_t outputChannels = 0;
    // "a", "b", "c", "dc", "lowpass:FREQ", "highpass:FREQ" or "bandpass:FREQ[:OCTAVES]"; empty for none.
    std::string filter;
    double gainDb = 0.0;
    double fadeInSeconds = 0.0;
    double fadeOutSeconds = 0.0;
};

// Block after block, the processing of zr convert between reading and writing.
class SignalChain {
public:
    // Null with an error when the filter cannot be read; `frames` is the input's length, which a fade-out needs.
    static std::unique_ptr<SignalChain> chainWithSettings(const ChainSettings& settings, double sampleRate,
        uint32_t inputChannels, std::optional<uint64_t> frames, ZRErrorPtr* error = nullptr);
    ~SignalChain();

    // Whether a filter text names a filter the chain knows.
    static bool isFilter(const std::string& text);

    // The processed block, valid until the next call: the block itself where the chain changes nothing.
    const ZRNativeAudioBuffer& process(const ZRNativeAudioBuffer& block);

private:
    SignalChain(const ChainSettings& settings, double sampleRate, uint32_t inputChannels, uint64_t frames);
    void _mix(const ZRNativeAudioBuffer& block);

    ChainSettings _settings;
    double _sampleRate;
    uint32_t _inputChannels;
    uint64_t _frames;
    uint64_t _position = 0;
    std::unique_ptr<ZRFilter> _filter;
    std::unique_ptr<ZRNativeAudioBuffer> _output;
};

}
