#pragma once

#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <cstdint>
#include <string>
#include <vector>

// Runs a shell command quietly; true when it exits with 0.
bool ZRTestRun(const std::string& command);
// Runs a shell command that makes a file, with the file's path (quoted) standing for its "%s"; true when it exits
// with 0.
bool ZRTestMakeFile(const std::string& command, const std::string& path);
// What a shell command writes to standard output.
std::string ZRTestOutputOf(const std::string& command);
// One field of ffprobe's view of the first audio stream ("codec_name", "sample_rate", "channels", "duration") or of
// the container's tags ("format_tags=title").
std::string ZRTestProbe(const std::string& path, const std::string& entry);
// The file decoded by ffmpeg to 32-bit float, one vector per channel.
std::vector<std::vector<float>> ZRTestDecodeWithFFmpeg(const std::string& path, uint32_t channels);
// Every frame of a file read through ZRExtCoreAudioFile::openForReadingWithPath, one vector per channel; empty when
// the file cannot be opened or read.
std::vector<std::vector<float>> ZRTestReadWithExtCoreAudioFile(const std::string& path, uint32_t block = 4096);
// The test signal: a 440 Hz sine at half scale on channel 0, 660 Hz at quarter scale on channel 1, 880 Hz at an
// eighth on further channels, quantised to 16 bits so that 16-bit formats carry it exactly.
float ZRTestSignal(uint32_t channel, uint64_t frame, double rate = 44100);
// Signal-to-noise ratio in dB of `actual` against `expected` over their common length.
double ZRTestSNR(const std::vector<float>& expected, const std::vector<float>& actual);
