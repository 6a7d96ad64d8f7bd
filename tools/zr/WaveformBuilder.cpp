#include "WaveformBuilder.h"

#include "SampleRun.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cmath>

namespace zr {

WaveformResolution WaveformResolution::forWidth(uint64_t frames, uint32_t width)
{
    return { frames, std::max<uint32_t>(width, 1) };
}

WaveformResolution WaveformResolution::forSamplesPerPixel(uint64_t samplesPerPixel)
{
    return { std::max<uint64_t>(samplesPerPixel, 1), 1 };
}

struct WaveformBuilder::Level {
    WaveformLevel result;
    uint64_t nextBoundary = 0;
    // The running point, per channel.
    std::vector<float> minimum, maximum;
    std::vector<double> squares;
    uint64_t count = 0;
};

WaveformBuilder::WaveformBuilder(
    uint32_t channels, std::vector<WaveformResolution> resolutions, std::optional<uint64_t> frames)
    : _channels(channels)
{
    for (const WaveformResolution& resolution : resolutions) {
        Level level;
        level.result.resolution = resolution;
        level.result.channels = channels;
        const uint64_t expected = frames ? (*frames * resolution.denominator + resolution.numerator - 1)
                / std::max<uint64_t>(resolution.numerator, 1)
                                         : 1024;
        const uint32_t capacity = uint32_t(std::clamp<uint64_t>(expected, 1, UINT32_MAX / 2));
        level.result.peaks = ZRWaveBuffer::bufferWithChannels(channels, capacity);
        level.result.rms.reserve(size_t(capacity) * channels);
        level.nextBoundary = resolution.boundary(1);
        level.minimum.assign(channels, HUGE_VALF);
        level.maximum.assign(channels, -HUGE_VALF);
        level.squares.assign(channels, 0.0);
        _levels.push_back(std::move(level));
    }
}

WaveformBuilder::~WaveformBuilder() = default;

void WaveformBuilder::_emit(Level& level)
{
    WaveformLevel& result = level.result;
    if (result.length == result.peaks->frames())
        result.peaks->setFrames(result.length * 2);
    for (uint32_t c = 0; c < _channels; ++c) {
        const bool empty = level.count == 0;
        result.peaks->setPositiveValue(empty ? 0.0f : level.maximum[c], result.length, c);
        result.peaks->setNegativeValue(empty ? 0.0f : level.minimum[c], result.length, c);
        result.rms.push_back(empty ? 0.0f : float(std::sqrt(level.squares[c] / double(level.count))));
        level.minimum[c] = HUGE_VALF;
        level.maximum[c] = -HUGE_VALF;
        level.squares[c] = 0.0;
    }
    level.count = 0;
    result.length += 1;
    level.nextBoundary = result.resolution.boundary(result.length + 1);
}

void WaveformBuilder::process(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    for (Level& level : _levels) {
        uint64_t position = _position;
        const uint64_t end = _position + frames;
        while (position < end) {
            // Points that cover no frame at all (more points than frames) are emitted empty.
            while (level.nextBoundary <= position)
                _emit(level);
            const uint64_t stop = std::min(end, level.nextBoundary);
            const uint32_t first = uint32_t(position - _position);
            const uint32_t count = uint32_t(stop - position);
            for (uint32_t c = 0; c < _channels; ++c) {
                SampleRun run;
                run.add(block.channel(c) + first, count);
                level.minimum[c] = std::min(level.minimum[c], run.minimum);
                level.maximum[c] = std::max(level.maximum[c], run.maximum);
                level.squares[c] += run.squares;
            }
            level.count += count;
            position = stop;
            if (position == level.nextBoundary)
                _emit(level);
        }
    }
    _position += frames;
}

std::vector<WaveformLevel> WaveformBuilder::finish()
{
    std::vector<WaveformLevel> results;
    for (Level& level : _levels) {
        if (level.count > 0)
            _emit(level);
        // A picture's width is met in full even when the signal has fewer frames than points.
        if (!level.result.resolution.isWholeSamplesPerPixel())
            while (level.result.length < level.result.resolution.denominator && _position > 0)
                _emit(level);
        level.result.peaks->setFrames(std::max<uint32_t>(level.result.length, 1));
        results.push_back(std::move(level.result));
    }
    return results;
}

}
