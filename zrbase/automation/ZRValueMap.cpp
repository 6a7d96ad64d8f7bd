#include <zrbase/automation/ZRValueMap.h>

#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRCoder.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::string_view typeKey = "type";
constexpr std::string_view controlPointsKey = "controlPoints";
constexpr std::string_view nameKey = "name";
constexpr std::string_view modifiedKey = "modified";
constexpr std::string_view archiveKey = "valueMapState";

// Inside the square, 1 at and above it, 0 below it and for NaN.
float clampUnit(float value) noexcept
{
    if (value > 0 && value < 1)
        return value;
    return value >= 1 ? 1.0f : 0.0f;
}

// The t in [0, 1] at which the cubic a t³ + b t² + c t reaches `input`, for a polynomial that runs from 0 at t = 0
// to 1 at t = 1. The x curve of a Bézier whose inner points lie in the square never falls, but it may be flat at
// a point (inner points on the edges or coinciding), and its leading coefficient vanishes for evenly spaced
// points, where the closed-form roots lose every digit. Newton's method kept inside a shrinking bracket, falling
// back to halving it when a step would leave it or slow down, converges in a few steps everywhere and in a
// bounded number of steps even for curves that are not monotone.
double solveCubicBezier(double a, double b, double c, double input) noexcept
{
    if (std::isnan(input))
        return input;
    if (input <= 0)
        return 0;
    if (input >= 1)
        return 1;
    const auto value = [&](double t) { return ((a * t + b) * t + c) * t - input; };
    const auto slope = [&](double t) { return (3 * a * t + 2 * b) * t + c; };
    double low = 0, high = 1, t = input;
    double step = 1, previousStep = 1;
    double f = value(t), d = slope(t);
    (f < 0 ? low : high) = t;
    for (int iteration = 0; iteration < 100 && f != 0; ++iteration) {
        const bool leavesBracket = ((t - high) * d - f) * ((t - low) * d - f) > 0;
        if (leavesBracket || !(std::abs(2 * f) <= std::abs(previousStep * d))) {
            previousStep = step;
            step = 0.5 * (high - low);
            t = low + step;
        } else {
            previousStep = step;
            step = f / d;
            t -= step;
        }
        if (!(std::abs(step) > 1e-12))
            break;
        f = value(t);
        d = slope(t);
        (f < 0 ? low : high) = t;
    }
    return t;
}

}

ZRValueMap::ZRValueMap(uint32_t type)
{
    setType(type);
    _modified = false;
}

ZRValueMap::ZRValueMap(const ZRKeyedUnarchiver& coder)
{
    if (const auto state = coder.decodeObject(archiveKey); state && state->dictionary())
        setState(*state->dictionary());
}

std::vector<ZRDictionary> ZRValueMap::presets()
{
    std::vector<ZRDictionary> presets;
    const auto path = ZRBundle::library().pathForResource("ZRValueMapPresets", "plist");
    if (!path)
        return presets;
    const auto list = ZRPropertyList::propertyListWithContentsOfFile(*path);
    if (!list || !list->array())
        return presets;
    for (const auto& entry : *list->array())
        if (entry.dictionary())
            presets.push_back(*entry.dictionary());
    return presets;
}

std::optional<ZRValueMap> ZRValueMap::mapWithPresetName(std::string_view name)
{
    for (const auto& preset : presets()) {
        const auto* presetName = ZRDictionaryObject(preset, nameKey);
        if (presetName && presetName->stringValue() == name) {
            ZRValueMap map;
            map.setState(preset);
            return map;
        }
    }
    return std::nullopt;
}

void ZRValueMap::setType(uint32_t type)
{
    _type = type;
    setNumberOfControlPoints(3);
}

