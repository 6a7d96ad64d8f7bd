#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>
#include <cstdlib>

// The input as a path and, after its first line break, a component: the path editors stay within what they were
// given, truncation keeps its promise in UTF-16 units, and any bytes go through Mac OS Roman and back unchanged.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const size_t lineBreak = input.find('\n');
    const std::string original(input.substr(0, lineBreak));
    const std::string_view component = lineBreak == std::string_view::npos ? "" : input.substr(lineBreak + 1);
    const auto check = [](bool condition) {
        if (!condition)
            std::abort();
    };

    std::string path = original;
    ZRExtension::deletePathExtension(path);
    check(original.starts_with(path));
    path = original;
    ZRExtension::deleteLastPathComponent(path);
    check(original.starts_with(path));
    ZRExtension::replaceLastPathComponent(path, component);
    check(path.ends_with(component));
    ZRExtension::setPathExtension(path, component);
    ZRExtension::prependPath(path, component);
    check(path.starts_with(component));
    ZRExtension::stringByIncrementingString(original);

    const size_t length = size > 0 ? data[0] : 0;
    path = original;
    ZRExtension::truncateToLength(path, length, false);
    check(original.starts_with(path) && (path == original || ZRUnicode::utf16Length(path) <= length));
    check(!ZRUnicode::isValidUTF8(original) || ZRUnicode::isValidUTF8(path));

    const std::span<const uint8_t> bytes(data, size);
    const std::optional<std::string> roman = ZRExtension::stringWithData(bytes, ZRStringEncoding::MacOSRoman);
    check(roman && ZRUnicode::isValidUTF8(*roman));
    const ZRData back = ZRExtension::lossyDataUsingEncoding(*roman, ZRStringEncoding::MacOSRoman);
    check(std::equal(back.begin(), back.end(), bytes.begin(), bytes.end()));
    for (const uint8_t byte : ZRExtension::lossyDataUsingEncoding(input, ZRStringEncoding::ASCII))
        check(byte < 0x80);
    return 0;
}
