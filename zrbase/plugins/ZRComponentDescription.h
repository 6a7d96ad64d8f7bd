#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/system/ZRComponentRegistry.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// A small value around the component description record by which audio units are found: it enumerates the
// installed components of a type (ZRComponentRegistry), classifies them, compares them by type, subtype and
// manufacturer, persists them as the record's 20 bytes in the machine's byte order, and finds the component again,
// also from a record saved on a machine of the other byte order.
class ZR_EXPORT ZRComponentDescription {
public:
    // All zero (the class factory of the same name would clash with the record's accessor).
    ZRComponentDescription() = default;
    explicit ZRComponentDescription(const ComponentDescription& description) noexcept
        : _description(description)
    {
    }
    static ZRComponentDescription descriptionWithState(std::span<const uint8_t> state);

    // Every installed component of the type, in the registry's order.
    static std::vector<ZRComponentDescription> componentDescriptionsOfType(uint32_t type);

    ComponentDescription& description() noexcept { return _description; }
    const ComponentDescription& description() const noexcept { return _description; }
    uint32_t type() const noexcept { return _description.componentType; }
    void setType(uint32_t type) noexcept { _description.componentType = type; }
    uint32_t subtype() const noexcept { return _description.componentSubType; }
    void setSubtype(uint32_t subtype) noexcept { _description.componentSubType = subtype; }
    uint32_t manufacturer() const noexcept { return _description.componentManufacturer; }
    void setManufacturer(uint32_t manufacturer) noexcept { _description.componentManufacturer = manufacturer; }

    // The five members' 20 bytes in the machine's byte order.
    ZRData state() const;
    // Copies the bytes over the record; false, and nothing changed, unless they are exactly 20.
    bool setState(std::span<const uint8_t> state) noexcept;

    // The installed component this record describes. When there is none, every member is byte-swapped in place (a
    // record saved on a machine of the other byte order) and the search made once more; the swap stays even when
    // that fails too.
    const ZRComponentRegistry::Component* component();

    bool isEffect() const noexcept;
    bool isInstrument() const noexcept;
    bool isPlayer() const noexcept;
    bool isDLSSynth() const noexcept;
    bool acceptsMIDIInput() const noexcept;

    // (subtype AND 0xffff) + (type AND 0xffff0000).
    size_t hash() const noexcept;
    // Type, subtype and manufacturer equal; flags and mask are not compared.
    bool isEqualToComponentDescription(const ZRComponentDescription& other) const noexcept;
    bool operator==(const ZRComponentDescription& other) const noexcept { return isEqualToComponentDescription(other); }

private:
    ComponentDescription _description {};
};

template <> struct std::hash<ZRComponentDescription> {
    size_t operator()(const ZRComponentDescription& description) const noexcept { return description.hash(); }
};
