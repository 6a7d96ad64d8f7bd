#include <zrbase/formatters/ZRFormatterTextPrivate.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

namespace ZRFormatterText {

std::string packedPairText(int32_t packed, std::string_view format)
{
    if (packed == 0)
        return "n/a";
    return ZRStringWithFormat(format, packed >> 8, packed & 0xFF);
}

std::vector<std::string_view> components(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;) {
        const size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

bool isPartialTextWithSeparatorValid(std::string_view text, std::string_view allowed, char separator) noexcept
{
    if (!text.empty() && text.front() == separator)
        return false;
    size_t separators = 0;
    for (const char c : text) {
        if (allowed.find(c) == std::string_view::npos)
            return false;
        if (c == separator && ++separators > 1)
            return false;
    }
    return true;
}

}
