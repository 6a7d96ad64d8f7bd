#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <cstdint>

// Queries the library adds to index sets.
namespace ZRExtension {

// The member at the position in ascending order (0-based), or ZRNotFound when the set has fewer members.
ZR_EXPORT uint32_t indexAtIndex(const ZRIndexSet& set, uint32_t position) noexcept;
// The members of the set that the other set contains as well.
ZR_EXPORT ZRIndexSet intersectionIndexes(const ZRIndexSet& set, const ZRIndexSet& other);
// Whether the two sets have a member in common.
ZR_EXPORT bool intersectsIndexes(const ZRIndexSet& set, const ZRIndexSet& other) noexcept;

}
