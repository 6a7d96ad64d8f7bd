#include <zrbase/host/foundation/ZRBundle.h>

#include <zrbase/host/foundation/ZRConsoleLog.h>

#include <dlfcn.h>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

fs::path resolvedPath(const fs::path& path)
{
    std::error_code error;
    fs::path result = fs::weakly_canonical(path, error);
    return error ? path.lexically_normal() : result;
}

bool fileExists(const fs::path& path)
{
    std::error_code error;
    return fs::exists(path, error);
}

std::string lowercased(std::string text)
{
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string textDomainOfInfo(const ZRDictionary& info)
{
    const ZRPropertyList* name = ZRDictionaryObject(info, "CFBundleName");
    return name ? lowercased(name->stringValue()) : std::string();
}

// Any object of the library will do: dladdr names the file that holds it.
const char libraryAnchor = 0;

}

ZRBundle& ZRBundle::main()
{
    static ZRBundle* const bundle = [] {
        static ZRBundle instance;
        instance._loadMain();
        return &instance;
    }();
    return *bundle;
}

void ZRBundle::_loadMain()
{
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    const fs::path folder = error ? fs::current_path(error) : executable.parent_path();
    const fs::path infoFile = folder / "Info.plist";
    if (fileExists(infoFile)) {
        std::string failure;
        const auto info = ZRPropertyList::propertyListWithContentsOfFile(infoFile.string(), &failure);
        if (info && info->dictionary())
            _info = *info->dictionary();
        else
            ZRConsoleLogLine(
                "The application's information is ignored: " + (info ? "it is not a dictionary." : failure));
    }
    _resourcePath = (folder / "resources").string();
    _localePath = _resourcePath + "/locale";
    _textDomain = textDomainOfInfo(_info);
}

ZRBundle& ZRBundle::library()
{
    static ZRBundle* const bundle = [] {
        static ZRBundle instance;
        Dl_info library {};
        const std::string file = dladdr(&libraryAnchor, &library) && library.dli_fname ? library.dli_fname : "";
        instance._info = ZRDictionary { { "CFBundleName", "ZRBase" } };
        instance._resourcePath = libraryResourcePath(file);
        instance._localePath = instance._resourcePath + "/locale";
        instance._textDomain = "zrbase";
        instance._textDomainChosen = true;
        return &instance;
    }();
    return *bundle;
}

std::string ZRBundle::libraryResourcePath(const std::string& libraryFile)
{
    if (libraryFile.empty())
        return ZR_INSTALL_RESOURCES;
    // The build writes the library to the top of the build tree, the folder that holds its resources.
    const fs::path buildResources = ZR_BUILD_RESOURCES;
    const fs::path libraryFolder = resolvedPath(libraryFile).parent_path();
    if (libraryFolder == resolvedPath(buildResources.parent_path()))
        return buildResources.string();
    for (fs::path folder = libraryFolder; folder.has_relative_path(); folder = folder.parent_path()) {
        if (fileExists(folder / "share/zrbase"))
            return (folder / "share/zrbase").string();
    }
    return ZR_INSTALL_RESOURCES;
}

const ZRDictionary& ZRBundle::infoDictionary() const { return _info; }

void ZRBundle::setInfoDictionary(ZRDictionary info)
{
    _info = std::move(info);
    if (!_textDomainChosen)
        _textDomain = textDomainOfInfo(_info);
}

std::string ZRBundle::objectForInfoDictionaryKey(std::string_view key) const
{
    const ZRPropertyList* value = ZRDictionaryObject(_info, key);
    return value ? value->stringValue() : std::string();
}

std::string ZRBundle::name() const
{
    std::string name = objectForInfoDictionaryKey("CFBundleName");
    if (!name.empty() || this != &main())
        return name;
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).filename().string();
}

void ZRBundle::setResourcePath(std::string path)
{
    _resourcePath = std::move(path);
    if (!_localePathChosen)
        _localePath = _resourcePath + "/locale";
}

void ZRBundle::setLocalePath(std::string path)
{
    _localePath = std::move(path);
    _localePathChosen = true;
}

void ZRBundle::setTextDomain(std::string domain)
{
    _textDomain = std::move(domain);
    _textDomainChosen = true;
}

std::optional<std::string> ZRBundle::pathForResource(std::string_view name, std::string_view type) const
{
    std::string path = _resourcePath + "/" + std::string(name);
    if (!type.empty())
        path += "." + std::string(type);
    if (!fileExists(path))
        return std::nullopt;
    return path;
}
