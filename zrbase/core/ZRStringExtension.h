#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRIndexRange.h>

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

// The text's bytes in an encoding, every character the encoding cannot hold (and every byte that is not UTF-8)
// replaced by "?". UTF-8 text is taken as it is.
ZR_EXPORT ZRData lossyDataUsingEncoding(std::string_view text, ZRStringEncoding encoding);

// The next name of a numbered series: "Take 3" gives "Take 4", and a name whose text from its last blank on does not
// read as a number of at least 1 gets " 2": "Take" gives "Take 2", "Take 0" gives "Take 0 2", "Take -1" "Take -1 2".
ZR_EXPORT std::string stringByIncrementingString(std::string_view text);
// The whole text, counted in UTF-16 units.
ZR_EXPORT ZRIndexRange range(std::string_view text);

// The text reduced to ASCII, every other character replaced by "?".
ZR_EXPORT std::string stringAsLossyASCIIString(std::string_view text);
// The lossy ASCII bytes followed by one zero byte.
ZR_EXPORT ZRData lossyASCIICString(std::string_view text);
// One length byte followed by the lossy ASCII bytes; nullopt when there are more than 255 of them.
ZR_EXPORT std::optional<ZRData> lossyASCIIPascalString(std::string_view text);

// A four-character code as text: its bytes, most significant first, read as Mac OS Roman (0x57415645 gives "WAVE").
ZR_EXPORT std::string stringWithOSType(uint32_t code);
// The bytes read as ASCII; a byte above 0x7F becomes U+FFFD.
ZR_EXPORT std::string asciiStringWithData(std::span<const uint8_t> data);
// The bytes read in an encoding; nullopt when they are not text of it (a byte above 0x7F in ASCII, malformed
// UTF-8). Every byte is Mac OS Roman text.
ZR_EXPORT std::optional<std::string> stringWithData(std::span<const uint8_t> data, ZRStringEncoding encoding);

// Writes every character's UTF-16 code to the console log, one line each: its position and the code in hexadecimal.
ZR_EXPORT void logCharacters(std::string_view text);

// Path editing in place, with "/" as the only separator.

// Appends the component as it is to an empty path or one ending in "/", otherwise after a "/".
ZR_EXPORT void appendPathComponent(std::string& path, std::string_view component);
// Puts the prefix in front, with a "/" between unless the prefix ends with one or the path starts with one.
ZR_EXPORT void prependPath(std::string& path, std::string_view prefix);
// Deletes from the last "/" on: "/a/b" becomes "/a" and "/a" the empty string (no root "/" is kept); a path
// without "/" stays as it is.
ZR_EXPORT void deleteLastPathComponent(std::string& path);
// deleteLastPathComponent, then appendPathComponent: "/a" becomes "name", not "/name".
ZR_EXPORT void replaceLastPathComponent(std::string& path, std::string_view name);
// Deletes the last component's text from its FIRST full stop on: "take.1.aif" becomes "take", ".profile" becomes
// the empty string. pathExtension, by contrast, is what follows the last full stop.
ZR_EXPORT void deletePathExtension(std::string& path);
// Drops one trailing "/" and appends "." and the extension.
ZR_EXPORT void appendPathExtension(std::string& path, std::string_view extension);
// Nothing when pathExtension already equals the extension; otherwise deletePathExtension and appendPathExtension,
// so "take.1.aif" set to "wav" gives "take.wav".
ZR_EXPORT void setPathExtension(std::string& path, std::string_view extension);
// Replaces the whole path, expanding a leading "~" to the home folder.
ZR_EXPORT void setPath(std::string& path, std::string_view newPath);
// Cuts text longer than `length` UTF-16 units to that length, and then appends "..." when asked (the result is
// three characters longer than `length`). A character of two units that the cut would split is dropped whole.
ZR_EXPORT void truncateToLength(std::string& text, size_t length, bool withEllipsis);

}
