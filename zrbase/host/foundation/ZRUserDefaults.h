#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <mutex>
#include <string>
#include <string_view>

// The application's preferences: registered defaults under values the application has written, kept as a
// property-list file ("$XDG_CONFIG_HOME/<CFBundleName>.plist", else "~/.config/<CFBundleName>.plist", "zrbase"
// standing in for a missing name). Every write is saved at once, through a temporary file renamed over the old one,
// so a value survives a restart of the process and a crash never leaves a torn file. A missing file is an empty
// one; an unreadable or corrupt file is reported once on the console and read as empty, leaving the registered
// defaults, and is replaced by the next write.
class ZR_EXPORT ZRUserDefaults {
public:
    // The application's store; its file is chosen on first use, so the application names its bundle before.
    static ZRUserDefaults& standard();

    // A store over a file of its own (the standard one uses the application's file).
    explicit ZRUserDefaults(std::string path);

    void registerDefaults(const ZRDictionary& defaults);
    // The written value, else the registered default, else none. The typed readers convert as the property
    // list's readers do; a value of another kind gives 0, an empty string, array or dictionary.
    ZRPropertyList objectForKey(std::string_view key) const;
    bool boolForKey(std::string_view key) const;
    int64_t integerForKey(std::string_view key) const;
    double doubleForKey(std::string_view key) const;
    std::string stringForKey(std::string_view key) const;
    ZRArray arrayForKey(std::string_view key) const;
    ZRDictionary dictionaryForKey(std::string_view key) const;

    // Setting none removes the key.
    void setObject(std::string_view key, ZRPropertyList value);
    void removeObjectForKey(std::string_view key);
    // Reads the file again, dropping values not written by this process since.
    void reload();
    const std::string& path() const noexcept { return _path; }

    ZRUserDefaults(const ZRUserDefaults&) = delete;
    ZRUserDefaults& operator=(const ZRUserDefaults&) = delete;

private:
    void _load();
    void _save();
    mutable std::mutex _mutex;
    std::string _path;
    ZRDictionary _registered;
    ZRDictionary _values;
    bool _reportedUnreadable = false;
};
