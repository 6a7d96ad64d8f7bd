#include <zrbase/automation/ZRAutomationEntry.h>

#include <zrbase/host/audio/ZRAudioUnit.h>

#include <cmath>

namespace {

// A count of frames at a rate: rounded half away from zero and held to the unsigned 32-bit range (NaN gives 0).
uint32_t framesFromCount(double frames) noexcept
{
    const double rounded = std::round(frames);
    if (!(rounded > 0))
        return 0;
    return rounded >= 4294967295.0 ? UINT32_MAX : static_cast<uint32_t>(rounded);
}

ZRArray pointStrings(const ZRValueMap& map, uint32_t first, uint32_t end)
{
    ZRArray strings;
    for (uint32_t i = first; i < end; ++i)
        strings.emplace_back(ZRStringFromPoint(map.controlPointAtIndex(i)));
    return strings;
}

}

ZRAutomationEntry::ZRAutomationEntry() { _rebuildControlPointRects(); }

ZRAutomationEntry::ZRAutomationEntry(const ZRDictionary& state)
    : ZRAutomationEntry()
{
    setState(state);
}

void ZRAutomationEntry::setStartValue(float value) { _valueMap.setControlPoint({ 0, value }, 0); }

void ZRAutomationEntry::setEndValue(float value)
{
    _valueMap.setControlPoint({ 1.0f, value }, _valueMap.numberOfControlPoints() - 1);
}

void ZRAutomationEntry::setControlType(int32_t type) { _valueMap.setType(static_cast<uint32_t>(type)); }

uint32_t ZRAutomationEntry::addControlPoint(ZRPoint point)
{
    const uint32_t index = _valueMap.addControlPoint(point);
    if (index == ZRNotFound)
        return ZRNotFound;
    _controlPointRects.insert(_controlPointRects.begin() + std::min<size_t>(index, _controlPointRects.size()), ZRRect {});
    return index - 1;
}

void ZRAutomationEntry::removeControlPointAtIndex(uint32_t index)
{
    const uint32_t count = _valueMap.numberOfControlPoints();
    _valueMap.removeControlPointAtIndex(index + 1);
    if (_valueMap.numberOfControlPoints() < count && index + 1 < _controlPointRects.size())
        _controlPointRects.erase(_controlPointRects.begin() + index + 1);
}

double ZRAutomationEntry::controlPointTimeAtIndex(uint32_t index) const noexcept
{
    return _range.start() + controlPointAtIndex(index + 1).x * _range.length();
}

float ZRAutomationEntry::valueAtTime(double seconds) const noexcept
{
    return _valueMap.outputValueForInputValue(static_cast<float>(_range.normalizedLocation(seconds)));
}

float ZRAutomationEntry::valueAtPosition(double position) const noexcept
{
    return _valueMap.outputValueForInputValue(static_cast<float>(position));
}

void ZRAutomationEntry::automateRange(const ZRRange& renderRange, double offset, ZRAudioUnit& audioUnit)
{
    // Without an intersection the sweep's times read as 0 and its values as the resting value.
    const auto intersection = renderRange.rangeIntersectingRange(_range);
    const ZRRange inside = intersection.value_or(ZRRange());
    float startValue = _defaultValue, endValue = _defaultValue;
    if (intersection) {
        startValue = valueAtTime(inside.start());
        endValue = valueAtTime(inside.end());
    }
    if (startValue == _lastStartValue && endValue == _lastEndValue)
        return;

    const double rate = renderRange.rate();
    const uint32_t base = framesFromCount(offset * rate);
    const double delta = std::max(inside.start() - renderRange.start(), 0.0);
    const auto offsetOf = [&](double seconds) { return framesFromCount(base + std::round(seconds * rate)); };

    AudioUnitParameterEvent event {};
    event.scope = static_cast<AudioUnitScope>(_scope);
    event.element = static_cast<AudioUnitElement>(_element);
    event.parameter = static_cast<AudioUnitParameterID>(_parameter);
    if (startValue != endValue) {
        event.eventType = kParameterEvent_Ramped;
        event.eventValues.ramp.startBufferOffset = static_cast<int32_t>(offsetOf(delta));
        event.eventValues.ramp.durationInFrames = framesFromCount(inside.length() * rate);
        event.eventValues.ramp.startValue = startValue;
        event.eventValues.ramp.endValue = endValue;
    } else {
        event.eventType = kParameterEvent_Immediate;
        event.eventValues.immediate.bufferOffset = offsetOf(delta);
        event.eventValues.immediate.value = startValue;
    }
    audioUnit.scheduleParameters({ &event, 1 });

    // In the range where the sweep begins the remembered start is the resting value, not the ramp's start.
    _lastStartValue = renderRange.containsLocation(_range.start()) ? _defaultValue : startValue;
    if (renderRange.containsLocation(_range.end())) {
        AudioUnitParameterEvent rest {};
        rest.scope = event.scope;
        rest.element = event.element;
        rest.parameter = event.parameter;
        rest.eventType = kParameterEvent_Immediate;
        rest.eventValues.immediate.bufferOffset = offsetOf(inside.end() - renderRange.start());
        rest.eventValues.immediate.value = _defaultValue;
        audioUnit.scheduleParameters({ &rest, 1 });
        _lastEndValue = _defaultValue;
    } else {
        _lastEndValue = endValue;
    }
}

