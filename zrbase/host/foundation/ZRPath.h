#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <string_view>

// The paths every layer needs: the home folder, "~" expansion and the application's support folder.

// The user's home folder: $HOME when set, else the password database's entry, else "/".
ZR_EXPORT std::string ZRHomeDirectory();
// The path with a leading "~" or "~user" expanded to that home folder; every other path, and "~user" of a user
// who does not exist, unchanged.
ZR_EXPORT std::string ZRConformPath(std::string_view path);
// The application's support folder, "~/Library/Application Support/Velmora/<application name>/" expanded, with
// the name of the main bundle (ZRBundle::name).
ZR_EXPORT std::string ZRSupportDirectory();
