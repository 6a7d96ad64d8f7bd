#pragma once

#include <zrbase/host/foundation/ZRPropertyList.h>

#include <plist/plist.h>

#include <memory>
#include <optional>
#include <span>
#include <string>

// The bridge between property-list values and libplist nodes, shared by the property list and the keyed coder.
namespace ZRPropertyListPrivate {

struct NodeDeleter {
    void operator()(void* node) const noexcept { plist_free(static_cast<plist_t>(node)); }
};
// A node tree owned by its holder.
using Node = std::unique_ptr<void, NodeDeleter>;

// Parses XML or binary property-list bytes independently of the C locale; null, with a sentence in `failure`,
// when the bytes are not a property list.
Node parse(std::span<const uint8_t> bytes, std::string* failure);
// The bytes of a node tree in the given format.
std::optional<ZRData> serialize(plist_t node, ZRPropertyList::Format format, std::string* failure);

// The value of a boolean, integer, real, string, data or date node; none for every other kind. A string ends at a
// zero character, and its bytes that are not UTF-8 read as U+FFFD.
ZRPropertyList scalarValue(plist_t node);
// A new node for a boolean, integer, real, string, data or date value; null for other kinds. A string ends at its
// first zero character (libplist keeps C strings), and its bytes that are not UTF-8 are written as U+FFFD.
plist_t newScalarNode(const ZRPropertyList& value);

// Seconds since the host's reference date, 2001-01-01 00:00:00 UTC, at microsecond resolution.
double referenceSeconds(ZRDate date) noexcept;
// The date so many seconds after the reference date; NaN gives the reference date, dates beyond the clock's range
// are clamped to it.
ZRDate dateWithReferenceSeconds(double seconds) noexcept;

}
