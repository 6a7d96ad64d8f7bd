#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <zrbase/host/foundation/ZRBundle.h>

#include <libintl.h>
#include <mutex>

std::string ZRLocalizedString(std::string_view english)
{
    // gettext answers the catalogue's header for an empty key.
    if (english.empty())
        return {};
    const ZRBundle& bundle = ZRBundle::main();
    const std::string& domain = bundle.textDomain();
    std::string key(english);
    if (domain.empty())
        return key;
    {
        // Binding resets gettext's catalogue cache, so it happens only when the application names another domain
        // or folder.
        static std::mutex mutex;
        static std::string boundDomain;
        static std::string boundPath;
        const std::lock_guard lock(mutex);
        if (domain != boundDomain || bundle.localePath() != boundPath) {
            if (!bundle.localePath().empty())
                bindtextdomain(domain.c_str(), bundle.localePath().c_str());
            bind_textdomain_codeset(domain.c_str(), "UTF-8");
            boundDomain = domain;
            boundPath = bundle.localePath();
        }
    }
    const char* translation = dgettext(domain.c_str(), key.c_str());
    if (translation == key.c_str())
        return key;
    return translation;
}
