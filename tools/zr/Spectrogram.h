#pragma once

#include <zrbase/core/ZRError.h>

#include <cstdint>
#include <memory>
#include <vector>

class ZRFFTBuffer;
class ZRNativeAudioBuffer;

namespace zr {

// The log-frequency rows of a picture: row 0 at the top is the highest frequency.
struct FrequencyAxis {
    double lowest = 20.0;
    double highest = 22050.0;
    uint32_t rows = 0;
    // The frequency at a row's centre, and the row of a frequency (fractional, may lie outside).
    double frequencyAtRow(double row) const noexcept;
    double rowOfFrequency(double frequency) const noexcept;
};

// A time-frequency picture's data: `columns` spectra, one frame of N samples of the channels' mix centred on
// each column's middle (silence before and after the signal), each reduced to the rows of a log-frequency axis
// in dBFS. Needs the signal's length beforehand; memory is the picture's size.
class Spectrogram {
public:
    static std::unique_ptr<Spectrogram> spectrogramWithResolution(uint32_t resolution, uint32_t windowType,
        double sampleRate, uint64_t frames, uint32_t columns, uint32_t rows, ZRErrorPtr* error = nullptr);
    ~Spectrogram();

    void process(const ZRNativeAudioBuffer& block);
    void finish();

    const FrequencyAxis& axis() const noexcept { return _axis; }
    uint32_t columns() const noexcept { return _columns; }
    // dBFS of a row in a column (a full-scale sine reads 0).
    float level(uint32_t column, uint32_t row) const noexcept { return _levels[size_t(row) * _columns + column]; }

private:
    Spectrogram(std::unique_ptr<ZRFFTBuffer> fft, double sampleRate, uint64_t frames, uint32_t columns, uint32_t rows);
    void _append(const float* mix, uint32_t count);
    void _analyzeColumn();
    uint64_t _columnEnd(uint32_t column) const noexcept;

    std::unique_ptr<ZRFFTBuffer> _fft;
    double _sampleRate;
    uint64_t _frames;
    uint32_t _columns;
    FrequencyAxis _axis;
    double _windowSum = 1.0;
    // The last N samples of the mix, oldest at _ringPosition.
    std::vector<float> _ring;
    uint32_t _ringPosition = 0;
    std::vector<float> _frame, _mix;
    uint64_t _position = 0;
    uint32_t _nextColumn = 0;
    std::vector<float> _levels;
};

}
