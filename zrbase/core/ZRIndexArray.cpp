#include <zrbase/core/ZRIndexArray.h>

#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRIndexSet.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <span>

namespace {

const char* const indexesKey = "indexes";

}

ZRIndexArray::ZRIndexArray(ZRIndexRange range)
    : _indexes(range.length)
{
    std::iota(_indexes.begin(), _indexes.end(), range.location);
}

ZRIndexArray::ZRIndexArray(const ZRKeyedUnarchiver& coder)
{
    const std::optional<ZRData> bytes = coder.decodeBytes(indexesKey);
    if (!bytes || bytes->size() < sizeof(uint32_t))
        return;
    _indexes.resize(bytes->size() / sizeof(uint32_t));
    std::memcpy(_indexes.data(), bytes->data(), _indexes.size() * sizeof(uint32_t));
}

uint32_t ZRIndexArray::indexAtIndex(uint32_t position) const noexcept
{
    return position < _indexes.size() ? _indexes[position] : ZRNotFound;
}

void ZRIndexArray::addIndex(uint32_t value) { _indexes.push_back(value); }

bool ZRIndexArray::addIndex(uint32_t value, uint32_t position)
{
    if (position > _indexes.size())
        return false;
    _indexes.insert(_indexes.begin() + position, value);
    return true;
}

bool ZRIndexArray::removeIndexAtIndex(uint32_t position)
{
    if (position >= _indexes.size())
        return false;
    _indexes.erase(_indexes.begin() + position);
    return true;
}

void ZRIndexArray::invert()
{
    constexpr uint32_t unset = ZRNotFound;
    std::vector<uint32_t> inverse(_indexes.size(), unset);
    for (uint32_t position = 0; position < count(); ++position) {
        const uint32_t value = _indexes[position];
        if (value >= count() || inverse[value] != unset)
            return;
        inverse[value] = position;
    }
    _indexes = std::move(inverse);
}

void ZRIndexArray::moveIndexesAtIndexes(const ZRIndexSet& positions, uint32_t destination)
{
    const uint32_t total = count();
    if (positions.isEmpty() || positions.lastIndex() >= total || destination > total)
        return;
    const uint32_t moved = positions.count();
    std::vector<uint32_t> scratch;
    scratch.reserve(moved);
    for (uint32_t position : positions)
        scratch.push_back(_indexes[position]);

    // Taking the values out from the highest position down keeps the lower positions valid. The last slot keeps
    // its old value; it is overwritten below. A destination of 0 stays 0 rather than wrapping.
    for (auto position = positions.indexes().rbegin(); position != positions.indexes().rend(); ++position) {
        std::copy(_indexes.begin() + *position + 1, _indexes.end(), _indexes.begin() + *position);
        if (destination >= *position && destination > 0)
            --destination;
    }
    std::copy_backward(_indexes.begin() + destination, _indexes.end() - moved, _indexes.end());
    std::copy(scratch.begin(), scratch.end(), _indexes.begin() + destination);
}

void ZRIndexArray::encodeWithCoder(ZRKeyedArchiver& coder) const
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(_indexes.data());
    coder.encodeBytes(indexesKey, std::span(bytes, _indexes.size() * sizeof(uint32_t)));
}

std::string ZRIndexArray::description() const
{
    std::string text = "ZRIndexArray: { ";
    for (uint32_t value : _indexes)
        text += ZRStringWithFormat("%d ", value);
    return text + "}";
}
