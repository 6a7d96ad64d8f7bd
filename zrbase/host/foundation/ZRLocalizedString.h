#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <string_view>

// The translation of an English text (gettext): the application's own when its text domain has one, else the
// library's (domain "zrbase" in the locale folder of ZRBundle::library()), else the text itself. The application's
// domain and its locale folder come from the main bundle (ZRBundle::main()).
ZR_EXPORT std::string ZRLocalizedString(std::string_view english);
