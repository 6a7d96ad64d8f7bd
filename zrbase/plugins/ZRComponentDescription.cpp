#include <zrbase/plugins/ZRComponentDescription.h>

#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <cstring>

namespace {

using Registry = ZRComponentRegistry;
constexpr size_t stateLength = sizeof(ComponentDescription);
static_assert(stateLength == 20);

}

ZRComponentDescription ZRComponentDescription::descriptionWithState(std::span<const uint8_t> state)
{
    ZRComponentDescription description;
    description.setState(state);
    return description;
}

std::vector<ZRComponentDescription> ZRComponentDescription::componentDescriptionsOfType(uint32_t type)
{
    ZRComponentRegistry& registry = ZRComponentRegistry::shared();
    const ComponentDescription search { type, 0, 0, 0, 0 };
    std::vector<ZRComponentDescription> descriptions;
    for (const ZRComponentRegistry::Component* found = registry.findNextComponent(nullptr, search); found;
         found = registry.findNextComponent(found, search))
        descriptions.emplace_back(found->description);
    return descriptions;
}

ZRData ZRComponentDescription::state() const
{
    ZRData bytes(stateLength);
    std::memcpy(bytes.data(), &_description, stateLength);
    return bytes;
}

bool ZRComponentDescription::setState(std::span<const uint8_t> state) noexcept
{
    if (state.size() != stateLength)
        return false;
    std::memcpy(&_description, state.data(), stateLength);
    return true;
}

const ZRComponentRegistry::Component* ZRComponentDescription::component()
{
    ZRComponentRegistry& registry = ZRComponentRegistry::shared();
    if (const ZRComponentRegistry::Component* found = registry.findNextComponent(nullptr, _description))
        return found;
    for (uint32_t* member : { &_description.componentType, &_description.componentSubType,
             &_description.componentManufacturer, &_description.componentFlags, &_description.componentFlagsMask })
        *member = __builtin_bswap32(*member);
    return registry.findNextComponent(nullptr, _description);
}

bool ZRComponentDescription::isEffect() const noexcept
{
    return type() == Registry::musicEffectType || type() == Registry::effectType;
}

bool ZRComponentDescription::isInstrument() const noexcept { return type() == Registry::musicDeviceType; }

bool ZRComponentDescription::isPlayer() const noexcept { return type() == Registry::generatorType; }

bool ZRComponentDescription::isDLSSynth() const noexcept
{
    return type() == Registry::musicDeviceType && subtype() == ZRFourCharCode("dls ")
        && manufacturer() == ZRFourCharCode("appl");
}

bool ZRComponentDescription::acceptsMIDIInput() const noexcept
{
    return type() == Registry::musicEffectType || type() == Registry::musicDeviceType;
}

size_t ZRComponentDescription::hash() const noexcept { return (subtype() & 0xFFFFu) + (type() & 0xFFFF0000u); }

bool ZRComponentDescription::isEqualToComponentDescription(const ZRComponentDescription& other) const noexcept
{
    return type() == other.type() && subtype() == other.subtype() && manufacturer() == other.manufacturer();
}
