#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <zrbase/host/foundation/ZRBundle.h>

#include <libintl.h>
#include <map>
#include <mutex>
#include <optional>

namespace {

// The translation of the key in the bundle's text domain, nothing when the domain has none.
std::optional<std::string> translation(const ZRBundle& bundle, const std::string& key)
{
    const std::string& domain = bundle.textDomain();
    if (domain.empty())
        return std::nullopt;
    {
        // Binding resets gettext's catalogue cache, so a domain is bound again only when its folder changes.
        static std::mutex mutex;
        static std::map<std::string, std::string> boundPaths;
        const std::lock_guard lock(mutex);
        const auto bound = boundPaths.find(domain);
        if (bound == boundPaths.end() || bound->second != bundle.localePath()) {
            if (!bundle.localePath().empty())
                bindtextdomain(domain.c_str(), bundle.localePath().c_str());
            bind_textdomain_codeset(domain.c_str(), "UTF-8");
            boundPaths[domain] = bundle.localePath();
        }
    }
    const char* translated = dgettext(domain.c_str(), key.c_str());
    if (translated == key.c_str())
        return std::nullopt;
    return translated;
}

}

std::string ZRLocalizedString(std::string_view english)
{
    // gettext answers the catalogue's header for an empty key.
    if (english.empty())
        return {};
    std::string key(english);
    if (auto translated = translation(ZRBundle::main(), key))
        return *std::move(translated);
    if (auto translated = translation(ZRBundle::library(), key))
        return *std::move(translated);
    return key;
}
