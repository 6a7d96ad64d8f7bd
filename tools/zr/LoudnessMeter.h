#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace zr {

// EBU R128 loudness through libebur128, fed with interleaved frames. The momentary and short-term loudness are read
// every 100 ms, as a meter's display reads them, the short-term one from its first full three seconds on, so that
// their largest values come out as a meter would show them. Each step asks libebur128 only for the energy of its
// own 100 ms; the 400 ms and 3 s windows are running sums of those, so a step costs its own samples, not the
// window's.
class LoudnessMeter {
public:
    // Null when libebur128 cannot be set up for the format.
    static std::unique_ptr<LoudnessMeter> meterWithFormat(double sampleRate, uint32_t channels);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;

    void add(const float* interleaved, uint32_t frames);
    // Ends the signal; the values below are final afterwards.
    void finish();

    double integratedLufs() const;
    double loudnessRangeLu() const;
    double maxMomentaryLufs() const noexcept { return _maxMomentary; }
    double maxShortTermLufs() const noexcept { return _maxShortTerm; }

private:
    struct State;
    LoudnessMeter(std::unique_ptr<State> state, double sampleRate, uint32_t channels);
    // Measures one 100 ms step (the last one may be shorter).
    void _step(const float* interleaved, uint32_t frames);

    std::unique_ptr<State> _state;
    double _sampleRate;
    uint32_t _channels;
    // Frames waiting for the next 100 ms step.
    std::vector<float> _pending;
    uint32_t _pendingFrames = 0;
    uint32_t _stepFrames;
    // The energies of the last 30 steps, the newest at _steps % 30, and their running sums over 4 and 30 steps.
    double _energies[30] = {};
    uint64_t _steps = 0;
    double _momentaryEnergy = 0.0;
    double _shortTermEnergy = 0.0;
    double _maxMomentary = -HUGE_VAL;
    double _maxShortTerm = -HUGE_VAL;
};

}
