#include "LoudnessMeter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zr {

// libebur128's state, whose type is an unnamed struct.
struct LoudnessMeter::State {
    ebur128_state* meter;
    ~State() { ebur128_destroy(&meter); }
};

std::unique_ptr<LoudnessMeter> LoudnessMeter::meterWithFormat(double sampleRate, uint32_t channels)
{
    ebur128_state* meter = ebur128_init(channels, static_cast<unsigned long>(std::lround(sampleRate)),
        EBUR128_MODE_M | EBUR128_MODE_I | EBUR128_MODE_LRA);
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
        // Whole steps go to the meter straight from the caller's frames.
        if (_pendingFrames == 0 && frames >= _stepFrames) {
            _step(interleaved, _stepFrames);
            interleaved += size_t(_stepFrames) * _channels;
            frames -= _stepFrames;
            continue;
        }
        const uint32_t count = std::min(frames, _stepFrames - _pendingFrames);
        std::copy_n(interleaved, size_t(count) * _channels, _pending.data() + size_t(_pendingFrames) * _channels);
        _pendingFrames += count;
        interleaved += size_t(count) * _channels;
        frames -= count;
        if (_pendingFrames == _stepFrames)
            _step(_pending.data(), std::exchange(_pendingFrames, 0));
    }
}

// Loudness in LUFS from a mean square of K-weighted samples and back, as BS.1770 defines it.
static double loudnessOfEnergy(double energy) { return energy > 0.0 ? -0.691 + 10.0 * std::log10(energy) : -HUGE_VAL; }
static double energyOfLoudness(double lufs)
{
    return std::isfinite(lufs) ? std::pow(10.0, (lufs + 0.691) / 10.0) : 0.0;
}

void LoudnessMeter::_step(const float* interleaved, uint32_t frames)
{
    ebur128_add_frames_float(_state->meter, interleaved, frames);
    double lufs = -HUGE_VAL;
    ebur128_loudness_window(_state->meter, uint32_t(std::lround(frames * 1000.0 / _sampleRate)), &lufs);
    // Older steps leave the sums as newer ones enter; the sums are taken afresh every so often so that rounding
    // never builds up.
    const double energy = energyOfLoudness(lufs);
    double& slot = _energies[_steps % 30];
    _shortTermEnergy += energy - slot;
    _momentaryEnergy += energy - (_steps >= 4 ? _energies[(_steps - 4) % 30] : 0.0);
    slot = energy;
    _steps += 1;
    if (_steps % 30 == 0) {
        _shortTermEnergy = 0.0;
        for (const double e : _energies)
            _shortTermEnergy += e;
        _momentaryEnergy = 0.0;
        for (uint64_t i = 1; i <= 4; ++i)
            _momentaryEnergy += _energies[(_steps - i) % 30];
    }
    // Before 400 ms the window holds silence, as the meter's does.
    _maxMomentary = std::max(_maxMomentary, loudnessOfEnergy(_momentaryEnergy / 4.0));
    if (_steps >= 30)
        _maxShortTerm = std::max(_maxShortTerm, loudnessOfEnergy(_shortTermEnergy / 30.0));
}

void LoudnessMeter::finish()
{
    if (_pendingFrames > 0)
        _step(_pending.data(), std::exchange(_pendingFrames, 0));
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

}
