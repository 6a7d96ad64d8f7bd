#include <zrbase/core/ZRRange.h>

#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t largestFrame = std::numeric_limits<int32_t>::max();

// Rounds half away from zero into a signed frame. Converting a double outside the 32-bit range is undefined, so
// such results saturate; not a number answers the largest frame, as the end of an unbounded range does.
int32_t roundedFrame(double frames) noexcept
{
    const double rounded = std::round(frames);
    if (std::isnan(rounded) || rounded >= largestFrame)
        return largestFrame;
    if (rounded <= std::numeric_limits<int32_t>::min())
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(rounded);
}

const char* const locationKey = "location";
const char* const lengthKey = "length";
const char* const rateKey = "rate";

}

ZRRange::ZRRange(const ZRKeyedUnarchiver& coder)
    : _location(coder.decodeDouble(locationKey))
    , _length(coder.decodeDouble(lengthKey))
    , _rate(static_cast<uint32_t>(coder.decodeInt(rateKey)))
{
}

ZRRange ZRRange::rangeWithStart(double start, double end) noexcept
{
    ZRRange range;
    range.setStart(start);
    range.setEnd(end);
    return range;
}

ZRRange ZRRange::rangeWithSampleRange(ZRIndexRange frames, uint32_t rate) noexcept
{
    ZRRange range = rangeWithRate(rate);
    range.setSampleLocation(static_cast<int32_t>(frames.location));
    range.setSampleLength(frames.length);
    return range;
}

ZRRange ZRRange::rangeWithSampleStart(int32_t start, int32_t end, uint32_t rate) noexcept
{
    ZRRange range = rangeWithRate(rate);
    range.setSampleStart(start);
    range.setSampleEnd(end);
    return range;
}

ZRRange ZRRange::rangeWithAllTime() noexcept { return { 0, std::numeric_limits<double>::max() }; }

void ZRRange::setStart(double start) noexcept
{
    _length -= start - _location;
    _location = start;
}

void ZRRange::setStart(double start, double end) noexcept
{
    _location = start;
    _length = end - start;
}

void ZRRange::offsetStart(double delta) noexcept
{
    _location += delta;
    _length -= delta;
}

void ZRRange::inset(double delta) noexcept
{
    _location += delta;
    _length -= 2 * delta;
}

void ZRRange::scaleLength(double factor, bool anchor) noexcept
{
    if (!anchor)
        _location += (1 - factor) * _length;
    _length *= factor;
}

int32_t ZRRange::sampleLocation() const noexcept { return roundedFrame(_location * _rate); }

int32_t ZRRange::sampleMidpoint() const noexcept { return roundedFrame(midpoint() * _rate); }

int32_t ZRRange::sampleEnd() const noexcept { return roundedFrame(end() * _rate); }

uint32_t ZRRange::sampleLength() const noexcept
{
    const double frames = std::round(_length * _rate);
    if (std::isnan(frames) || frames >= largestFrame)
        return largestFrame;
    if (frames < 0)
        return 0;
    return static_cast<uint32_t>(frames);
}

ZRIndexRange ZRRange::sampleRange() const noexcept
{
    return { static_cast<uint32_t>(sampleLocation()), sampleLength() };
}

void ZRRange::setSampleRange(ZRIndexRange frames) noexcept
{
    if (_rate == 0)
        return;
    _location = frames.location / static_cast<double>(_rate);
    _length = frames.length / static_cast<double>(_rate);
}

void ZRRange::setSampleLocation(int32_t frame) noexcept
{
    if (_rate != 0)
        _location = frame / static_cast<double>(_rate);
}

void ZRRange::setSampleLength(uint32_t frames) noexcept
{
    if (_rate != 0)
        _length = frames / static_cast<double>(_rate);
}

void ZRRange::setSampleStart(int32_t frame) noexcept
{
    if (_rate != 0)
        setStart(frame / static_cast<double>(_rate));
}

void ZRRange::setSampleEnd(int32_t frame) noexcept
{
    if (_rate != 0)
        _length = frame / static_cast<double>(_rate) - _location;
}

void ZRRange::setSampleStart(int32_t start, int32_t end) noexcept
{
    if (_rate == 0)
        return;
    _location = start / static_cast<double>(_rate);
    _length = (static_cast<double>(end) - static_cast<double>(start)) / _rate;
}

void ZRRange::chokeToSampleStart(int32_t start, int32_t end) noexcept
{
    if (_rate != 0)
        chokeToStart(start / static_cast<double>(_rate), end / static_cast<double>(_rate));
}

bool ZRRange::includesLocation(double location) const noexcept { return _location <= location && location <= end(); }

bool ZRRange::containsLocation(double location) const noexcept { return _location < location && location < end(); }

bool ZRRange::includesSampleLocation(int32_t frame) const noexcept
{
    return _rate != 0 && includesLocation(frame / static_cast<double>(_rate));
}

bool ZRRange::containsSampleLocation(int32_t frame) const noexcept
{
    return _rate != 0 && containsLocation(frame / static_cast<double>(_rate));
}

bool ZRRange::includesRange(const ZRRange& other) const noexcept
{
    return other.start() >= start() && end() >= other.end();
}

bool ZRRange::containsRange(const ZRRange& other) const noexcept
{
    return other.start() > start() && end() > other.end();
}

double ZRRange::normalizedLocation(double location) const noexcept
{
    const double position = (location - _location) / _length;
    if (position < 1)
        return std::max(position, 0.0);
    return 1;
}

double ZRRange::normalizedSampleLocation(uint32_t frame) const noexcept
{
    return normalizedLocation(frame / static_cast<double>(_rate));
}

std::optional<ZRRange> ZRRange::rangeIntersectingRange(const ZRRange& other) const noexcept
{
    ZRRange intersection = rangeWithRate(_rate);
    intersection.setStart(std::max(start(), other.start()), std::min(end(), other.end()));
    if (intersection.length() < 0)
        return std::nullopt;
    return intersection;
}

void ZRRange::includeRange(const ZRRange& other) noexcept
{
    setStart(std::min(start(), other.location()));
    setEnd(std::max(end(), other.end()));
}

void ZRRange::chokeToStart(double start, double end) noexcept
{
    const double oldEnd = this->end();
    if (start > oldEnd) {
        _location = start;
        _length = 0;
    } else if (_location > end) {
        _location = end;
        _length = 0;
    } else {
        _location = std::max(_location, start);
        _length = std::max(0.0, std::min(oldEnd, end) - _location);
    }
}

ZRDictionary ZRRange::state() const { return { { locationKey, _location }, { lengthKey, _length } }; }

void ZRRange::setState(const ZRDictionary& state)
{
    const auto read = [&](const char* key, double& field) {
        const ZRPropertyList* value = ZRDictionaryObject(state, key);
        if (value && (value->isNumber() || value->string()))
            field = value->doubleValue();
    };
    read(locationKey, _location);
    read(lengthKey, _length);
}

void ZRRange::encodeWithCoder(ZRKeyedArchiver& coder) const
{
    coder.encodeDouble(locationKey, _location);
    coder.encodeDouble(lengthKey, _length);
    coder.encodeInt(rateKey, static_cast<int32_t>(_rate));
}

std::string ZRRange::description() const
{
    std::string text = "ZRRange: " + ZRStringWithFormat("(%.4f-%.4f)", start(), end());
    if (_rate != 0)
        text += ZRStringWithFormat(" [%d-%d]", sampleStart(), sampleEnd());
    return text;
}
