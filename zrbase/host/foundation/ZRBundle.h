#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <optional>
#include <string>
#include <string_view>

// A bundle: an information dictionary and a folder of resources and translations.
// The main bundle is the application's; its information comes from ZRBundle::main().setInfoDictionary() or, when
// the application sets none, from an "Info.plist" beside the executable. Its resources default to the folder
// "resources" beside the executable, its translations to "<resourcePath>/locale", its text domain to the lower-cased
// "CFBundleName" (none without a name). The library bundle holds the library's own resources, found in the build
// tree while the library runs from it and in the installed prefix otherwise; its text domain is "zrbase".
class ZR_EXPORT ZRBundle {
public:
    static ZRBundle& main();
    static ZRBundle& library();

    // The library's resource folder for the library file at the given path: the build tree's resources while it is
    // the one built there, else "share/zrbase" in the nearest folder above it that has one (so that a moved
    // installation still finds its own), else "<install prefix>/share/zrbase".
    static std::string libraryResourcePath(const std::string& libraryFile);

    const ZRDictionary& infoDictionary() const;
    void setInfoDictionary(ZRDictionary info);
    // The string of an information key ("CFBundleName", "CFBundleShortVersionString", "CFBundleVersion",
    // "CFBundleSignature"), empty when absent.
    std::string objectForInfoDictionaryKey(std::string_view key) const;
    // The bundle's name, "CFBundleName"; for a main bundle without one (most Linux programs have no information
    // dictionary) the name of the executable.
    std::string name() const;

    // The folder of resources, and the folder of compiled translations ("<locale>/LC_MESSAGES/<domain>.mo").
    const std::string& resourcePath() const noexcept { return _resourcePath; }
    // Moves the locale folder along unless it was set on its own.
    void setResourcePath(std::string path);
    const std::string& localePath() const noexcept { return _localePath; }
    void setLocalePath(std::string path);
    // The gettext text domain of the bundle's translations; the main bundle's is the domain of ZRLocalizedString.
    const std::string& textDomain() const noexcept { return _textDomain; }
    // A domain set here stays when the information dictionary changes; until then the domain follows its name.
    void setTextDomain(std::string domain);

    // "<resourcePath>/<name>.<type>" when that file exists.
    std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const;

    ZRBundle(const ZRBundle&) = delete;
    ZRBundle& operator=(const ZRBundle&) = delete;

private:
    ZRBundle() = default;
    void _loadMain();
    ZRDictionary _info;
    std::string _resourcePath;
    std::string _localePath;
    std::string _textDomain;
    bool _localePathChosen = false;
    bool _textDomainChosen = false;
};
