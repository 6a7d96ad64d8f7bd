#pragma once

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <memory>
#include <vector>

// A native buffer holding the given channels, all of the first one's length.
std::unique_ptr<ZRNativeAudioBuffer> ZRTestBufferWithChannels(const std::vector<std::vector<float>>& channels);
// The samples of one channel.
std::vector<float> ZRTestSamplesOfChannel(const ZRNativeAudioBuffer& buffer, uint32_t channel);
