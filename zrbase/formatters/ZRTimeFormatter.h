#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRFormatter.h>

#include <cstdint>

// The display formats of ZRTimeFormatter.
enum ZRTimeFormat : int32_t {
    ZRTimeFormatSamples = 0, // whole samples, "--" without a sample rate
    ZRTimeFormatMilliseconds = 1, // 1500ms
    ZRTimeFormatSeconds = 2, // 1.50
    ZRTimeFormatMinutesSecondsHundredths = 3, // m:ss.hh
    ZRTimeFormatSMPTE30 = 4, // h:mm:ss:ff at 30 frames per second
    ZRTimeFormatSMPTE2997 = 5, // h:mm:ss:ff at 29.97 frames per second, counted plainly (not drop-frame)
    ZRTimeFormatSMPTE25 = 6,
    ZRTimeFormatSMPTE24 = 7,
    ZRTimeFormatHoursMinutesSecondsHundredths = 8, // h:mm:ss.hh
    ZRTimeFormatBarsBeats480 = 9, // bars|beats|ticks, 480 ticks per beat
    ZRTimeFormatTenthMilliseconds = 10, // 1500.0ms
    ZRTimeFormatSecondsMilliseconds = 11, // 1.500
    ZRTimeFormatMinutesSeconds = 12, // m:ss
    ZRTimeFormatMinutesSecondsMilliseconds = 13, // m:ss.mmm
    ZRTimeFormatHoursMinutesSeconds = 14, // h:mm:ss
    ZRTimeFormatHoursMinutesSecondsMilliseconds = 15, // h:mm:ss.mmm
    ZRTimeFormatBarsBeats960 = 16, // bars|beats|ticks, 960 ticks per beat
    ZRTimeFormatMinutesSecondsFrames75 = 17, // mm:ss.ff, 75 frames per second
    ZRTimeFormatSampleBlocks28 = 18, // blocks;samples, 28-sample blocks
    ZRTimeFormatHoursMinutesSecondsFrames75 = 19, // hh:mm:ss.ff, 75 frames per second
};

// Shows a time in seconds in one of twenty formats and reads it back. Every conversion to whole units truncates
// toward zero; clocks put the sign in front ("-0:01.50") and compute their fields from the magnitude, and their
// leading field has no bound (61:01 in m:ss, 25 hours in h:mm:ss). Values are numbers read with doubleValue().
class ZR_EXPORT ZRTimeFormatter : public ZRFormatter {
public:
    int32_t timeFormat() const noexcept { return _timeFormat; }
    void setTimeFormat(int32_t format) noexcept { _timeFormat = format; }
    // True: bars and beats count from 1 (a position); false: from 0 (a duration).
    bool position() const noexcept { return _position; }
    void setPosition(bool position) noexcept { _position = position; }
    // Samples per second, for the sample and sample-block formats.
    double sampleRate() const noexcept { return _sampleRate; }
    void setSampleRate(double rate) noexcept { _sampleRate = rate; }
    // Beats per minute and beats per bar, for the bars|beats formats.
    float tempo() const noexcept { return _tempo; }
    void setTempo(float tempo) noexcept { _tempo = tempo; }
    int32_t meterNumerator() const noexcept { return _meterNumerator; }
    void setMeterNumerator(int32_t numerator) noexcept { _meterNumerator = numerator; }
    // Kept with the time signature; no conversion reads it.
    int32_t meterDenominator() const noexcept { return _meterDenominator; }
    void setMeterDenominator(int32_t denominator) noexcept { _meterDenominator = denominator; }

    // Seconds of one display unit of the current format (one sample, one frame, one tick, ...), so that a caller
    // can step a time by one unit; 1.0 for formats without a finer unit and for unknown formats.
    double unitLength() const noexcept;

    // The text of the time; empty for a format outside 0 ... 19.
    std::string stringForObjectValue(const ZRPropertyList& value) const override;
    // Reads text of the current format into seconds. Dots before the last one count as colons (1.02.03.04 reads as
    // 1:02:03.04). Negative results, results that are not finite and unknown formats fail without a description;
    // bars|beats text fails with a description when the tempo or meter is missing or the text is not three fields.
    bool getObjectValue(
        ZRPropertyList& value, std::string_view text, std::string* errorDescription = nullptr) const override;

private:
    int32_t _timeFormat = 0;
    bool _position = false;
    double _sampleRate = 0;
    float _tempo = 0;
    int32_t _meterNumerator = 0;
    int32_t _meterDenominator = 0;
};
