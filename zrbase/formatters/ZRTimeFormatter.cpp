#include <zrbase/formatters/ZRTimeFormatter.h>

#include <zrbase/formatters/ZRFormatterTextPrivate.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <array>
#include <cmath>

using ZRFormatterText::doubleValue;
using ZRFormatterText::intValue;
using ZRFormatterText::truncated;

namespace {

// A leading field: as many digits as it needs.
constexpr int unbounded = 1;

// A clock that counts one smallest unit and splits the count into fields, largest first.
struct Clock {
    double unitsPerSecond;
    int fieldCount;
    std::array<int64_t, 3> countsPerField; // the counts in one of each field but the last
    std::array<int, 4> widths; // the least number of digits of each field
    std::array<char, 3> separators; // the separator after each field but the last
};

constexpr Clock minutesSeconds { 1, 2, { 60 }, { unbounded, 2 }, { ':' } };
constexpr Clock hoursMinutesSeconds { 1, 3, { 3600, 60 }, { unbounded, 2, 2 }, { ':', ':' } };
constexpr Clock minutesSecondsHundredths { 100, 3, { 6000, 100 }, { unbounded, 2, 2 }, { ':', '.' } };
constexpr Clock hoursMinutesSecondsHundredths { 100, 4, { 360000, 6000, 100 }, { unbounded, 2, 2, 2 },
    { ':', ':', '.' } };
constexpr Clock minutesSecondsMilliseconds { 1000, 3, { 60000, 1000 }, { unbounded, 2, 3 }, { ':', '.' } };
constexpr Clock hoursMinutesSecondsMilliseconds { 1000, 4, { 3600000, 60000, 1000 }, { unbounded, 2, 2, 3 },
    { ':', ':', '.' } };
constexpr Clock minutesSecondsFrames75 { 75, 3, { 4500, 75 }, { 2, 2, 2 }, { ':', '.' } };
constexpr Clock hoursMinutesSecondsFrames75 { 75, 4, { 270000, 4500, 75 }, { 2, 2, 2, 2 }, { ':', ':', '.' } };

// The clocks of fixed rate, null for the other formats.
const Clock* clockOfFormat(int32_t format) noexcept
{
    switch (format) {
    case ZRTimeFormatMinutesSeconds:
        return &minutesSeconds;
    case ZRTimeFormatHoursMinutesSeconds:
        return &hoursMinutesSeconds;
    case ZRTimeFormatMinutesSecondsHundredths:
        return &minutesSecondsHundredths;
    case ZRTimeFormatHoursMinutesSecondsHundredths:
        return &hoursMinutesSecondsHundredths;
    case ZRTimeFormatMinutesSecondsMilliseconds:
        return &minutesSecondsMilliseconds;
    case ZRTimeFormatHoursMinutesSecondsMilliseconds:
        return &hoursMinutesSecondsMilliseconds;
    case ZRTimeFormatMinutesSecondsFrames75:
        return &minutesSecondsFrames75;
    case ZRTimeFormatHoursMinutesSecondsFrames75:
        return &hoursMinutesSecondsFrames75;
    default:
        return nullptr;
    }
}

// Frames per second of the time-code formats 4 ... 7.
constexpr std::array<double, 4> timeCodeRates { 30, 29.97, 25, 24 };

double timeCodeRate(int32_t format) noexcept
{
    return timeCodeRates[static_cast<size_t>(format - ZRTimeFormatSMPTE30)];
}

int64_t ticksPerBeat(int32_t format) noexcept { return format == ZRTimeFormatBarsBeats480 ? 480 : 960; }

// The text of a clock, written field by field into a buffer that holds the longest one (a sign, four signed fields
// of up to 19 digits and their separators), so that the string is allocated once.
class ClockText {
public:
    explicit ClockText(bool negative) noexcept
    {
        if (negative)
            *_end++ = '-';
    }

