#include <zrbase/audio/ZRChannelMap.h>

#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRPropertyList.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

// A coordinate of a point that ties: negative and NaN count as 0, and values past the 32-bit indexes as the
// largest index.
uint32_t tieIndex(float coordinate) noexcept
{
    if (!(coordinate > 0))
        return 0;
    if (coordinate >= 4294967296.0f)
        return std::numeric_limits<uint32_t>::max();
    return static_cast<uint32_t>(coordinate);
}

// A coordinate of a point that unties, truncated; none when it names no index.
std::optional<uint32_t> untieIndex(float coordinate) noexcept
{
    const float truncated = std::trunc(coordinate);
    if (!(truncated >= 0) || truncated >= 4294967296.0f)
        return std::nullopt;
    return static_cast<uint32_t>(truncated);
}

// The outputs of one input as the state keeps them; none unless every element is an index.
std::optional<ZRIndexSet> indexSetFromState(const ZRPropertyList& value)
{
    const ZRArray* array = value.array();
    if (!array)
        return std::nullopt;
    std::vector<uint32_t> indexes;
    indexes.reserve(array->size());
    for (const ZRPropertyList& element : *array) {
        if (element.type() != ZRPropertyList::Type::Integer || element.isUnsigned())
            return std::nullopt;
        const int64_t index = element.longLongValue();
        if (index < 0 || index > std::numeric_limits<uint32_t>::max())
            return std::nullopt;
        indexes.push_back(static_cast<uint32_t>(index));
    }
    // Added in order, each index lands at the end of the set: no quadratic insertion for states in any order.
    std::sort(indexes.begin(), indexes.end());
    ZRIndexSet set;
    for (uint32_t index : indexes)
        set.addIndex(index);
    return set;
}

}

ZRChannelMap ZRChannelMap::defaultMapForCount(uint32_t count)
{
    ZRChannelMap map;
    map.mapDefaultForCount(count);
    return map;
}

ZRChannelMap ZRChannelMap::mapWithState(std::span<const uint8_t> state)
{
    ZRChannelMap map;
    map.setState(state);
    return map;
}

uint32_t ZRChannelMap::outputCount() const noexcept
{
    uint32_t count = 0;
    for (const ZRIndexSet& outputs : _map) {
        if (!outputs.isEmpty())
            count = std::max(count, outputs.indexes().back());
    }
    return count + 1;
}

bool ZRChannelMap::isInput(uint32_t input, uint32_t tiedToOutput) const noexcept
{
    return input < _map.size() && _map[input].containsIndex(tiedToOutput);
}

const ZRIndexSet& ZRChannelMap::outputTiesForInput(uint32_t input) const noexcept
{
    static const ZRIndexSet none;
    return input < _map.size() ? _map[input] : none;
}

ZRIndexSet ZRChannelMap::inputTiesForOutput(uint32_t output) const
{
    ZRIndexSet inputs;
    for (uint32_t input = 0; input < _map.size(); ++input) {
        if (_map[input].containsIndex(output))
            inputs.addIndex(input);
    }
    return inputs;
}

ZRIndexSet ZRChannelMap::tiedInputs() const
{
    ZRIndexSet inputs;
    for (uint32_t input = 0; input < _map.size(); ++input) {
        if (!_map[input].isEmpty())
            inputs.addIndex(input);
    }
    return inputs;
}

uint32_t ZRChannelMap::tiedInputCount() const noexcept
{
    return static_cast<uint32_t>(
        std::count_if(_map.begin(), _map.end(), [](const ZRIndexSet& outputs) { return !outputs.isEmpty(); }));
}

ZRIndexSet ZRChannelMap::tiedOutputs() const
{
    ZRIndexSet outputs;
    for (const ZRIndexSet& tied : _map)
        outputs.addIndexes(tied);
    return outputs;
}

std::vector<ZRPoint> ZRChannelMap::ties() const
{
    std::vector<ZRPoint> ties;
    for (uint32_t input = 0; input < _map.size(); ++input) {
        for (uint32_t output : _map[input])
            ties.push_back(ZRMakePoint(static_cast<float>(input), static_cast<float>(output)));
    }
    return ties;
}

std::string ZRChannelMap::description() const
{
    ZRArray points;
    for (ZRPoint tie : ties())
        points.emplace_back("NSPoint: " + ZRStringFromPoint(tie));
    return ZRStringWithFormat("%@", ZRPropertyList(std::move(points)));
}

void ZRChannelMap::tieInputs(const ZRIndexSet& inputs, const ZRIndexSet& toOutputs)
{
    if (inputs.isEmpty())
        return;
    const size_t needed = size_t(inputs.indexes().back()) + 1;
    if (needed > _map.size())
        _map.resize(needed);
    for (uint32_t input : inputs)
        _map[input].addIndexes(toOutputs);
}

void ZRChannelMap::tieInputs(const ZRIndexSet& inputs, uint32_t toOutput) { tieInputs(inputs, ZRIndexSet(toOutput)); }

void ZRChannelMap::tieInput(uint32_t input, const ZRIndexSet& toOutputs) { tieInputs(ZRIndexSet(input), toOutputs); }

void ZRChannelMap::tieInput(uint32_t input, uint32_t toOutput) { tieInputs(ZRIndexSet(input), ZRIndexSet(toOutput)); }

void ZRChannelMap::tie(ZRPoint tie) { tieInput(tieIndex(tie.x), tieIndex(tie.y)); }

void ZRChannelMap::untieInput(uint32_t input, uint32_t fromOutput)
{
    if (input >= _map.size())
        return;
    _map[input].removeIndex(fromOutput);
    _clearUnusedInputs();
}

void ZRChannelMap::untie(ZRPoint tie)
{
    const std::optional<uint32_t> input = untieIndex(tie.x);
    const std::optional<uint32_t> output = untieIndex(tie.y);
    if (input && output)
        untieInput(*input, *output);
}

void ZRChannelMap::clearInput(uint32_t input)
{
    if (input >= _map.size())
        return;
    _map[input].removeAllIndexes();
    _clearUnusedInputs();
}

void ZRChannelMap::clearOutput(uint32_t output)
{
    for (ZRIndexSet& outputs : _map)
        outputs.removeIndex(output);
}

void ZRChannelMap::mapDefaultForCount(uint32_t count)
{
    clear();
    _map.reserve(count);
    for (uint32_t channel = 0; channel < count; ++channel)
        _map.emplace_back(channel);
}

ZRData ZRChannelMap::state() const
{
    ZRArray inputs;
    inputs.reserve(_map.size());
    for (const ZRIndexSet& outputs : _map)
        inputs.emplace_back(ZRArray(outputs.begin(), outputs.end()));
    return ZRKeyedArchiver::archivedDataWithRootObject(ZRPropertyList(std::move(inputs)));
}

void ZRChannelMap::setState(std::span<const uint8_t> state)
{
    const std::optional<ZRPropertyList> root = ZRKeyedUnarchiver::unarchiveObjectWithData(state);
    if (!root || !root->array())
        return;
    std::vector<ZRIndexSet> map;
    map.reserve(root->array()->size());
    for (const ZRPropertyList& outputs : *root->array()) {
        std::optional<ZRIndexSet> set = indexSetFromState(outputs);
        if (!set)
            return;
        map.push_back(std::move(*set));
    }
    _map = std::move(map);
}

void ZRChannelMap::_clearUnusedInputs() noexcept
{
    while (!_map.empty() && _map.back().isEmpty())
        _map.pop_back();
}
