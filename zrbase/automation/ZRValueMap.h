#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRGeometry.h>
#include <zrbase/host/foundation/ZRIndexRange.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRKeyedArchiver;
class ZRKeyedUnarchiver;

// The curve kinds; the numbers are stored in states and archives. Any other kind may be stored and passes its
// input through unchanged.
inline constexpr uint32_t ZRValueMapSegmented = 0;
inline constexpr uint32_t ZRValueMapLogarithmic = 1;
inline constexpr uint32_t ZRValueMapQuadratic = 2;
inline constexpr uint32_t ZRValueMapCubic = 3;

// A transfer curve on the unit square, drawn by a handful of control points: piecewise linear through any number
// of points, a power curve bent by its middle point, or a quadratic (three points) or cubic (four points) Bézier
// solved for the input.
//
// The point setters keep every coordinate inside the square, the first point on the left or bottom edge, the last
// point of a segmented or cubic map on the right or top edge, and the points of a segmented map ordered by x.
// setControlPoints and setState take points as given; the curves never hang or crash on points outside the
// square or not a number, they only answer odd values for them.
//
// `modified` turns true on every edit and false only when a map is made with a kind and when a state with a
// preset name is applied.
class ZR_EXPORT ZRValueMap {
public:
    // Kind 0 and no control points.
    ZRValueMap() = default;
    // The evenly spaced diagonal of the kind, unmodified.
    explicit ZRValueMap(uint32_t type);
    // The state stored under "valueMapState" of a keyed archive.
    explicit ZRValueMap(const ZRKeyedUnarchiver& coder);

    static ZRValueMap map() { return {}; }
    static ZRValueMap mapWithType(uint32_t type) { return ZRValueMap(type); }

    // The library's presets (the resource "ZRValueMapPresets.plist"): value-map states with a "name".
    static std::vector<ZRDictionary> presets();
    // The preset of that name applied to a new map; nullopt when there is none.
    static std::optional<ZRValueMap> mapWithPresetName(std::string_view name);

    uint32_t type() const noexcept { return _type; }
    // Stores the kind and gives the map that kind's default diagonal (three points, four for the cubic kind).
    void setType(uint32_t type);
    const std::vector<ZRPoint>& controlPoints() const noexcept { return _points; }
    const std::optional<std::string>& presetName() const noexcept { return _presetName; }
    bool presetIsModified() const noexcept { return _modified; }

    // Replaces the points by the diagonal (i/(n-1), i/(n-1)); the count is 4 for the cubic kind, 3 for the
    // logarithmic and quadratic kinds and `count` otherwise. One point is (NaN, NaN): 0/0 is left unguarded.
    void setNumberOfControlPoints(uint32_t count);
    uint32_t numberOfControlPoints() const noexcept { return static_cast<uint32_t>(_points.size()); }
    // (0, 0) for an index out of range.
    ZRPoint controlPointAtIndex(uint32_t index) const noexcept;
    // (0, 0) for a map without points.
    ZRPoint lastControlPoint() const noexcept;
    // Moves a point within the kind's constraints; ignored for an index out of range and for unknown kinds
    // (which are still marked modified).
    void setControlPoint(ZRPoint point, uint32_t index);
    // Segmented maps only: inserts the point as given, before the first point to its right that follows points
    // not to its right, and answers its index; other kinds answer ZRNotFound and stay as they are.
    uint32_t addControlPoint(ZRPoint point);
    // Segmented maps only; an index out of range is ignored.
    void removeControlPointAtIndex(uint32_t index);
    // Takes the points as given, without clamping or ordering.
    void setControlPoints(std::vector<ZRPoint> points);

    // The curve's output for an input in [0, 1]. Real-time safe.
    float outputValueForInputValue(float input) const noexcept;
    // True when every point has x == y (an empty map too).
    bool isEqualToDefaultMap() const noexcept;
    // The diagonal again, with the same number of points.
    void reset();

    // {"type", "controlPoints" (the points as "{x, y}" texts), "name" when there is a preset name, "modified"}.
    ZRDictionary state() const;
    // Applies "type" (through setType), then "controlPoints" (as given), then "name" (which clears `modified`),
    // each only when present. "modified" is never read.
    void setState(const ZRDictionary& state);
    // A new map given this map's state: the points come back as their texts read them.
    ZRValueMap copy() const;
    // Stores the state under "valueMapState".
    void encodeWithCoder(ZRKeyedArchiver& coder) const;

    bool operator==(const ZRValueMap&) const = default;

private:
    // Derived once per change of the points or the kind, so that the curves cost no more than their arithmetic.
    struct Curve {
        double exponent = 1;
        double quadraticA = 0;
        double quadraticB = 0;
        double cubicA = 0;
        double cubicB = 0;
        double cubicC = 0;
        double cubicYA = 0;
        double cubicYB = 0;
        double cubicYC = 0;
        bool operator==(const Curve&) const = default;
    };

    void _pointsDidChange() noexcept;
    void _setSegmentedControlPoint(ZRPoint point, uint32_t index);
    void _setLogarithmicControlPoint(ZRPoint point, uint32_t index);
    void _setQuadraticControlPoint(ZRPoint point, uint32_t index);
    void _setCubicControlPoint(ZRPoint point, uint32_t index);
    float _segmentedOutputValueForInputValue(float input) const noexcept;
    float _logarithmicOutputValueForInputValue(float input) const noexcept;
    float _quadraticOutputValueForInputValue(float input) const noexcept;
    float _cubicOutputValueForInputValue(float input) const noexcept;

    uint32_t _type = ZRValueMapSegmented;
    std::vector<ZRPoint> _points;
    std::optional<std::string> _presetName;
    bool _modified = false;
    Curve _curve;
};