void ZRValueMap::setNumberOfControlPoints(uint32_t count)
{
    if (_type == ZRValueMapCubic)
        count = 4;
    else if (_type == ZRValueMapLogarithmic || _type == ZRValueMapQuadratic)
        count = 3;
    _points.clear();
    const float last = static_cast<float>(count) - 1;
    for (uint32_t i = 0; i < count; ++i) {
        const float position = static_cast<float>(i) / last;
        _points.push_back({ position, position });
    }
    _modified = true;
    _pointsDidChange();
}

ZRPoint ZRValueMap::controlPointAtIndex(uint32_t index) const noexcept
{
    return index < _points.size() ? _points[index] : ZRPoint {};
}

ZRPoint ZRValueMap::lastControlPoint() const noexcept { return _points.empty() ? ZRPoint {} : _points.back(); }

void ZRValueMap::setControlPoint(ZRPoint point, uint32_t index)
{
    if (index >= _points.size())
        return;
    switch (_type) {
    case ZRValueMapSegmented:
        _setSegmentedControlPoint(point, index);
        break;
    case ZRValueMapLogarithmic:
        _setLogarithmicControlPoint(point, index);
        break;
    case ZRValueMapQuadratic:
        _setQuadraticControlPoint(point, index);
        break;
    case ZRValueMapCubic:
        _setCubicControlPoint(point, index);
        break;
    default:
        break;
    }
    _modified = true;
    _pointsDidChange();
}

void ZRValueMap::_setSegmentedControlPoint(ZRPoint point, uint32_t index)
{
    float x = clampUnit(point.x), y = clampUnit(point.y);
    const uint32_t last = numberOfControlPoints() - 1;
    if (index == 0) {
        // The first point snaps to the left edge when it lies above the diagonal, else to the bottom edge.
        if (y > x)
            x = 0;
        else
            y = 0;
        x = std::min(x, controlPointAtIndex(1).x);
    } else if (index == last) {
        if (x > y)
            x = 1;
        else
            y = 1;
        x = std::max(x, _points[last - 1].x);
    } else {
        x = std::max(x, _points[index - 1].x);
        x = std::min(x, _points[index + 1].x);
    }
    _points[index] = { x, y };
}

void ZRValueMap::_setLogarithmicControlPoint(ZRPoint point, uint32_t index)
{
    const float x = clampUnit(point.x);
    if (index == 0) {
        _points[0] = { std::min({ 0.0f, controlPointAtIndex(1).x, controlPointAtIndex(2).x }), clampUnit(point.y) };
    } else if (index == 1) {
        // The middle point stays on the anti-diagonal; its y follows the requested x before the neighbours limit x.
        float limited = x;
        if (limited <= _points[0].x)
            limited = _points[0].x;
        if (limited >= controlPointAtIndex(2).x)
            limited = controlPointAtIndex(2).x;
        _points[1] = { limited, 1 - x };
    } else if (index == 2) {
        _points[2] = { std::max({ 1.0f, _points[0].x, _points[1].x }), clampUnit(point.y) };
    } else {
        _points[index] = { x, clampUnit(point.y) };
    }
}

void ZRValueMap::_setQuadraticControlPoint(ZRPoint point, uint32_t index)
{
    float x = clampUnit(point.x);
    if (index == 0)
        x = 0;
    else if (index == 2)
        x = 1;
    _points[index] = { x, clampUnit(point.y) };
}

void ZRValueMap::_setCubicControlPoint(ZRPoint point, uint32_t index)
{
    float x = clampUnit(point.x), y = clampUnit(point.y);
    if (index == 0) {
        if (y > x)
            x = 0;
        else
            y = 0;
        x = std::min({ x, controlPointAtIndex(1).x, controlPointAtIndex(2).x, controlPointAtIndex(3).x });
    } else if (index == 1 || index == 2) {
        x = std::max(x, _points[0].x);
        x = std::min(x, controlPointAtIndex(3).x);
    } else if (index == 3) {
        if (x > y)
            x = 1;
        else
            y = 1;
        x = std::max({ x, _points[0].x, _points[1].x, _points[2].x });
    }
    _points[index] = { x, y };
}

