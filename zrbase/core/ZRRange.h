#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexRange.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <optional>
#include <string>

class ZRKeyedArchiver;
class ZRKeyedUnarchiver;

// A span of time in seconds that also knows a sample rate, so that it can answer in sample frames. The length may
// be negative after some edits; only the choke operations clamp it. A rate of 0 means no rate: the sample setters
// then do nothing.
//
// Sample frames are times multiplied by the rate and rounded half away from zero. Signed frame results beyond the
// 32-bit range saturate, and a result that is not a number gives 2147483647.
class ZR_EXPORT ZRRange {
public:
    ZRRange() = default;
    ZRRange(double location, double length, uint32_t rate = 0) noexcept
        : _location(location)
        , _length(length)
        , _rate(rate)
    {
    }
    explicit ZRRange(const ZRDictionary& state) { setState(state); }
    // Reads "location", "length" and "rate" from a keyed archive; absent keys read as 0.
    explicit ZRRange(const ZRKeyedUnarchiver& coder);

    static ZRRange range() noexcept { return {}; }
    static ZRRange rangeWithRate(uint32_t rate) noexcept { return { 0, 0, rate }; }
    static ZRRange rangeWithLocation(double location, double length) noexcept { return { location, length }; }
    static ZRRange rangeWithLength(double length) noexcept { return { 0, length }; }
    static ZRRange rangeWithStart(double start, double end) noexcept;
    // The location is taken as a signed frame, the length as an unsigned one.
    static ZRRange rangeWithSampleRange(ZRIndexRange frames, uint32_t rate) noexcept;
    static ZRRange rangeWithSampleStart(int32_t start, int32_t end, uint32_t rate) noexcept;
    static ZRRange rangeWithRange(const ZRRange& range) noexcept { return range; }
    static ZRRange rangeWithState(const ZRDictionary& state) { return ZRRange(state); }
    // From 0 for the largest finite time.
    static ZRRange rangeWithAllTime() noexcept;

    double location() const noexcept { return _location; }
    double start() const noexcept { return _location; }
    double length() const noexcept { return _length; }
    double end() const noexcept { return _location + _length; }
    double midpoint() const noexcept { return _location + 0.5 * _length; }
    uint32_t rate() const noexcept { return _rate; }

    void setLocation(double location) noexcept { _location = location; }
    void setLength(double length) noexcept { _length = length; }
    void setRate(uint32_t rate) noexcept { _rate = rate; }
    // Moves the start and keeps the end.
    void setStart(double start) noexcept;
    // Moves the end and keeps the start.
    void setEnd(double end) noexcept { _length = end - _location; }
    void setStart(double start, double end) noexcept;
    // Copies location, length and rate.
    void setRange(const ZRRange& range) noexcept { *this = range; }
    void offsetLocation(double delta) noexcept { _location += delta; }
    void offsetLength(double delta) noexcept { _length += delta; }
    void offsetEnd(double delta) noexcept { _length += delta; }
    // Moves the start by delta and keeps the end.
    void offsetStart(double delta) noexcept;
    // Moves the start forward and the end back by delta each.
    void inset(double delta) noexcept;
    // Multiplies the length by factor, keeping the start in place when anchor is true and the end otherwise.
    void scaleLength(double factor, bool anchor) noexcept;
    void reset() noexcept { *this = ZRRange(); }

    int32_t sampleLocation() const noexcept;
    int32_t sampleStart() const noexcept { return sampleLocation(); }
    int32_t sampleMidpoint() const noexcept;
    int32_t sampleEnd() const noexcept;
    // 0 for a negative length; 2147483647 for a length that does not fit or is not a number.
    uint32_t sampleLength() const noexcept;
    // (sampleLocation, sampleLength); a negative location wraps as an unsigned frame.
    ZRIndexRange sampleRange() const noexcept;

    void setSampleRange(ZRIndexRange frames) noexcept;
    void setSampleLocation(int32_t frame) noexcept;
    void setSampleLength(uint32_t frames) noexcept;
    // Moves the start and keeps the end.
    void setSampleStart(int32_t frame) noexcept;
    void setSampleEnd(int32_t frame) noexcept;
    void setSampleStart(int32_t start, int32_t end) noexcept;
    void chokeToSampleStart(int32_t start, int32_t end) noexcept;

    bool isEmpty() const noexcept { return _length == 0.0; }
    // Closed test: start <= location <= end.
    bool includesLocation(double location) const noexcept;
    // Open test: start < location < end.
    bool containsLocation(double location) const noexcept;
    // False without a rate.
    bool includesSampleLocation(int32_t frame) const noexcept;
    bool containsSampleLocation(int32_t frame) const noexcept;
    bool includesRange(const ZRRange& other) const noexcept;
    bool containsRange(const ZRRange& other) const noexcept;
    double distanceFromStart(double location) const noexcept { return location - _location; }
    // Where the location falls between start (0) and end (1): below the start gives 0; at or after the end, and for
    // an empty range, 1.
    double normalizedLocation(double location) const noexcept;
    // The same for a frame; the rate is not tested, so a rate of 0 gives 1.
    double normalizedSampleLocation(uint32_t frame) const noexcept;

    // Equal location and length; the rate is not compared, and a location that is not a number equals nothing.
    bool isEqualToRange(const ZRRange& other) const noexcept
    {
        return _location == other._location && _length == other._length;
    }
    bool operator==(const ZRRange& other) const noexcept { return isEqualToRange(other); }

    // The part both ranges cover, with this range's rate: empty where they touch, none where they do not meet.
    std::optional<ZRRange> rangeIntersectingRange(const ZRRange& other) const noexcept;
    // Widens this range to cover the other as well.
    void includeRange(const ZRRange& other) noexcept;
    // Clamps this range into [start, end]: a range wholly outside becomes empty at the nearer bound.
    void chokeToStart(double start, double end) noexcept;
    void chokeToRange(const ZRRange& other) noexcept { chokeToStart(other.start(), other.end()); }

    // {"location": seconds, "length": seconds}; the rate is not part of the state.
    ZRDictionary state() const;
    // Takes "location" and "length" where present; a value that is neither a number nor a string is ignored.
    void setState(const ZRDictionary& state);
    // "location" and "length" as doubles, "rate" as a 32-bit integer.
    void encodeWithCoder(ZRKeyedArchiver& coder) const;

    // "ZRRange: (start-end)" with four decimals, followed by " [sampleStart-sampleEnd]" when there is a rate.
    std::string description() const;

private:
    double _location = 0;
    double _length = 0;
    uint32_t _rate = 0;
};
