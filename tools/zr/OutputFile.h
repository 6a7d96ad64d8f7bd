#pragma once

#include <zrbase/core/ZRError.h>

#include <string>
#include <string_view>

namespace zr {

// A failed file operation as an error: the library's file error where its table names the errno value, otherwise
// a sentence of the same form with the system's own description.
ZRErrorPtr fileError(int errnoValue, std::string_view action);

// Writes the whole output to `path`, or to standard output for "-". A file is written under a temporary name beside
// the target and renamed over it when complete, so that a failed run (a full disk, a size limit) leaves neither a
// partial file nor the temporary one behind.
bool writeOutputFile(const std::string& path, std::string_view bytes, ZRErrorPtr* error = nullptr);

}
