#include <zrbase/host/foundation/ZRUserDefaults.h>

#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRPath.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

// The folder of configuration files: $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
std::string configurationFolder()
{
    if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder && folder[0] == '/')
        return folder;
    return ZRHomeDirectory() + "/.config";
}

std::string standardPath()
{
    std::string name = ZRBundle::main().name();
    std::replace(name.begin(), name.end(), '/', '-');
    return configurationFolder() + "/" + name + ".plist";
}

}

ZRUserDefaults& ZRUserDefaults::standard()
{
    static ZRUserDefaults defaults(standardPath());
    return defaults;
}

ZRUserDefaults::ZRUserDefaults(std::string path)
    : _path(std::move(path))
{
    _load();
}

void ZRUserDefaults::_load()
{
    _values.clear();
    std::error_code error;
    if (!std::filesystem::exists(_path, error))
        return;
    std::string failure;
    const auto file = ZRPropertyList::propertyListWithContentsOfFile(_path, &failure);
    if (file && file->dictionary()) {
        _values = *file->dictionary();
        return;
    }
    if (!_reportedUnreadable)
        ZRConsoleLogLine("The preferences start empty and replace the file at the next change. "
            + (file ? "The file " + _path + " holds no dictionary." : failure));
    _reportedUnreadable = true;
}

// The file is written by the property list, which renames a complete temporary file over the old one.
void ZRUserDefaults::_save()
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(_path).parent_path(), error);
    // The values move into a property list for writing and back, rather than being copied on every write.
    ZRPropertyList file(std::move(_values));
    std::string failure;
    const bool saved = file.writeToFile(_path, ZRPropertyList::Format::XML, &failure);
    _values = std::move(*file.dictionary());
    if (!saved)
        ZRConsoleLogLine("The preferences could not be saved. " + failure);
}

void ZRUserDefaults::registerDefaults(const ZRDictionary& defaults)
{
    const std::lock_guard lock(_mutex);
    for (const auto& [key, value] : defaults)
        _registered.insert_or_assign(key, value);
}

ZRPropertyList ZRUserDefaults::objectForKey(std::string_view key) const
{
    const std::lock_guard lock(_mutex);
    if (const ZRPropertyList* value = ZRDictionaryObject(_values, key))
        return *value;
    if (const ZRPropertyList* value = ZRDictionaryObject(_registered, key))
        return *value;
    return {};
}

bool ZRUserDefaults::boolForKey(std::string_view key) const { return objectForKey(key).boolValue(); }

int64_t ZRUserDefaults::integerForKey(std::string_view key) const { return objectForKey(key).longLongValue(); }

double ZRUserDefaults::doubleForKey(std::string_view key) const { return objectForKey(key).doubleValue(); }

std::string ZRUserDefaults::stringForKey(std::string_view key) const { return objectForKey(key).stringValue(); }

ZRArray ZRUserDefaults::arrayForKey(std::string_view key) const
{
    ZRPropertyList value = objectForKey(key);
    ZRArray* array = value.array();
    return array ? std::move(*array) : ZRArray();
}

ZRDictionary ZRUserDefaults::dictionaryForKey(std::string_view key) const
{
    ZRPropertyList value = objectForKey(key);
    ZRDictionary* dictionary = value.dictionary();
    return dictionary ? std::move(*dictionary) : ZRDictionary();
}

void ZRUserDefaults::setObject(std::string_view key, ZRPropertyList value)
{
    const std::lock_guard lock(_mutex);
    if (value.isNone()) {
        if (const auto found = _values.find(key); found != _values.end())
            _values.erase(found);
    } else
        _values.insert_or_assign(std::string(key), std::move(value));
    _save();
}

void ZRUserDefaults::removeObjectForKey(std::string_view key) { setObject(key, ZRPropertyList()); }

void ZRUserDefaults::reload()
{
    const std::lock_guard lock(_mutex);
    _load();
}
