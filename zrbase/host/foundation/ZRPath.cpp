#include <zrbase/host/foundation/ZRPath.h>

#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace {

// The home folder of the named user, or of the process's user for no name; empty when there is none.
std::string homeFolderOf(std::string_view user)
{
    if (user.empty()) {
        if (const char* home = std::getenv("HOME"); home && *home)
            return home;
    }
    std::array<char, 4096> buffer;
    passwd entry;
    passwd* result = nullptr;
    if (user.empty())
        getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &result);
    else
        getpwnam_r(std::string(user).c_str(), &entry, buffer.data(), buffer.size(), &result);
    return result && result->pw_dir ? result->pw_dir : std::string();
}

}

std::string ZRHomeDirectory()
{
    std::string home = homeFolderOf({});
    return home.empty() ? "/" : home;
}

std::string ZRConformPath(std::string_view path)
{
    if (path.empty() || path.front() != '~')
        return std::string(path);
    const size_t slash = path.find('/');
    const std::string_view user = path.substr(1, slash == std::string_view::npos ? slash : slash - 1);
    std::string home = homeFolderOf(user);
    if (home.empty())
        return std::string(path);
    if (slash != std::string_view::npos)
        home.append(path.substr(slash));
    return home;
}

std::string ZRSupportDirectory()
{
    return ZRConformPath(ZRStringWithFormat("~/Library/Application Support/Velmora/%@/", ZRBundle::main().name()));
}
