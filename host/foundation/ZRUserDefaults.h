#pragma once

#include "host/foundation/ZRExport.h"
#include "host/foundation/ZRPropertyList.h"

#include <mutex>
#include <string>
#include <string_view>

// The application's preferences: registered defaults under values the application has written, kept as a
// property-list file ("$XDG_CONFIG_HOME/<CFBundleName>.plist", else "~/.config/<CFBundleName>.plist"). Every
// write is saved at once, so a value survives a restart of the process. A missing file is an empty one; an
// unreadable or corrupt file is reported on the console and read as empty, leaving the registered defaults.
class ZR_EXPORT ZRUserDefaults {
public:
    static ZRUserDefaults& standard();

    // A store over a file of its own (the standard one uses the application's file).
    explicit ZRUserDefaults(std::string path);

    void registerDefaults(const ZRDictionary& defaults);
    // The written value, else the registered default, else none.
    ZRPropertyList objectForKey(std::string_view key) const;
    bool boolForKey(std::string_view key) const;
    int64_t integerForKey(std::string_view key) const;
    double doubleForKey(std::string_view key) const;
    std::string stringForKey(std::string_view key) const;
    ZRArray arrayForKey(std::string_view key) const;
    ZRDictionary dictionaryForKey(std::string_view key) const;

    void setObject(std::string_view key, ZRPropertyList value);
    void removeObjectForKey(std::string_view key);
    // Reads the file again, dropping values not written by this process since.
    void reload();
    const std::string& path() const noexcept { return _path; }

    ZRUserDefaults(const ZRUserDefaults&) = delete;
    ZRUserDefaults& operator=(const ZRUserDefaults&) = delete;

private:
    void _save();
    mutable std::mutex _mutex;
    std::string _path;
    ZRDictionary _registered;
    ZRDictionary _values;
};