uint32_t ZRValueMap::addControlPoint(ZRPoint point)
{
    if (_type != ZRValueMapSegmented)
        return ZRNotFound;
    uint32_t index = 0;
    float previous = 0;
    for (; index < _points.size(); ++index) {
        if (point.x >= previous && _points[index].x > point.x)
            break;
        previous = _points[index].x;
    }
    _points.insert(_points.begin() + index, point);
    _modified = true;
    _pointsDidChange();
    return index;
}

void ZRValueMap::removeControlPointAtIndex(uint32_t index)
{
    if (_type != ZRValueMapSegmented || index >= _points.size())
        return;
    _points.erase(_points.begin() + index);
    _modified = true;
    _pointsDidChange();
}

void ZRValueMap::setControlPoints(std::vector<ZRPoint> points)
{
    _points = std::move(points);
    _modified = true;
    _pointsDidChange();
}

void ZRValueMap::_pointsDidChange() noexcept
{
    _curve = {};
    const ZRPoint p0 = controlPointAtIndex(0), p1 = controlPointAtIndex(1), p2 = controlPointAtIndex(2);
    switch (_type) {
    case ZRValueMapLogarithmic: {
        // The exponent runs from 0.1 (middle point on the left) through 1 (in the middle) to 10 (on the right).
        const float k = (p1.x - p0.x) / (p2.x - p0.x);
        _curve.exponent = static_cast<float>(std::pow(10.0, 2.0 * k - 1.0));
        break;
    }
    case ZRValueMapQuadratic: {
        // x(t) = (1 - 2 x1) t² + 2 x1 t with the end points at x = 0 and x = 1.
        const double x1 = p1.x;
        _curve.quadraticA = 1 - 2 * x1;
        _curve.quadraticB = 2 * x1;
        break;
    }
    case ZRValueMapCubic: {
        // The inner points are kept strictly inside the end points, so that the x curve rises at both ends.
        constexpr double epsilon = 1e-7;
        const ZRPoint p3 = controlPointAtIndex(3);
        const double x1 = p1.x > p0.x + epsilon ? p1.x : p0.x + epsilon;
        const double x2 = p3.x - epsilon > p2.x ? p2.x : p3.x - epsilon;
        _curve.cubicC = 3 * x1;
        _curve.cubicB = 3 * (x2 - x1) - _curve.cubicC;
        _curve.cubicA = 1 - _curve.cubicC - _curve.cubicB;
        _curve.cubicYC = 3.0f * (p1.y - p0.y);
        _curve.cubicYB = 3.0f * (p2.y - p1.y) - _curve.cubicYC;
        _curve.cubicYA = (p3.y - p0.y) - _curve.cubicYC - _curve.cubicYB;
        break;
    }
    default:
        break;
    }
}

float ZRValueMap::outputValueForInputValue(float input) const noexcept
{
    switch (_type) {
    case ZRValueMapSegmented:
        return _segmentedOutputValueForInputValue(input);
    case ZRValueMapLogarithmic:
        return _logarithmicOutputValueForInputValue(input);
    case ZRValueMapQuadratic:
        return _quadraticOutputValueForInputValue(input);
    case ZRValueMapCubic:
        return _cubicOutputValueForInputValue(input);
    default:
        return input;
    }
}

float ZRValueMap::_segmentedOutputValueForInputValue(float input) const noexcept
{
    const ZRPoint first = controlPointAtIndex(0), last = lastControlPoint();
    if (first.x >= input)
        return first.y;
    if (input >= last.x)
        return last.y;
    ZRPoint left = first, right = { 1.0f, last.y };
    for (const ZRPoint& point : _points) {
        if (input >= left.x && point.x > input) {
            right = point;
            break;
        }
        left = point;
    }
    return (input - left.x) / (right.x - left.x) * (right.y - left.y) + left.y;
}