ZRRect ZRAutomationEntry::startValueRect() const noexcept
{
    return _controlPointRects.empty() ? ZRRect {} : _controlPointRects.front();
}

void ZRAutomationEntry::setStartValueRect(ZRRect rect) noexcept
{
    if (!_controlPointRects.empty())
        _controlPointRects.front() = rect;
}

ZRRect ZRAutomationEntry::endValueRect() const noexcept
{
    return _controlPointRects.empty() ? ZRRect {} : _controlPointRects.back();
}

void ZRAutomationEntry::setEndValueRect(ZRRect rect) noexcept
{
    if (!_controlPointRects.empty())
        _controlPointRects.back() = rect;
}

ZRRect ZRAutomationEntry::controlPointRectAtIndex(uint32_t index) const noexcept
{
    const size_t element = size_t(index) + 1;
    return element + 1 < _controlPointRects.size() ? _controlPointRects[element] : ZRRect {};
}

void ZRAutomationEntry::setControlPointRect(ZRRect rect, uint32_t index) noexcept
{
    const size_t element = size_t(index) + 1;
    if (element + 1 < _controlPointRects.size())
        _controlPointRects[element] = rect;
}

void ZRAutomationEntry::clearRects() noexcept
{
    _rect = _startTimeRect = _endTimeRect = {};
    for (ZRRect& rect : _controlPointRects)
        rect = {};
}

void ZRAutomationEntry::_rebuildControlPointRects()
{
    _controlPointRects.assign(_valueMap.numberOfControlPoints(), ZRRect {});
}

ZRDictionary ZRAutomationEntry::state() const
{
    const uint32_t count = _valueMap.numberOfControlPoints();
    return {
        { "Scope", _scope },
        { "Element", _element },
        { "Parameter", _parameter },
        { "StartTime", _range.start() },
        { "EndTime", _range.end() },
        { "DefaultValue", _defaultValue },
        { "ValueMap", _valueMap.state() },
        { "ControlPoints", pointStrings(_valueMap, 1, count > 0 ? count - 1 : 0) },
        { "ControlType", static_cast<int32_t>(_valueMap.type()) + 1 },
        { "StartValue", startValue() },
        { "EndValue", endValue() },
    };
}

void ZRAutomationEntry::setState(const ZRDictionary& state)
{
    if (const auto* value = ZRDictionaryObject(state, "Scope"))
        _scope = value->intValue();
    if (const auto* value = ZRDictionaryObject(state, "Element"))
        _element = value->intValue();
    if (const auto* value = ZRDictionaryObject(state, "Parameter"))
        _parameter = value->intValue();
    if (const auto* value = ZRDictionaryObject(state, "StartTime"))
        _range.setStart(value->doubleValue());
    if (const auto* value = ZRDictionaryObject(state, "EndTime"))
        _range.setEnd(value->doubleValue());
    if (const auto* value = ZRDictionaryObject(state, "DefaultValue"))
        _defaultValue = value->floatValue();

    const auto* valueMap = ZRDictionaryObject(state, "ValueMap");
    if (valueMap && valueMap->dictionary()) {
        _valueMap.setState(*valueMap->dictionary());
    } else if (const auto* points = ZRDictionaryObject(state, "ControlPoints"); !valueMap && points) {
        // The older form: the kind stored one above its number, the end values apart from the inner points. A
        // missing key reads as 0, as the readers of this form always did.
        const auto number = [&](std::string_view key) {
            const auto* value = ZRDictionaryObject(state, key);
            return value ? *value : ZRPropertyList(0);
        };
        _valueMap.setType(static_cast<uint32_t>(number("ControlType").intValue()) - 1);
        std::vector<ZRPoint> curve { { 0, number("StartValue").floatValue() } };
        if (const auto* strings = points->array())
            for (const auto& text : *strings)
                curve.push_back(ZRPointFromString(text.stringValue()));
        curve.push_back({ 1, number("EndValue").floatValue() });
        _valueMap.setControlPoints(std::move(curve));
    }
    _rebuildControlPointRects();
}
