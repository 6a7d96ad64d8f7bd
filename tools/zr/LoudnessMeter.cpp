#include "LoudnessMeter.h"

#include <ebur128.h>

#include <algorithm>

namespace zr {

// libebur128's state, whose type is an unnamed struct.
struct LoudnessMeter::State {
    ebur128_state* meter;
    ~State() { ebur128_destroy(&meter); }
};

std::unique_ptr<LoudnessMeter> LoudnessMeter::meterWithFormat(double sampleRate, uint32_t channels)
{
    ebur128_state* meter = ebur128_init(channels, static_cast<unsigned long>(std::lround(sampleRate)),
        EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
    if (!meter)
        return nullptr;
    return std::unique_ptr<LoudnessMeter>(
        new LoudnessMeter(std::unique_ptr<State>(new State { meter }), sampleRate, channels));
}

LoudnessMeter::LoudnessMeter(std::unique_ptr<State> state, double sampleRate, uint32_t channels)
    : _state(std::move(state))
    , _sampleRate(sampleRate)
    , _channels(channels)
    , _stepFrames(std::max<uint32_t>(1, uint32_t(std::lround(sampleRate / 10.0))))
{
    _pending.resize(size_t(_stepFrames) * channels);
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(const float* interleaved, uint32_t frames)
{
    while (frames > 0) {
        const uint32_t count = std::min(frames, _stepFrames - _pendingFrames);
        std::copy_n(interleaved, size_t(count) * _channels, _pending.data() + size_t(_pendingFrames) * _channels);
        _pendingFrames += count;
        interleaved += size_t(count) * _channels;
        frames -= count;
        if (_pendingFrames == _stepFrames)
            _step();
    }
}

void LoudnessMeter::_step()
{
    ebur128_add_frames_float(_state->meter, _pending.data(), _pendingFrames);
    _frames += _pendingFrames;
    _pendingFrames = 0;
    double value;
    if (ebur128_loudness_momentary(_state->meter, &value) == EBUR128_SUCCESS)
        _maxMomentary = std::max(_maxMomentary, value);
    if (_frames >= uint64_t(_sampleRate * 3.0) && ebur128_loudness_shortterm(_state->meter, &value) == EBUR128_SUCCESS)
        _maxShortTerm = std::max(_maxShortTerm, value);
}

void LoudnessMeter::finish()
{
    if (_pendingFrames > 0)
        _step();
}

double LoudnessMeter::integratedLufs() const
{
    double value = -HUGE_VAL;
    ebur128_loudness_global(_state->meter, &value);
    return value;
}

double LoudnessMeter::loudnessRangeLu() const
{
    double value = 0.0;
    ebur128_loudness_range(_state->meter, &value);
    return value;
}

double LoudnessMeter::truePeak(uint32_t channel) const
{
    double value = 0.0;
    ebur128_true_peak(_state->meter, channel, &value);
    return value;
}

}