float ZRValueMap::_logarithmicOutputValueForInputValue(float input) const noexcept
{
    const ZRPoint p0 = controlPointAtIndex(0), p2 = controlPointAtIndex(2);
    if (p0.x > input)
        return p0.y;
    if (input > p2.x)
        return p2.y;
    // The raw input is raised, not the input normalised to p0.x … p2.x: the end points sit at 0 and 1.
    return std::pow(input, static_cast<float>(_curve.exponent)) * (p2.y - p0.y) + p0.y;
}

float ZRValueMap::_quadraticOutputValueForInputValue(float input) const noexcept
{
    const ZRPoint p0 = controlPointAtIndex(0), p1 = controlPointAtIndex(1), p2 = controlPointAtIndex(2);
    if (p0.x > input)
        return p0.y;
    if (input > p2.x)
        return p2.y;
    // The root (d - b) / 2a written as 2v / (b + d): the same number without the cancellation that ruins it when
    // the middle point nears x = 0.5 and a nears 0. For a middle point inside the square it is the root in [0, 1];
    // for one outside, the other root is tried as well.
    const double a = _curve.quadraticA, b = _curve.quadraticB, v = input;
    const double d = std::sqrt(std::max(b * b + 4 * a * v, 0.0));
    double t = b + d > 0 ? 2 * v / (b + d) : 0;
    if (!(std::round(t) >= 0 && std::round(t) <= 1) && a != 0)
        t = (-b - d) / (2 * a);
    const double u = 1 - t;
    return static_cast<float>(p0.y * u * u + (2.0f * p1.y) * t * u + p2.y * t * t);
}

float ZRValueMap::_cubicOutputValueForInputValue(float input) const noexcept
{
    const ZRPoint p0 = controlPointAtIndex(0), p3 = controlPointAtIndex(3);
    if (p0.x > input)
        return p0.y;
    if (input > p3.x)
        return p3.y;
    const double t = solveCubicBezier(_curve.cubicA, _curve.cubicB, _curve.cubicC, input);
    return static_cast<float>(p0.y + ((_curve.cubicYA * t + _curve.cubicYB) * t + _curve.cubicYC) * t);
}

bool ZRValueMap::isEqualToDefaultMap() const noexcept
{
    return std::all_of(_points.begin(), _points.end(), [](ZRPoint point) { return point.x == point.y; });
}

void ZRValueMap::reset()
{
    const float last = static_cast<float>(_points.size()) - 1;
    for (size_t i = 0; i < _points.size(); ++i) {
        const float position = static_cast<float>(i) / last;
        _points[i] = { position, position };
    }
    _modified = true;
    _pointsDidChange();
}

ZRDictionary ZRValueMap::state() const
{
    ZRArray points;
    points.reserve(_points.size());
    for (const ZRPoint& point : _points)
        points.emplace_back(ZRStringFromPoint(point));
    ZRDictionary state;
    state.emplace(typeKey, _type);
    state.emplace(controlPointsKey, std::move(points));
    if (_presetName)
        state.emplace(nameKey, *_presetName);
    state.emplace(modifiedKey, _modified);
    return state;
}

void ZRValueMap::setState(const ZRDictionary& state)
{
    if (const auto* type = ZRDictionaryObject(state, typeKey))
        setType(type->unsignedIntValue());
    if (const auto* points = ZRDictionaryObject(state, controlPointsKey); points && points->array()) {
        _points.clear();
        for (const auto& point : *points->array())
            _points.push_back(ZRPointFromString(point.stringValue()));
        _pointsDidChange();
    }
    if (const auto* name = ZRDictionaryObject(state, nameKey)) {
        _presetName = name->stringValue();
        _modified = false;
    }
}

ZRValueMap ZRValueMap::copy() const
{
    ZRValueMap map;
    map.setState(state());
    return map;
}

void ZRValueMap::encodeWithCoder(ZRKeyedArchiver& coder) const { coder.encodeObject(archiveKey, state()); }
