#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The Component Manager's five-field record by which audio units are found.
struct ComponentDescription {
    uint32_t componentType;
    uint32_t componentSubType;
    uint32_t componentManufacturer;
    uint32_t componentFlags;
    uint32_t componentFlagsMask;
};

// The installed audio components, found the way a Linux desktop has them:
// - LV2 plug-ins found by lilv on the LV2 path. Their class gives the type (instruments 'aumu', other generators
//   'augn', MIDI plug-ins 'aumf', everything else 'aufx'); the subtype is a code derived from the plug-in's URI and
//   the manufacturer one derived from its project (docs/ARCHITECTURE.md, "Component registry", has the rules).
// - Component bundles: folders whose "Contents/Info.plist" (or "Info.plist") declares an "AudioComponents" array
//   of dictionaries with "type", "subtype" and "manufacturer" (four-character strings or numbers) and "name", so
//   that a description saved elsewhere finds its component here.
// LV2 plug-ins come first, in the order of their URIs, then bundles in the order of their paths, each in the order
// of its array. The registry is read once per process, on first use, and again on reload.
class ZR_EXPORT ZRComponentRegistry {
public:
    // The component types of audio units.
    static constexpr uint32_t musicDeviceType = 0x61756D75; // 'aumu'
    static constexpr uint32_t musicEffectType = 0x61756D66; // 'aumf'
    static constexpr uint32_t effectType = 0x61756678; // 'aufx'
    static constexpr uint32_t generatorType = 0x6175676E; // 'augn'

    struct Component {
        ComponentDescription description {};
        std::string name;
        // The LV2 plug-in's URI, or the path of the component bundle.
        std::string identifier;
    };

    // The process's registry: the LV2 path of lilv (LV2_PATH, or its default folders) and the component folders in
    // ZR_COMPONENT_PATH (colon-separated), else "~/Library/Audio/Plug-Ins/Components".
    static ZRComponentRegistry& shared();

    // Searches again: null or empty lists keep the defaults above.
    void reload(
        const std::vector<std::string>* lv2Path = nullptr, const std::vector<std::string>* componentPath = nullptr);

    std::vector<Component> components();
    // The component after `previous` (the first when null) that matches the search record: a zero type, subtype or
    // manufacturer matches any; flags are compared under the search's mask. Null when there is none. The pointer
    // stays valid until the next reload.
    const Component* findNextComponent(const Component* previous, const ComponentDescription& search);

    // The four-character codes derived from text: stable, printable, a capital letter then three lower-case letters
    // or digits for manufacturers, four lower-case letters or digits for subtypes.
    static uint32_t manufacturerCode(const std::string& text);
    static uint32_t subtypeCode(const std::string& text);

private:
    ZRComponentRegistry() = default;
    void _load();

    std::mutex _mutex;
    bool _loaded = false;
    std::vector<std::string> _lv2Path;
    std::vector<std::string> _componentPath;
    std::vector<Component> _components;
};
