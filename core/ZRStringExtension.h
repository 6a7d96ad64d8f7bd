#pragma once

#include "host/foundation/ZRData.h"
#include "host/foundation/ZRExport.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// String encodings by the host's numbers.
enum class ZRStringEncoding : uint32_t { ASCII = 1, UTF8 = 4, MacOSRoman = 30 };

// Operations the library adds to its strings (UTF-8 std::string); paths use "/" as the only separator.
namespace ZRExtension {

// The bytes of base64 text (white space skipped anywhere); nullopt when the text is not ASCII, breaks a rule of
// baseDecode or decodes to nothing.
ZR_EXPORT std::optional<ZRData> decodeBase64(std::string_view text);
// The decoded bytes of base64 text; nullopt on any error or when nothing decodes.
ZR_EXPORT std::optional<ZRData> baseDecode(std::span<const uint8_t> source);
// Decodes base64 text into destination and answers the byte count, 0 on any error: white space is skipped, a NUL
// ends the input, "=" may only be followed by white space and one more "=" that fits the quantum, unpadded input
// ends on a quantum boundary, the bits padding discards are zero, and capacity is never exceeded. Any zero
// argument gives 0.
ZR_EXPORT size_t baseDecode(const uint8_t* source, size_t sourceLength, uint8_t* destination, size_t capacity);

// The text after the last "/" (all of it when there is none).
ZR_EXPORT std::string lastPathComponent(std::string_view path);
// The extension of the last path component: the text after its last ".", empty when there is none.
ZR_EXPORT std::string pathExtension(std::string_view path);
// The last path component without its extension: "take.1.aif" gives "take.1".
ZR_EXPORT std::string filename(std::string_view path);

// The text's bytes in an encoding, every character the encoding cannot hold replaced by "?".
ZR_EXPORT ZRData lossyDataUsingEncoding(std::string_view text, ZRStringEncoding encoding);

}
