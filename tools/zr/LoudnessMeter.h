#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace zr {

// EBU R128 loudness and 4× oversampled true peak through libebur128, fed with interleaved frames. The momentary and
// short-term loudness are read every 100 ms, as a meter's display reads them, the short-term one from its first
// full three seconds on, so that their largest values come out as a meter would show them.
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
    // The largest true peak of a channel, as a linear amplitude.
    double truePeak(uint32_t channel) const;

private:
    struct State;
    LoudnessMeter(std::unique_ptr<State> state, double sampleRate, uint32_t channels);
    void _step();

    std::unique_ptr<State> _state;
    double _sampleRate;
    uint32_t _channels;
    // Frames waiting for the next 100 ms step.
    std::vector<float> _pending;
    uint32_t _pendingFrames = 0;
    uint32_t _stepFrames;
    uint64_t _frames = 0;
    double _maxMomentary = -HUGE_VAL;
    double _maxShortTerm = -HUGE_VAL;
};

}
