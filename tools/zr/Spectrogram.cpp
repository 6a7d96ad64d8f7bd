#include "Spectrogram.h"

#include "SpectrumAccumulator.h"
#include "ToolError.h"

#include <zrbase/audio/ZRFFTBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zr {

double FrequencyAxis::frequencyAtRow(double row) const noexcept
{
    const double fraction = rows > 1 ? 1.0 - row / double(rows - 1) : 0.0;
    return lowest * std::pow(highest / lowest, fraction);
}

double FrequencyAxis::rowOfFrequency(double frequency) const noexcept
{
    return (1.0 - std::log(frequency / lowest) / std::log(highest / lowest)) * double(rows - 1);
}

std::unique_ptr<Spectrogram> Spectrogram::spectrogramWithResolution(uint32_t resolution, uint32_t windowType,
    double sampleRate, uint64_t frames, uint32_t columns, uint32_t rows, ZRErrorPtr* error)
{
    std::unique_ptr<ZRFFTBuffer> fft
        = ZRFFTBuffer::bufferWithResolution(resolution, windowType == 0 ? ZRFFTBuffer::WindowHann : windowType);
    if (!fft || resolution < 4 || columns == 0 || rows < 2) {
        if (error)
            *error = toolError("Setting up the spectrogram",
                "the resolution must lie between 4 and 24 and the picture must have a size");
        return nullptr;
    }
    fft->setWindowType(windowType);
    return std::unique_ptr<Spectrogram>(new Spectrogram(std::move(fft), sampleRate, frames, columns, rows));
}

Spectrogram::Spectrogram(
    std::unique_ptr<ZRFFTBuffer> fft, double sampleRate, uint64_t frames, uint32_t columns, uint32_t rows)
    : _fft(std::move(fft))
    , _sampleRate(sampleRate)
    , _frames(frames)
    , _columns(columns)
    , _ring(size_t(1) << _fft->resolution(), 0.0f)
    , _frame(_ring.size())
    , _levels(size_t(columns) * rows, -HUGE_VALF)
{
    const std::span<const float> window = _fft->windowFunction();
    _windowSum = std::max(1e-9, std::accumulate(window.begin(), window.end(), 0.0));
    _axis.rows = rows;
    _axis.highest = sampleRate / 2.0;
    _axis.lowest = std::min(20.0, _axis.highest / 10.0);
}

Spectrogram::~Spectrogram() = default;

uint64_t Spectrogram::_columnEnd(uint32_t column) const noexcept
{
    // The frame of a column ends half a frame after the column's middle; the ring's first N samples are the
    // silence before the signal, so positions count from N on.
    const uint64_t middle = (2 * uint64_t(column) + 1) * _frames / (2 * uint64_t(_columns));
    return middle + _ring.size() / 2 + _ring.size();
}

void Spectrogram::process(const ZRNativeAudioBuffer& block)
{
    _mix.resize(block.frames());
    mixChannels(block, 0, block.frames(), _mix.data());
    if (_position == 0)
        _position = _ring.size();
    _append(_mix.data(), block.frames());
}

void Spectrogram::_append(const float* mix, uint32_t count)
{
    const uint32_t length = uint32_t(_ring.size());
    uint32_t done = 0;
    while (done < count && _nextColumn < _columns) {
        const uint64_t end = _columnEnd(_nextColumn);
        if (_position >= end) {
            _analyzeColumn();
            continue;
        }
        const uint32_t step = uint32_t(
            std::min<uint64_t>({ uint64_t(count - done), end - _position, uint64_t(length - _ringPosition) }));
        std::copy_n(mix + done, step, _ring.data() + _ringPosition);
        _ringPosition = (_ringPosition + step) % length;
        _position += step;
        done += step;
    }
    while (_nextColumn < _columns && _position >= _columnEnd(_nextColumn))
        _analyzeColumn();
}

void Spectrogram::finish()
{
    if (_position == 0)
        _position = _ring.size();
    const std::vector<float> silence(_ring.size(), 0.0f);
    while (_nextColumn < _columns)
        _append(silence.data(), uint32_t(silence.size()));
}

void Spectrogram::_analyzeColumn()
{
    const size_t older = _ring.size() - _ringPosition;
    std::copy_n(_ring.data() + _ringPosition, older, _frame.data());
    std::copy_n(_ring.data(), _ringPosition, _frame.data() + older);
    _fft->reset();
    _fft->analyzeAudioBuffer(_frame.data(), uint32_t(_frame.size()), 0);
    const std::span<const float> magnitude = _fft->magnitudeForChannel(0);
    const double binWidth = _sampleRate / double(_frame.size());
    for (uint32_t row = 0; row < _axis.rows; ++row) {
        // Each row shows the strongest bin between its edges, or the nearest bin where it is narrower than one.
        const double upper = _axis.frequencyAtRow(row - 0.5), lower = _axis.frequencyAtRow(row + 0.5);
        size_t first = size_t(std::max(1.0, std::round(lower / binWidth)));
        size_t last = size_t(std::max(double(first), std::round(upper / binWidth)));
        last = std::min(last, magnitude.size() - 1);
        first = std::min(first, last);
        float strongest = 0.0f;
        for (size_t k = first; k <= last; ++k)
            strongest = std::max(strongest, magnitude[k]);
        _levels[size_t(row) * _columns + _nextColumn] = float(20.0 * std::log10(strongest / _windowSum));
    }
    _nextColumn += 1;
}

}
