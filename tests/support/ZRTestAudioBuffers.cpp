#include "support/ZRTestAudioBuffers.h"

std::unique_ptr<ZRNativeAudioBuffer> ZRTestBufferWithChannels(const std::vector<std::vector<float>>& channels)
{
    auto buffer = ZRNativeAudioBuffer::bufferWithChannels(uint32_t(channels.size()), uint32_t(channels[0].size()));
    for (uint32_t channel = 0; channel < channels.size(); ++channel)
        buffer->setSampleValues(channels[channel].data(), uint32_t(channels[channel].size()), channel);
    return buffer;
}

std::vector<float> ZRTestSamplesOfChannel(const ZRNativeAudioBuffer& buffer, uint32_t channel)
{
    const float* samples = buffer.channel(channel);
    return samples ? std::vector<float>(samples, samples + buffer.frames()) : std::vector<float>();
}
