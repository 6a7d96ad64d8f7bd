#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The catalogue of the metadata fields the applications know (title, artist, tempo, ...) and the translation of each
// field's key to and from the keys of Ogg Vorbis comments, the audio file information dictionary and four-character
// user-data codes. The catalogue is the library's resource "metadata.plist": an array of entries with the string
// keys "key", "title", "class", "categories" (a bit mask: 1 description, 2 music, 4 rights, 8 encoding),
// "oggVorbisKey", "infoDictionaryFormatKey", "userDataFormatKey", "actionClass" and "formatterSelector", any of
// which may be missing. It is read on first use and kept; the first use is expected on one thread. Without the
// resource every lookup finds nothing.
class ZR_EXPORT ZRMetadata {
public:
    ZRMetadata() = delete;

    // The entries whose categories meet the mask, in catalogue order: dictionaries of their "key", "title" and
    // "class"; their titles; their keys.
    static ZRArray propertiesForCategoryMask(uint32_t mask);
    static std::vector<std::string> titlesForCategoryMask(uint32_t mask);
    static std::vector<std::string> keysForCategoryMask(uint32_t mask);
    // The entry's categories, 0 for an unknown key.
    static uint32_t categoryMaskForKey(std::string_view key);
    static std::optional<std::string> titleForKey(std::string_view key);
    static std::optional<std::string> actionClassNameForKey(std::string_view key);
    static std::optional<std::string> formatterSelectorForKey(std::string_view key);
    static std::optional<std::string> infoDictionaryFormatKeyForKey(std::string_view key);
    // The Ogg Vorbis name of a key and back; each gives its argument when the catalogue has no translation.
    static std::string oggVorbisFormatKeyForKey(std::string_view key);
    static std::string keyForOggVorbisFormatKey(std::string_view oggKey);
    static std::optional<std::string> keyForInfoDictionaryFormatKey(std::string_view infoKey);
    // The key of a four-character user-data code, its bytes read as Latin-1 characters ('©nam').
    static std::optional<std::string> keyForUserDataFormatKey(uint32_t code);
    // The key of the first entry with that title.
    static std::optional<std::string> keyForTitle(std::string_view title);
    static bool keyExists(std::string_view key);
    // A copy of the whole entry.
    static std::optional<ZRDictionary> infoForKey(std::string_view key);
    static std::optional<ZRDictionary> infoForTitle(std::string_view title);
    // Reads the catalogue again.
    static void loadArray();

private:
    // The first entry whose value under `entryKey` is `value`.
    static const ZRDictionary* _entryWithKey(std::string_view entryKey, std::string_view value);
};
