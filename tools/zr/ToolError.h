#pragma once

#include <zrbase/core/ZRError.h>

#include <string>
#include <string_view>

namespace zr {

// An error of the tool's own whose sentence reads like the library's: "<action> failed because <reason>".
ZRErrorPtr toolError(std::string_view action, std::string_view reason);
// The sentence of an error, for the one line a failed file gets on standard error.
std::string sentence(const ZRErrorPtr& error);

}
