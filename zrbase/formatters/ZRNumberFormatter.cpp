#include <zrbase/formatters/ZRNumberFormatter.h>

#include <algorithm>
#include <charconv>
#include <cmath>

std::string ZRNumberFormatter::stringForObjectValue(const ZRPropertyList& value) const
{
    return value.isNumber() ? value.stringValue() : std::string();
}

bool ZRNumberFormatter::getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const
{
    constexpr std::string_view whiteSpace = " \t\n\r";
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(whiteSpace)));
    text.remove_suffix(text.size() - std::min(text.size(), text.find_last_not_of(whiteSpace) + 1));
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '+' || negative))
        text.remove_prefix(1);
    // Only digits and a point: from_chars would also take "inf", "nan", exponents and a second sign.
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string_view::npos)
        return false;
    double number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return false;
    value = negative ? -number : number;
    return true;
}

bool ZRNumberFormatter::isPartialStringValid(std::string_view text, std::string*, std::string*) const
{
    if (text.find_first_not_of("0123456789.+-") != std::string_view::npos)
        return false;
    if (text.size() > 1 && text.substr(1).find_first_of("+-") != std::string_view::npos)
        return false;
    return std::ranges::count(text, '.') <= 1;
}
