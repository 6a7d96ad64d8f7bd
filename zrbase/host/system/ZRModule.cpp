#include <zrbase/host/system/ZRModule.h>

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <sys/utsname.h>
#include <system_error>
#include <vector>

ZRModule::ZRModule(void* handle)
    : _handle(handle)
{
}

ZRModule::~ZRModule() { dlclose(_handle); }

std::unique_ptr<ZRModule> ZRModule::moduleWithPath(const std::string& path, std::string* failure)
{
    // A path without a slash would be searched for on the library path.
    const std::string absolute = path.find('/') == std::string::npos ? "./" + path : path;
    void* handle = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        if (failure) {
            const char* message = dlerror();
            *failure = message ? message : "the module could not be loaded";
        }
        return nullptr;
    }
    return std::unique_ptr<ZRModule>(new ZRModule(handle));
}

void* ZRModule::symbol(const char* name) const { return dlsym(_handle, name); }

std::string ZRModule::executablePath(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::is_directory(path, error))
        return path;
    utsname machine {};
    uname(&machine);
    for (const fs::path& folder :
        { fs::path(path) / "Contents" / (std::string(machine.machine) + "-linux"), fs::path(path) }) {
        std::vector<fs::path> objects;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
            if (entry.path().extension() == ".so" && entry.is_regular_file(error))
                objects.push_back(entry.path());
        if (!objects.empty())
            return std::min_element(objects.begin(), objects.end())->string();
    }
    return {};
}

std::string ZRModule::libraryFolder()
{
    Dl_info info {};
    if (!dladdr(reinterpret_cast<void*>(&ZRModule::libraryFolder), &info) || !info.dli_fname)
        return {};
    return std::filesystem::path(info.dli_fname).parent_path().string();
}
