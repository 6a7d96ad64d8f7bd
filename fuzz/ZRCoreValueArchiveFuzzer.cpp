#include <zrbase/core/ZRIndexArray.h>
#include <zrbase/core/ZRRange.h>
#include <zrbase/core/ZRUUID.h>
#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <span>

// A range, an index array and an identifier read from any keyed archive: whatever times, rates and values it holds,
// working with them stays defined (times of any size or none turned into frames, moves and inversions of any
// values), and what was read archives again into the same values.
namespace {

bool isSameRange(const ZRRange& a, const ZRRange& b)
{
    return std::bit_cast<uint64_t>(a.location()) == std::bit_cast<uint64_t>(b.location())
        && std::bit_cast<uint64_t>(a.length()) == std::bit_cast<uint64_t>(b.length()) && a.rate() == b.rate();
}

void exercise(ZRRange range)
{
    range.description();
    range.sampleRange();
    range.sampleMidpoint();
    range.normalizedSampleLocation(range.rate());
    range.includesSampleLocation(range.sampleEnd());
    const ZRRange other = ZRRange::rangeWithSampleStart(range.sampleEnd(), range.sampleStart(), range.rate());
    range.rangeIntersectingRange(other);
    range.includeRange(other);
    range.scaleLength(range.location(), true);
    range.chokeToSampleStart(range.sampleStart(), static_cast<int32_t>(range.sampleLength()));
    range.description();
}

void exercise(ZRIndexArray array)
{
    array.description();
    // Positions and a destination taken from the values themselves, in and out of range.
    ZRIndexSet positions;
    for (uint32_t position = 0; position < array.count() && position < 8; ++position)
        positions.addIndex(array.indexAtIndex(position) % (array.count() + 1));
    array.moveIndexesAtIndexes(positions, array.indexAtIndex(0) % (array.count() + 2));
    array.invert();
    array.removeIndexAtIndex(array.indexAtIndex(1));
    array.addIndex(0, array.indexAtIndex(2));
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(std::span(data, size));
    if (!unarchiver)
        return 0;
    const ZRRange range(*unarchiver);
    const ZRIndexArray array(*unarchiver);
    const ZRUUID uuid(*unarchiver);
    exercise(range);
    exercise(array);
    if (ZRUUID::uuidWithString(uuid.description()) != uuid)
        std::abort();

    ZRKeyedArchiver archiver;
    range.encodeWithCoder(archiver);
    array.encodeWithCoder(archiver);
    uuid.encodeWithCoder(archiver);
    const auto again = ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding("ZRRange"));
    if (!again || !isSameRange(ZRRange(*again), range) || ZRIndexArray(*again) != array || ZRUUID(*again) != uuid)
        std::abort();
    return 0;
}
