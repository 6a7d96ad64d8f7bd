#pragma once

#include "WaveformBuilder.h"

#include <zrbase/core/ZRError.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zr {

// How a waveform picture looks. Colours are "#rrggbb" or "#aarrggbb" or any name QColor knows.
struct WaveformPicture {
    uint32_t height = 300;
    // One lane for all channels (their mean) instead of one lane per channel.
    bool combined = false;
    std::string waveColor = "#3c78b4";
    std::string rmsColor = "#8cb4e6";
    std::string backgroundColor = "#ffffff";
};

// The data format that browser waveform viewers read, version 2: a 24-byte little-endian header (version, flags
// with bit 0 set for 8-bit points, sample rate, samples per point, length, channels), then the smallest and the
// largest value of every channel at every point. The level must have a whole number of samples per point.
std::string waveformDat(const WaveformLevel& level, uint32_t sampleRate, uint32_t bits);
// The same data as JSON: version, channels, sample_rate, samples_per_pixel, bits, length and data.
std::string waveformDataJson(const WaveformLevel& level, uint32_t sampleRate, uint32_t bits);
// The tool's own richer form: every level of one pass with float minimum, maximum and RMS per channel.
std::string waveformFloatJson(std::span<const WaveformLevel> levels, double sampleRate, uint64_t frames);
// A PNG as wide as the level has points: the peaks, and the RMS drawn over them in the lighter colour.
std::optional<std::string> waveformPng(
    const WaveformLevel& level, const WaveformPicture& picture, ZRErrorPtr* error = nullptr);

}
