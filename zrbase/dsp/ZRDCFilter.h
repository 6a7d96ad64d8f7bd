#pragma once

#include <zrbase/dsp/ZRFilter.h>

// A one-pole DC blocker: out = (in − previous in) + c0 × previous out, with its pole at c0 = 1 − 126 / fs. It must
// be given its sample rate: until setSampleRate() c0 is 0 and it is a plain differentiator.
//
// An inactive DC filter leaves the samples alone but takes each channel's last sample as both its previous input and
// output, so that switching it on continues from the current level instead of jumping. Unlike the biquads it
// processes one-frame buffers too.
class ZR_EXPORT ZRDCFilter : public ZRFilter {
public:
    ZRDCFilter();
    const ZRFilterClass& filterClass() const noexcept override;

    // Stores the rate, clears the history and recomputes c0, also for an unchanged rate.
    void setSampleRate(double sampleRate) noexcept override;
    // The feedback coefficient.
    float c0() const noexcept { return _c0; }
    // A channel's previous input and previous output; 0 outside.
    float x(uint32_t channel) const noexcept { return _historyValue(channel, 0); }
    float y(uint32_t channel) const noexcept { return _historyValue(channel, 1); }

    void filter(ZRNativeAudioBuffer& buffer) noexcept override;
    void reset() noexcept override { _clearHistory(); }

protected:
    void _filterLanes(const ZRFilterLanes& lanes) noexcept override;

private:
    float _c0 = 0.0f;
};
