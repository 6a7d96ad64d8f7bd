#pragma once

#include "host/foundation/ZRData.h"
#include "host/foundation/ZRExport.h"

#include <cstdint>
#include <span>
#include <string>

// Operations the library adds to its byte blocks (ZRData and views of bytes).
namespace ZRExtension {

// Base64 with the standard alphabet and "=" padding, 4 × ceil(n / 3) characters, no line breaks.
ZR_EXPORT std::string encodeBase64(std::span<const uint8_t> data);

}
