#include <zrbase/host/system/ZRComponentRegistry.h>

#include <zrbase/host/foundation/ZRPropertyList.h>

#include <lilv/lilv.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

namespace {

// 64-bit FNV-1a over the text's UTF-8 bytes.
uint64_t fnv1a(const std::string& text)
{
    uint64_t hash = 0xCBF29CE484222325u;
    for (unsigned char byte : text) {
        hash ^= byte;
        hash *= 0x100000001B3u;
    }
    return hash;
}

uint32_t codeFromHash(uint64_t hash, bool capitalFirst)
{
    static constexpr std::string_view capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    static constexpr std::string_view others = "abcdefghijklmnopqrstuvwxyz0123456789";
    uint32_t result = 0;
    for (int index = 0; index < 4; ++index) {
        const std::string_view alphabet = index == 0 && capitalFirst ? capitals : others;
        result = result << 8 | uint8_t(alphabet[hash % alphabet.size()]);
        hash /= alphabet.size();
    }
    return result;
}

std::vector<std::string> splitPath(const char* text)
{
    std::vector<std::string> folders;
    if (!text)
        return folders;
    std::string_view rest(text);
    while (!rest.empty()) {
        const size_t colon = rest.find(':');
        if (colon != 0)
            folders.emplace_back(rest.substr(0, colon));
        if (colon == std::string_view::npos)
            break;
        rest.remove_prefix(colon + 1);
    }
    return folders;
}

std::string nodeString(LilvNode* node)
{
    std::string text = node ? lilv_node_as_string(node) : "";
    lilv_node_free(node);
    return text;
}

// "scheme://authority" of a URI, or the whole URI when it has no authority.
std::string uriAuthority(const std::string& uri)
{
    const size_t start = uri.find("://");
    if (start == std::string::npos)
        return uri;
    return uri.substr(0, uri.find('/', start + 3));
}

uint32_t typeForClasses(const std::set<std::string>& classes)
{
    const auto has = [&](const char* name) { return classes.count(std::string(LILV_NS_LV2) + name) > 0; };
    if (has("InstrumentPlugin"))
        return ZRComponentRegistry::musicDeviceType;
    if (has("GeneratorPlugin") || has("OscillatorPlugin") || has("ConstantPlugin"))
        return ZRComponentRegistry::generatorType;
    if (has("MIDIPlugin"))
        return ZRComponentRegistry::musicEffectType;
    return ZRComponentRegistry::effectType;
}

std::vector<ZRComponentRegistry::Component> lv2Components(const std::vector<std::string>& path)
{
    LilvWorld* world = lilv_world_new();
    if (!path.empty()) {
        std::string joined;
        for (const std::string& folder : path)
            joined += (joined.empty() ? "" : ":") + folder;
        // The world keeps a copy of the path.
        LilvNode* value = lilv_new_string(world, joined.c_str());
        lilv_world_set_option(world, LILV_OPTION_LV2_PATH, value);
        lilv_node_free(value);
    }
    lilv_world_load_all(world);
    LilvNode* rdfType = lilv_new_uri(world, LILV_NS_RDF "type");
    const LilvPluginClasses* knownClasses = lilv_world_get_plugin_classes(world);

    std::vector<ZRComponentRegistry::Component> components;
    const LilvPlugins* plugins = lilv_world_get_all_plugins(world);
    LILV_FOREACH(plugins, iterator, plugins)
    {
        const LilvPlugin* plugin = lilv_plugins_get(plugins, iterator);
        const std::string uri = lilv_node_as_uri(lilv_plugin_get_uri(plugin));

        // The plug-in's own types and every class above them that the LV2 path describes.
        std::set<std::string> classes;
        LilvNodes* types = lilv_plugin_get_value(plugin, rdfType);
        LILV_FOREACH(nodes, node, types)
        {
            const LilvNode* type = lilv_nodes_get(types, node);
            if (lilv_node_is_uri(type))
                classes.insert(lilv_node_as_uri(type));
        }
        lilv_nodes_free(types);
        for (std::vector<std::string> open(classes.begin(), classes.end()); !open.empty();) {
            LilvNode* uriNode = lilv_new_uri(world, open.back().c_str());
            open.pop_back();
            const LilvPluginClass* pluginClass = lilv_plugin_classes_get_by_uri(knownClasses, uriNode);
            lilv_node_free(uriNode);
            const LilvNode* parent = pluginClass ? lilv_plugin_class_get_parent_uri(pluginClass) : nullptr;
            if (parent && classes.insert(lilv_node_as_uri(parent)).second)
                open.emplace_back(lilv_node_as_uri(parent));
        }

        std::string maker = nodeString(lilv_plugin_get_project(plugin));
        if (maker.empty())
            maker = nodeString(lilv_plugin_get_author_name(plugin));
        if (maker.empty())
            maker = uriAuthority(uri);
        ZRComponentRegistry::Component component;
        component.description = { typeForClasses(classes), ZRComponentRegistry::subtypeCode(uri),
            ZRComponentRegistry::manufacturerCode(maker), 0, 0 };
        component.name = nodeString(lilv_plugin_get_name(plugin));
        component.identifier = uri;
        components.push_back(std::move(component));
    }
    lilv_node_free(rdfType);
    lilv_world_free(world);
    std::sort(components.begin(), components.end(),
        [](const auto& first, const auto& second) { return first.identifier < second.identifier; });
    return components;
}

uint32_t codeValue(const ZRPropertyList* value)
{
    if (!value)
        return 0;
    if (const std::string* text = value->string()) {
        if (text->size() != 4)
            return 0;
        return uint32_t(uint8_t((*text)[0])) << 24 | uint32_t(uint8_t((*text)[1])) << 16
            | uint32_t(uint8_t((*text)[2])) << 8 | uint8_t((*text)[3]);
    }
    return value->unsignedIntValue();
}

std::vector<ZRComponentRegistry::Component> bundleComponents(const std::vector<std::string>& path)
{
    namespace fs = std::filesystem;
    std::vector<std::string> bundles;
    std::error_code error;
    for (const std::string& folder : path)
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
            if (entry.is_directory(error))
                bundles.push_back(entry.path().string());
    std::sort(bundles.begin(), bundles.end());

    std::vector<ZRComponentRegistry::Component> components;
    for (const std::string& bundle : bundles) {
        std::optional<ZRPropertyList> info
            = ZRPropertyList::propertyListWithContentsOfFile(bundle + "/Contents/Info.plist");
        if (!info)
            info = ZRPropertyList::propertyListWithContentsOfFile(bundle + "/Info.plist");
        const ZRDictionary* dictionary = info ? info->dictionary() : nullptr;
        const auto declared = dictionary ? dictionary->find("AudioComponents") : ZRDictionary::const_iterator {};
        if (!dictionary || declared == dictionary->end() || !declared->second.array())
            continue;
        for (const ZRPropertyList& entry : *declared->second.array()) {
            const ZRDictionary* fields = entry.dictionary();
            if (!fields)
                continue;
            const auto field = [&](const char* key) -> const ZRPropertyList* {
                const auto found = fields->find(key);
                return found == fields->end() ? nullptr : &found->second;
            };
            ZRComponentRegistry::Component component;
            component.description
                = { codeValue(field("type")), codeValue(field("subtype")), codeValue(field("manufacturer")), 0, 0 };
            if (!component.description.componentType)
                continue;
            if (const ZRPropertyList* name = field("name"); name && name->string())
                component.name = *name->string();
            component.identifier = bundle;
            components.push_back(std::move(component));
        }
    }
    return components;
}

bool matches(const ComponentDescription& candidate, const ComponentDescription& search)
{
    return (!search.componentType || search.componentType == candidate.componentType)
        && (!search.componentSubType || search.componentSubType == candidate.componentSubType)
        && (!search.componentManufacturer || search.componentManufacturer == candidate.componentManufacturer)
        && (candidate.componentFlags & search.componentFlagsMask)
        == (search.componentFlags & search.componentFlagsMask);
}

}