    void append(int64_t value, int width, char separatorBefore = 0) noexcept
    {
        if (separatorBefore)
            *_end++ = separatorBefore;
        // Only a negative sample rate or tempo gives a negative field.
        if (value < 0)
            *_end++ = '-';
        std::array<char, 20> digits;
        int count = 0;
        uint64_t rest = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        do {
            digits[static_cast<size_t>(count++)] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        while (count < width)
            digits[static_cast<size_t>(count++)] = '0';
        while (count > 0)
            *_end++ = digits[static_cast<size_t>(--count)];
    }

    std::string string() const { return std::string(_buffer.data(), static_cast<size_t>(_end - _buffer.data())); }

private:
    std::array<char, 96> _buffer;
    char* _end = _buffer.data();
};

std::string clockText(const Clock& clock, bool negative, double magnitude)
{
    ClockText text(negative);
    int64_t count = truncated(magnitude * clock.unitsPerSecond);
    for (int field = 0; field < clock.fieldCount - 1; ++field) {
        const int64_t perField = clock.countsPerField[static_cast<size_t>(field)];
        text.append(count / perField, clock.widths[static_cast<size_t>(field)],
            field > 0 ? clock.separators[static_cast<size_t>(field - 1)] : 0);
        count %= perField;
    }
    text.append(count, clock.widths[static_cast<size_t>(clock.fieldCount - 1)],
        clock.fieldCount > 1 ? clock.separators[static_cast<size_t>(clock.fieldCount - 2)] : 0);
    return text.string();
}

// Whole hours and minutes of frames, then seconds and frames from the rest as a real: 29.97 frames per second
// count plainly, 1 798 frames to the minute, with no frames dropped.
std::string timeCodeText(double rate, bool negative, double magnitude)
{
    int64_t count = truncated(magnitude * rate);
    const int64_t perHour = truncated(rate * 3600);
    const int64_t perMinute = truncated(rate * 60);
    const int64_t hours = count / perHour;
    count %= perHour;
    const int64_t minutes = count / perMinute;
    count %= perMinute;
    const auto rest = static_cast<double>(count);
    int64_t seconds = 0;
    int64_t frames = count;
    if (rest >= rate) {
        seconds = truncated(rest / rate);
        frames = truncated(rest - rate * static_cast<double>(seconds));
    }
    ClockText text(negative);
    text.append(hours, unbounded);
    text.append(minutes, 2, ':');
    text.append(seconds, 2, ':');
    text.append(frames, 2, ':');
    return text.string();
}

std::string barsBeatsText(
    int64_t perBeat, float tempo, int32_t beatsPerBar, bool position, bool negative, double magnitude)
{
    int64_t ticks = truncated(magnitude * static_cast<double>(tempo) / 60 * static_cast<double>(perBeat));
    // The ticks of a bar, a 32-bit count as the meter gives it.
    const auto perBar = static_cast<int32_t>(static_cast<uint32_t>(perBeat * beatsPerBar));
    int64_t bars = 0;
    if (perBar > 0 && ticks >= perBar) {
        bars = ticks / perBar;
        ticks %= perBar;
    }
    int64_t beats = ticks / perBeat;
    ticks %= perBeat;
    if (position) {
        ++bars;
        ++beats;
        // Only without a positive meter, where no bar was split off.
        if (beats > beatsPerBar) {
            ++bars;
            beats = 1;
        }
    }
    ClockText text(negative);
    text.append(bars, unbounded);
    text.append(beats, unbounded, '|');
    text.append(ticks, 3, '|');
    return text.string();
}

bool failWithDescription(std::string* errorDescription, std::string_view english)
{
    if (errorDescription)
        *errorDescription = ZRLocalizedString(english);
    return false;
}

// The int reading of component `index` when the text has more than `moreThan` components, else 0.
double intComponent(const std::vector<std::string_view>& parts, size_t index, size_t moreThan)
{
    return parts.size() > moreThan ? intValue(parts[index]) : 0;
}

}

double ZRTimeFormatter::unitLength() const noexcept
{
    switch (_timeFormat) {
    case ZRTimeFormatSamples:
        return 1 / _sampleRate;
    case ZRTimeFormatMilliseconds:
    case ZRTimeFormatSecondsMilliseconds:
    case ZRTimeFormatMinutesSecondsMilliseconds:
    case ZRTimeFormatHoursMinutesSecondsMilliseconds:
        return 0.001;
    case ZRTimeFormatSeconds:
    case ZRTimeFormatMinutesSecondsHundredths:
    case ZRTimeFormatHoursMinutesSecondsHundredths:
        return 0.01;
    case ZRTimeFormatSMPTE30:
    case ZRTimeFormatSMPTE2997:
    case ZRTimeFormatSMPTE25:
    case ZRTimeFormatSMPTE24:
        return 1 / timeCodeRate(_timeFormat);
    case ZRTimeFormatBarsBeats480:
    case ZRTimeFormatBarsBeats960:
        return 60 / static_cast<double>(_tempo) / static_cast<double>(ticksPerBeat(_timeFormat));
    case ZRTimeFormatTenthMilliseconds:
        return 0.0001;
    case ZRTimeFormatMinutesSecondsFrames75:
        return 1.0 / 75;
    case ZRTimeFormatSampleBlocks28:
        return 28 / _sampleRate;
    default:
        return 1.0;
    }
}

std::string ZRTimeFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    const double time = value.doubleValue();
    const bool negative = time < 0;
    const double magnitude = std::fabs(time);
    switch (_timeFormat) {
    case ZRTimeFormatSamples:
        return _sampleRate == 0 ? "--" : ZRStringWithFormat("%.0f", std::trunc(_sampleRate * time));
    case ZRTimeFormatMilliseconds:
        return ZRStringWithFormat("%.0fms", std::trunc(time * 1000));
    case ZRTimeFormatTenthMilliseconds:
        return ZRStringWithFormat("%.1fms", std::trunc(time * 10000) / 10);
    case ZRTimeFormatSeconds:
        return ZRStringWithFormat("%.2f", std::trunc(time * 100) / 100);
    case ZRTimeFormatSecondsMilliseconds:
        return ZRStringWithFormat("%.3f", std::trunc(time * 1000) / 1000);
    case ZRTimeFormatSampleBlocks28:
        return clockText({ _sampleRate, 2, { 28 }, { unbounded, unbounded }, { ';' } }, negative, magnitude);
    case ZRTimeFormatSMPTE30:
    case ZRTimeFormatSMPTE2997:
    case ZRTimeFormatSMPTE25:
    case ZRTimeFormatSMPTE24:
        return timeCodeText(timeCodeRate(_timeFormat), negative, magnitude);
    case ZRTimeFormatBarsBeats480:
    case ZRTimeFormatBarsBeats960:
        return barsBeatsText(ticksPerBeat(_timeFormat), _tempo, _meterNumerator, _position, negative, magnitude);
    default:
        if (const Clock* clock = clockOfFormat(_timeFormat))
            return clockText(*clock, negative, magnitude);
        return {};
    }
}

