#pragma once

#include <zrbase/audio/ZRWaveBuffer.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class ZRNativeAudioBuffer;

namespace zr {

// A zoom level: point i of the overview covers frames [i × numerator / denominator, (i + 1) × numerator /
// denominator), so that a picture of a given width covers the whole signal exactly and a data file has a whole
// number of samples per point.
struct WaveformResolution {
    uint64_t numerator = 256;
    uint64_t denominator = 1;
    // Exactly `width` points over `frames` frames.
    static WaveformResolution forWidth(uint64_t frames, uint32_t width);
    // A whole number of samples per point, at least one.
    static WaveformResolution forSamplesPerPixel(uint64_t samplesPerPixel);
    uint64_t boundary(uint64_t point) const noexcept { return point * numerator / denominator; }
    bool isWholeSamplesPerPixel() const noexcept { return denominator == 1; }
    bool operator==(const WaveformResolution&) const = default;
};

// One finished overview: the peaks (the upper value is the largest sample, the lower the smallest) in a wave
// buffer, and the RMS of each point, point after point with one value per channel.
struct WaveformLevel {
    WaveformResolution resolution;
    uint32_t channels = 0;
    uint32_t length = 0;
    std::unique_ptr<ZRWaveBuffer> peaks;
    std::vector<float> rms;

    float minimum(uint32_t point, uint32_t channel) const noexcept
    {
        return peaks->negativeValueAtIndex(point, channel);
    }
    float maximum(uint32_t point, uint32_t channel) const noexcept
    {
        return peaks->positiveValueAtIndex(point, channel);
    }
    float rmsAt(uint32_t point, uint32_t channel) const noexcept { return rms[size_t(point) * channels + channel]; }
};

// Computes overviews at several resolutions in one pass over the signal. Memory grows with the overviews only,
// never with the signal's length.
class WaveformBuilder {
public:
    // `frames` is the signal's length when known, which sizes the overviews at once.
    WaveformBuilder(uint32_t channels, std::vector<WaveformResolution> resolutions, std::optional<uint64_t> frames);
    ~WaveformBuilder();

    void process(const ZRNativeAudioBuffer& block);
    // Ends the signal: the last partial point counts, and an overview for a width gets all of its points.
    std::vector<WaveformLevel> finish();

private:
    struct Level;
    void _emit(Level& level);

    uint32_t _channels;
    uint64_t _position = 0;
    std::vector<Level> _levels;
};

}
