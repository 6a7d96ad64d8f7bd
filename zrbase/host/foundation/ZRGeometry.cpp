#include <zrbase/host/foundation/ZRGeometry.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

// The numbers of the text in order, as a scanner reading floats finds them: whatever does not start a decimal
// number is skipped. Missing numbers stay 0.
template <size_t Count> std::array<float, Count> scanNumbers(std::string_view text) noexcept
{
    std::array<float, Count> numbers {};
    size_t found = 0;
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    while (found < Count && position < end) {
        const char* start = position;
        if (*start == '+' || *start == '-')
            ++start;
        const bool startsNumber
            = start < end && (isDigit(*start) || (*start == '.' && start + 1 < end && isDigit(start[1])));
        if (!startsNumber) {
            ++position;
            continue;
        }
        float value = 0;
        const auto [next, error] = std::from_chars(start, end, value);
        if (error == std::errc::result_out_of_range) {
            // Too large for a float becomes infinite, too small becomes 0.
            const std::string_view number(start, static_cast<size_t>(next - start));
            const size_t exponent = number.find_first_of("eE");
            const bool tiny = exponent != std::string_view::npos ? number[exponent + 1] == '-'
                                                                 : number.find_first_not_of("0.") > number.find('.');
            value = tiny ? 0.0f : std::numeric_limits<float>::infinity();
        }
        numbers[found++] = *position == '-' ? -value : value;
        position = next;
    }
    return numbers;
}

}

std::string ZRStringFromPoint(ZRPoint point) { return ZRStringWithFormat("{%g, %g}", point.x, point.y); }

std::string ZRStringFromSize(ZRSize size) { return ZRStringWithFormat("{%g, %g}", size.width, size.height); }

std::string ZRStringFromRect(ZRRect rect)
{
    return ZRStringWithFormat("{{%g, %g}, {%g, %g}}", rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

ZRPoint ZRPointFromString(std::string_view text) noexcept
{
    const auto numbers = scanNumbers<2>(text);
    return { numbers[0], numbers[1] };
}

ZRSize ZRSizeFromString(std::string_view text) noexcept
{
    const auto numbers = scanNumbers<2>(text);
    return { numbers[0], numbers[1] };
}

ZRRect ZRRectFromString(std::string_view text) noexcept
{
    const auto numbers = scanNumbers<4>(text);
    return { { numbers[0], numbers[1] }, { numbers[2], numbers[3] } };
}
