#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <string_view>

// The translation of an English text in the application's text domain (gettext), or the text itself when there
// is none. The domain and its locale folder come from the main bundle (ZRBundle::main()); until the application
// names them, every text comes back unchanged.
ZR_EXPORT std::string ZRLocalizedString(std::string_view english);