bool ZRTimeFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string* errorDescription) const
{
    // Every dot but the last separates fields: 1.02.03.50 reads as 1:02:03.50.
    std::string normalized(text);
    if (const size_t lastDot = normalized.rfind('.'); lastDot != std::string::npos)
        std::replace(normalized.begin(), normalized.begin() + static_cast<std::ptrdiff_t>(lastDot), '.', ':');

    double seconds = -1;
    switch (_timeFormat) {
    case ZRTimeFormatSamples:
        seconds = doubleValue(normalized) / _sampleRate;
        break;
    case ZRTimeFormatMilliseconds:
    case ZRTimeFormatTenthMilliseconds:
        seconds = doubleValue(normalized) / 1000;
        break;
    case ZRTimeFormatSeconds:
    case ZRTimeFormatSecondsMilliseconds:
        seconds = doubleValue(normalized);
        break;
    case ZRTimeFormatMinutesSecondsHundredths:
    case ZRTimeFormatMinutesSeconds:
    case ZRTimeFormatMinutesSecondsMilliseconds: {
        // Fields between the first and the last are passed over.
        const auto parts = ZRFormatterText::components(normalized, ':');
        seconds = doubleValue(parts.back()) + intComponent(parts, 0, 1) * 60;
        break;
    }
    case ZRTimeFormatHoursMinutesSecondsHundredths:
    case ZRTimeFormatHoursMinutesSeconds:
    case ZRTimeFormatHoursMinutesSecondsMilliseconds: {
        const auto parts = ZRFormatterText::components(normalized, ':');
        const size_t count = parts.size();
        seconds = doubleValue(parts.back()) + intComponent(parts, count - 2, 1) * 60 + intComponent(parts, 0, 2) * 3600;
        break;
    }
    case ZRTimeFormatSMPTE30:
    case ZRTimeFormatSMPTE2997:
    case ZRTimeFormatSMPTE25:
    case ZRTimeFormatSMPTE24: {
        const auto parts = ZRFormatterText::components(normalized, ':');
        const size_t count = parts.size();
        seconds = intComponent(parts, count - 3, 2) * 60 + intComponent(parts, 0, 3) * 3600
            + intComponent(parts, count - 2, 1) + doubleValue(parts.back()) / timeCodeRate(_timeFormat);
        break;
    }
    case ZRTimeFormatMinutesSecondsFrames75:
    case ZRTimeFormatHoursMinutesSecondsFrames75: {
        // The two digits after the point are frames, read as a decimal fraction and spread over the second.
        const auto parts = ZRFormatterText::components(normalized, ':');
        const size_t count = parts.size();
        const double last = doubleValue(parts.back());
        seconds = intComponent(parts, count - 2, 1) * 60 + intComponent(parts, 0, 2) * 3600 + std::trunc(last)
            + (last - std::trunc(last)) / 0.75;
        break;
    }
    case ZRTimeFormatSampleBlocks28: {
        const auto parts = ZRFormatterText::components(normalized, ';');
        seconds = (intComponent(parts, 1, 1) + intValue(parts[0]) * 28.0) / _sampleRate;
        break;
    }
    case ZRTimeFormatBarsBeats480:
    case ZRTimeFormatBarsBeats960: {
        if (_tempo == 0 || _meterNumerator == 0)
            return failWithDescription(errorDescription, "the tempo and/or time signature is not defined.");
        const auto parts = ZRFormatterText::components(normalized, '|');
        if (parts.size() != 3)
            return failWithDescription(errorDescription, "the bars|beats value was not formatted properly. [0|0|000]");
        const double secondsPerBeat = 60 / static_cast<double>(_tempo);
        const double origin = _position ? 1 : 0;
        const double bars = intValue(parts[0]) - origin;
        const double beats = intValue(parts[1]) - origin;
        seconds = bars * _meterNumerator * secondsPerBeat + beats * secondsPerBeat
            + secondsPerBeat * doubleValue(parts[2]) / static_cast<double>(ticksPerBeat(_timeFormat));
        break;
    }
    default:
        break;
    }
    // Negative times and unknown formats (-1) are refused, and so is a time that is not finite, such as any text
    // read without a sample rate or tempo to divide by.
    if (!(seconds >= 0) || !std::isfinite(seconds))
        return false;
    value = seconds;
    return true;
}
