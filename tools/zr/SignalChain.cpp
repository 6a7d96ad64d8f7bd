#include "SignalChain.h"

#include "ToolError.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRBWeightedFilter.h>
#include <zrbase/dsp/ZRBandpassFilter.h>
#include <zrbase/dsp/ZRCWeightedFilter.h>
#include <zrbase/dsp/ZRDCFilter.h>
#include <zrbase/dsp/ZRHighpassFilter.h>
#include <zrbase/dsp/ZRLowpassFilter.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zr {

// The filter a text names, set up for the rate; null when the text names none.
static std::unique_ptr<ZRFilter> makeFilter(const std::string& text, double sampleRate)
{
    std::unique_ptr<ZRFilter> filter;
    if (text == "a")
        filter = std::make_unique<ZRAWeightedFilter>();
    else if (text == "b")
        filter = std::make_unique<ZRBWeightedFilter>();
    else if (text == "c")
        filter = std::make_unique<ZRCWeightedFilter>();
    else if (text == "dc")
        filter = std::make_unique<ZRDCFilter>();
    else {
        char name[16] = {};
        float frequency = 0.0f, octaves = 1.0f;
        int used = 0, more = 0;
        if (std::sscanf(text.c_str(), "%15[a-z]:%f%n", name, &frequency, &used) != 2)
            return nullptr;
        if (text[size_t(used)] == ':' && std::sscanf(text.c_str() + used + 1, "%f%n", &octaves, &more) == 1)
            used += 1 + more;
        if (size_t(used) != text.size() || !(frequency > 0.0f && frequency < sampleRate / 2) || !(octaves > 0.0f))
            return nullptr;
        std::unique_ptr<ZRBiquadFilter> biquad;
        const std::string kind = name;
        if (kind == "lowpass")
            biquad = std::make_unique<ZRLowpassFilter>();
        else if (kind == "highpass")
            biquad = std::make_unique<ZRHighpassFilter>();
        else if (kind == "bandpass")
            biquad = std::make_unique<ZRBandpassFilter>();
        else
            return nullptr;
        biquad->setSampleRate(sampleRate);
        biquad->setBandwidth(octaves);
        biquad->setFrequency(frequency);
        filter = std::move(biquad);
    }
    filter->setSampleRate(sampleRate);
    filter->setActive(true);
    return filter;
}

bool SignalChain::isFilter(const std::string& text) { return makeFilter(text, 48000.0) != nullptr; }

std::unique_ptr<SignalChain> SignalChain::chainWithSettings(const ChainSettings& settings, double sampleRate,
    uint32_t inputChannels, std::optional<uint64_t> frames, ZRErrorPtr* error)
{
    if (settings.fadeOutSeconds > 0.0 && !frames) {
        if (error)
            *error = toolError("Converting the audio", "a fade-out needs the input's length beforehand");
        return nullptr;
    }
    std::unique_ptr<SignalChain> chain(new SignalChain(settings, sampleRate, inputChannels, frames.value_or(0)));
    if (!settings.filter.empty()) {
        chain->_filter = makeFilter(settings.filter, sampleRate);
        if (!chain->_filter) {
            if (error)
                *error = toolError("Converting the audio", "the filter \"" + settings.filter + "\" is not known");
            return nullptr;
        }
        chain->_filter->reserveChannels(chain->_settings.outputChannels);
    }
    chain->_output = ZRNativeAudioBuffer::bufferWithChannels(chain->_settings.outputChannels, 1, error);
    if (!chain->_output)
        return nullptr;
    return chain;
}

SignalChain::SignalChain(const ChainSettings& settings, double sampleRate, uint32_t inputChannels, uint64_t frames)
    : _settings(settings)
    , _sampleRate(sampleRate)
    , _inputChannels(inputChannels)
    , _frames(frames)
{
    if (_settings.outputChannels == 0)
        _settings.outputChannels = inputChannels;
}

SignalChain::~SignalChain() = default;

void SignalChain::_mix(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames(), outputs = _settings.outputChannels;
    if (_output->frames() != frames)
        _output->setFrames(frames);
    for (uint32_t out = 0; out < outputs; ++out) {
        float* destination = _output->channel(out);
        // Down-mix: each output is the mean of the inputs that fold onto it (every input for mono). Up-mix: the
        // inputs keep their places and the new channels stay silent, except that mono feeds a stereo pair.
        uint32_t sources = 0;
        std::fill_n(destination, frames, 0.0f);
        for (uint32_t in = 0; in < _inputChannels; ++in) {
            const bool feeds
                = _inputChannels > outputs ? in % outputs == out : (in == out || (_inputChannels == 1 && out < 2));
            if (!feeds)
                continue;
            const float* source = block.channel(in);
            for (uint32_t i = 0; i < frames; ++i)
                destination[i] += source[i];
            ++sources;
        }
        if (sources > 1) {
            const float scale = 1.0f / float(sources);
            for (uint32_t i = 0; i < frames; ++i)
                destination[i] *= scale;
        }
    }
}

const ZRNativeAudioBuffer& SignalChain::process(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    const float gain = float(std::pow(10.0, _settings.gainDb / 20.0));
    const double fadeIn = _settings.fadeInSeconds * _sampleRate, fadeOut = _settings.fadeOutSeconds * _sampleRate;
    const double fadeOutStart = double(_frames) - fadeOut;
    const bool fading = double(_position) < fadeIn || (fadeOut > 0.0 && double(_position + frames) > fadeOutStart);
    // A block that the chain leaves as it is passes without a copy.
    if (_settings.outputChannels == _inputChannels && !_filter && gain == 1.0f && !fading) {
        _position += frames;
        return block;
    }

    _mix(block);
    if (_filter)
        _filter->filter(*_output);
    if (gain != 1.0f)
        _output->scale(gain);
    if (fading) {
        for (uint32_t i = 0; i < frames; ++i) {
            const double position = double(_position + i);
            double factor = 1.0;
            if (position < fadeIn)
                factor = position / fadeIn;
            if (fadeOut > 0.0 && position >= fadeOutStart)
                factor = std::min(factor, std::max(0.0, (double(_frames) - 1.0 - position) / fadeOut));
            for (uint32_t c = 0; c < _settings.outputChannels; ++c)
                _output->channel(c)[i] *= float(factor);
        }
    }
    _position += frames;
    return *_output;
}

}
