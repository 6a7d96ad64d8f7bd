#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <span>
#include <string>

// Operations the library adds to its byte blocks (ZRData and views of bytes).
namespace ZRExtension {

// Base64 with the standard alphabet and "=" padding, 4 × ceil(n / 3) characters, no line breaks.
ZR_EXPORT std::string encodeBase64(std::span<const uint8_t> data);

// The MD5 digest, 16 bytes.
ZR_EXPORT ZRData md5Digest(std::span<const uint8_t> data);
// The SHA-1 digest, 20 bytes.
ZR_EXPORT ZRData sha1Digest(std::span<const uint8_t> data);
// The MD5 digest as 32 lower-case hexadecimal digits in digest byte order.
ZR_EXPORT std::string md5String(std::span<const uint8_t> data);

// Writes the bytes to the file at the path, in place rather than through a temporary file; a failure goes unnoticed,
// as it does for the callers that use this.
ZR_EXPORT void writeToFile(std::span<const uint8_t> data, const std::string& path);

// Emptying data needs no operation of its own: ZRData::clear() is it.

}
