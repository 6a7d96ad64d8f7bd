#pragma once

#include <zrbase/automation/ZRValueMap.h>
#include <zrbase/core/ZRRange.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRGeometry.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <vector>

class ZRAudioUnit;

// One automated sweep of one audio-unit parameter over a stretch of time: the parameter's address, the time range,
// and a value map whose first point's y is the start value, whose last point's y is the end value and whose inner
// points are the entry's control points (entry index i is value-map index i + 1). Rendering in successive ranges
// turns the part of the sweep inside each range into parameter events for the audio unit. A drawing view keeps its
// hit-test rectangles on the entry: one for the whole entry, the two time handles, and one per value-map point.
class ZR_EXPORT ZRAutomationEntry {
public:
    // An empty range, a cubic curve on the diagonal (start value 0, end value 1), resting value 0.
    ZRAutomationEntry();
    explicit ZRAutomationEntry(const ZRDictionary& state);

    int32_t scope() const noexcept { return _scope; }
    void setScope(int32_t scope) noexcept { _scope = scope; }
    int32_t element() const noexcept { return _element; }
    void setElement(int32_t element) noexcept { _element = element; }
    int32_t parameter() const noexcept { return _parameter; }
    void setParameter(int32_t parameter) noexcept { _parameter = parameter; }

    const ZRRange& range() const noexcept { return _range; }
    // Copies the range's location, length and rate.
    void setRange(const ZRRange& range) noexcept { _range.setRange(range); }
    const ZRValueMap& valueMap() const noexcept { return _valueMap; }
    ZRValueMap& valueMap() noexcept { return _valueMap; }

    float startValue() const noexcept { return _valueMap.controlPointAtIndex(0).y; }
    float endValue() const noexcept { return _valueMap.lastControlPoint().y; }
    // Move the first point to (0, value) and the last to (1, value) within the curve's constraints.
    void setStartValue(float value);
    void setEndValue(float value);
    float defaultValue() const noexcept { return _defaultValue; }
    void setDefaultValue(float value) noexcept { _defaultValue = value; }
    // The value map's kind; setting it gives the curve that kind's default points.
    int32_t controlType() const noexcept { return static_cast<int32_t>(_valueMap.type()); }
    void setControlType(int32_t type);
    // The values of the last events scheduled (-1 before the first).
    float lastStartValue() const noexcept { return _lastStartValue; }
    float lastEndValue() const noexcept { return _lastEndValue; }

    // The inner points of the curve.
    uint32_t controlPointCount() const noexcept { return _valueMap.numberOfControlPoints() - 2; }
    ZRPoint controlPointAtIndex(uint32_t index) const noexcept { return _valueMap.controlPointAtIndex(index + 1); }
    void setControlPoint(ZRPoint point, uint32_t index) { _valueMap.setControlPoint(point, index + 1); }
    // Segmented curves only: answers the new point's entry index, ZRNotFound for other kinds.
    uint32_t addControlPoint(ZRPoint point);
    void removeControlPointAtIndex(uint32_t index);
    // The time of the control point after the given one: range start + x × range length of value-map point
    // index + 2. Applications place their control-point times by this rule, so it stays.
    double controlPointTimeAtIndex(uint32_t index) const noexcept;

    // The curve's value at a time, the time taken as a fraction of the range.
    float valueAtTime(double seconds) const noexcept;
    float valueAtPosition(double position) const noexcept;

    // Schedules the part of the sweep inside the render range on the audio unit, `offset` seconds into the unit's
    // next buffer: one ramp (or, when the values at both ends are equal, one immediate event), and, in the range
    // where the sweep ends, an immediate return to the resting value. Nothing is scheduled when the values at both
    // ends are those of the last events. Frames are counted at the render range's rate.
    void automateRange(const ZRRange& renderRange, double offset, ZRAudioUnit& audioUnit);

    ZRRect rect() const noexcept { return _rect; }
    void setRect(ZRRect rect) noexcept { _rect = rect; }
    ZRRect startTimeRect() const noexcept { return _startTimeRect; }
    void setStartTimeRect(ZRRect rect) noexcept { _startTimeRect = rect; }
    ZRRect endTimeRect() const noexcept { return _endTimeRect; }
    void setEndTimeRect(ZRRect rect) noexcept { _endTimeRect = rect; }
    // The rectangles of the first and last value-map points.
    ZRRect startValueRect() const noexcept;
    void setStartValueRect(ZRRect rect) noexcept;
    ZRRect endValueRect() const noexcept;
    void setEndValueRect(ZRRect rect) noexcept;
    // The rectangle of an inner point; the zero rectangle (or nothing stored) for any other index.
    ZRRect controlPointRectAtIndex(uint32_t index) const noexcept;
    void setControlPointRect(ZRRect rect, uint32_t index) noexcept;
    const std::vector<ZRRect>& controlPointRects() const noexcept { return _controlPointRects; }
    // Zeroes every rectangle; there stays one per value-map point.
    void clearRects() noexcept;

    // "Scope", "Element", "Parameter", "StartTime", "EndTime", "DefaultValue", "ValueMap", and the older form of the
    // curve for readers that know only it: "ControlPoints" (the inner points as "{x, y}"), "ControlType" (kind + 1),
    // "StartValue", "EndValue".
    ZRDictionary state() const;
    // Reads each key that is present; the older form of the curve only when "ValueMap" is absent. Leaves the last
    // scheduled values alone.
    void setState(const ZRDictionary& state);

private:
    void _rebuildControlPointRects();

    int32_t _scope = 0;
    int32_t _element = 0;
    int32_t _parameter = 0;
    ZRRange _range;
    ZRValueMap _valueMap { ZRValueMapCubic };
    float _lastStartValue = -1;
    float _lastEndValue = -1;
    float _defaultValue = 0;
    ZRRect _rect;
    ZRRect _startTimeRect;
    ZRRect _endTimeRect;
    std::vector<ZRRect> _controlPointRects;
};