ZRComponentRegistry& ZRComponentRegistry::shared()
{
    static ZRComponentRegistry registry;
    return registry;
}

void ZRComponentRegistry::reload(const std::vector<std::string>* lv2Path, const std::vector<std::string>* componentPath)
{
    const std::lock_guard lock(_mutex);
    _lv2Path = lv2Path ? *lv2Path : std::vector<std::string> {};
    _componentPath = componentPath ? *componentPath : std::vector<std::string> {};
    _loaded = false;
    _load();
}

void ZRComponentRegistry::_load()
{
    if (_loaded)
        return;
    std::vector<std::string> componentPath = _componentPath;
    if (componentPath.empty())
        componentPath = splitPath(std::getenv("ZR_COMPONENT_PATH"));
    if (componentPath.empty())
        if (const char* home = std::getenv("HOME"))
            componentPath.push_back(std::string(home) + "/Library/Audio/Plug-Ins/Components");
    _components = lv2Components(_lv2Path);
    std::vector<Component> bundles = bundleComponents(componentPath);
    _components.insert(_components.end(), bundles.begin(), bundles.end());
    _loaded = true;
}

std::vector<ZRComponentRegistry::Component> ZRComponentRegistry::components()
{
    const std::lock_guard lock(_mutex);
    _load();
    return _components;
}

const ZRComponentRegistry::Component* ZRComponentRegistry::findNextComponent(
    const Component* previous, const ComponentDescription& search)
{
    const std::lock_guard lock(_mutex);
    _load();
    size_t start = 0;
    if (previous && previous >= _components.data() && previous < _components.data() + _components.size())
        start = static_cast<size_t>(previous - _components.data()) + 1;
    for (size_t index = start; index < _components.size(); ++index)
        if (matches(_components[index].description, search))
            return &_components[index];
    return nullptr;
}

uint32_t ZRComponentRegistry::manufacturerCode(const std::string& text) { return codeFromHash(fnv1a(text), true); }

uint32_t ZRComponentRegistry::subtypeCode(const std::string& text) { return codeFromHash(fnv1a(text), false); }
