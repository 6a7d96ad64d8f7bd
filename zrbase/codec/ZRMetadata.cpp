#include <zrbase/codec/ZRMetadata.h>

#include <zrbase/host/foundation/ZRBundle.h>

namespace {

std::optional<ZRArray>& catalogue()
{
    static std::optional<ZRArray> entries;
    return entries;
}

const ZRArray& entries()
{
    if (!catalogue())
        ZRMetadata::loadArray();
    static const ZRArray none;
    return catalogue() ? *catalogue() : none;
}

std::optional<std::string> stringOf(const ZRDictionary* entry, std::string_view name)
{
    if (!entry)
        return std::nullopt;
    const auto found = entry->find(name);
    if (found == entry->end() || !found->second.string())
        return std::nullopt;
    return *found->second.string();
}

template <typename Transform> auto collect(uint32_t mask, Transform transform)
{
    std::vector<decltype(transform(std::declval<const ZRDictionary&>()))> result;
    for (const ZRPropertyList& item : entries()) {
        const ZRDictionary* entry = item.dictionary();
        if (!entry)
            continue;
        const auto categories = entry->find("categories");
        if (categories != entry->end() && (categories->second.unsignedIntValue() & mask))
            result.push_back(transform(*entry));
    }
    return result;
}

} // namespace

void ZRMetadata::loadArray()
{
    catalogue().reset();
    const std::optional<std::string> path = ZRBundle::library().pathForResource("metadata", "plist");
    if (!path)
        return;
    const std::optional<ZRPropertyList> list = ZRPropertyList::propertyListWithContentsOfFile(*path);
    if (list && list->array())
        catalogue() = *list->array();
}

const ZRDictionary* ZRMetadata::_entryWithKey(std::string_view entryKey, std::string_view value)
{
    for (const ZRPropertyList& item : entries()) {
        const ZRDictionary* entry = item.dictionary();
        if (entry && stringOf(entry, entryKey) == value)
            return entry;
    }
    return nullptr;
}

ZRArray ZRMetadata::propertiesForCategoryMask(uint32_t mask)
{
    const auto dictionaries = collect(mask, [](const ZRDictionary& entry) {
        ZRDictionary properties;
        for (const char* name : { "key", "title", "class" }) {
            if (const auto found = entry.find(name); found != entry.end())
                properties.emplace(name, found->second);
        }
        return properties;
    });
    return ZRArray(dictionaries.begin(), dictionaries.end());
}

std::vector<std::string> ZRMetadata::titlesForCategoryMask(uint32_t mask)
{
    return collect(mask, [](const ZRDictionary& entry) { return stringOf(&entry, "title").value_or(""); });
}

std::vector<std::string> ZRMetadata::keysForCategoryMask(uint32_t mask)
{
    return collect(mask, [](const ZRDictionary& entry) { return stringOf(&entry, "key").value_or(""); });
}

uint32_t ZRMetadata::categoryMaskForKey(std::string_view key)
{
    const ZRDictionary* entry = _entryWithKey("key", key);
    if (!entry)
        return 0;
    const auto found = entry->find("categories");
    return found == entry->end() ? 0 : found->second.unsignedIntValue();
}

std::optional<std::string> ZRMetadata::titleForKey(std::string_view key)
{
    return stringOf(_entryWithKey("key", key), "title");
}

std::optional<std::string> ZRMetadata::actionClassNameForKey(std::string_view key)
{
    return stringOf(_entryWithKey("key", key), "actionClass");
}

std::optional<std::string> ZRMetadata::formatterSelectorForKey(std::string_view key)
{
    return stringOf(_entryWithKey("key", key), "formatterSelector");
}

std::optional<std::string> ZRMetadata::infoDictionaryFormatKeyForKey(std::string_view key)
{
    return stringOf(_entryWithKey("key", key), "infoDictionaryFormatKey");
}

std::string ZRMetadata::oggVorbisFormatKeyForKey(std::string_view key)
{
    return stringOf(_entryWithKey("key", key), "oggVorbisKey").value_or(std::string(key));
}

std::string ZRMetadata::keyForOggVorbisFormatKey(std::string_view oggKey)
{
    return stringOf(_entryWithKey("oggVorbisKey", oggKey), "key").value_or(std::string(oggKey));
}

std::optional<std::string> ZRMetadata::keyForInfoDictionaryFormatKey(std::string_view infoKey)
{
    return stringOf(_entryWithKey("infoDictionaryFormatKey", infoKey), "key");
}

std::optional<std::string> ZRMetadata::keyForUserDataFormatKey(uint32_t code)
{
    // Each byte, most significant first, is one Latin-1 character.
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = uint8_t(code >> shift);
        if (byte < 0x80) {
            text.push_back(char(byte));
        } else {
            text.push_back(char(0xC0 | (byte >> 6)));
            text.push_back(char(0x80 | (byte & 0x3F)));
        }
    }
    return stringOf(_entryWithKey("userDataFormatKey", text), "key");
}

std::optional<std::string> ZRMetadata::keyForTitle(std::string_view title)
{
    return stringOf(_entryWithKey("title", title), "key");
}

bool ZRMetadata::keyExists(std::string_view key) { return _entryWithKey("key", key) != nullptr; }

std::optional<ZRDictionary> ZRMetadata::infoForKey(std::string_view key)
{
    const ZRDictionary* entry = _entryWithKey("key", key);
    return entry ? std::optional<ZRDictionary>(*entry) : std::nullopt;
}

std::optional<ZRDictionary> ZRMetadata::infoForTitle(std::string_view title)
{
    const ZRDictionary* entry = _entryWithKey("title", title);
    return entry ? std::optional<ZRDictionary>(*entry) : std::nullopt;
}
