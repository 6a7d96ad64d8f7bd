#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <memory>
#include <string>

// Loaded code: a shared object opened with dlopen, its symbols looked up by name, unloaded when destroyed.
class ZR_EXPORT ZRModule {
public:
    // Loads the shared object, resolving its symbols now and keeping them to itself; null and the loader's
    // message in `failure` when it cannot be loaded.
    static std::unique_ptr<ZRModule> moduleWithPath(const std::string& path, std::string* failure = nullptr);
    ~ZRModule();
    ZRModule(const ZRModule&) = delete;
    ZRModule& operator=(const ZRModule&) = delete;

    // The address of the symbol, null when the module has none of that name.
    void* symbol(const char* name) const;
    // The shared object inside a plug-in bundle folder ("<folder>/Contents/<machine>-linux/*.so", else a "*.so"
    // directly in the folder, the first by name), or the path itself when it is not a folder. Empty when a
    // folder holds none.
    static std::string executablePath(const std::string& path);
    // The folder of the shared object that holds this library's code.
    static std::string libraryFolder();

private:
    explicit ZRModule(void* handle);
    void* _handle;
};
