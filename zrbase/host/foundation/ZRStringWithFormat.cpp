#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <zrbase/host/foundation/ZRCLocalePrivate.h>
#include <zrbase/host/foundation/ZRPropertyList.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <charconv>
#include <cstdio>
#include <ctime>

namespace {

using Kind = ZRFormatArgument::Kind;

// Larger widths and precisions are clamped: no readable text needs more, and a hostile format cannot make a
// single directive allocate without bound.
constexpr int maximumField = 4096;

enum Flag : unsigned { LeftAlign = 1, PlusSign = 2, SpaceSign = 4, Alternate = 8, ZeroPad = 16 };
enum class Length { None, Char, Short, Long };

struct Directive {
    unsigned flags = 0;
    int width = -1;
    int precision = -1;
    Length length = Length::None;
    char conversion = 0;
    bool valid = true;
};

class Formatter {
public:
    Formatter(std::string& output, std::span<const ZRFormatArgument> arguments)
        : _output(output)
        , _arguments(arguments)
    {
    }

    void format(std::string_view format);

private:
    const ZRFormatArgument* _take(size_t position)
    {
        const size_t index = position ? position - 1 : _next++;
        return index < _arguments.size() ? &_arguments[index] : nullptr;
    }
    static size_t _parseNumber(std::string_view format, size_t& index);
    size_t _parsePosition(std::string_view format, size_t& index);
    int _parseField(std::string_view format, size_t& index, Directive& directive, bool isPrecision);

    void _writeInteger(const Directive&, const ZRFormatArgument*);
    void _writeReal(const Directive&, const ZRFormatArgument*);
    void _writeByte(const Directive&, const ZRFormatArgument*);
    void _writeUnit(const Directive&, const ZRFormatArgument*);
    void _writeCString(const Directive&, const ZRFormatArgument*);
    void _writeObject(const Directive&, const ZRFormatArgument*);
    void _writePointer(const Directive&, const ZRFormatArgument*);
    void _writePadded(const Directive&, std::string_view text, size_t columns);
    void _writeNull(const Directive& directive) { _writePadded(directive, "(null)", 6); }
    template <typename Value> void _print(const Directive&, const char* lengthModifier, Value value);

    std::string& _output;
    std::span<const ZRFormatArgument> _arguments;
    size_t _next = 0;
};

size_t Formatter::_parseNumber(std::string_view format, size_t& index)
{
    size_t value = 0;
    while (index < format.size() && format[index] >= '0' && format[index] <= '9') {
        value = std::min<size_t>(value * 10 + static_cast<size_t>(format[index] - '0'), 1u << 30);
        ++index;
    }
    return value;
}

// "N$" after a "%" or "*": the 1-based argument position, or 0 (the next argument) when there is none.
size_t Formatter::_parsePosition(std::string_view format, size_t& index)
{
    size_t end = index;
    const size_t position = _parseNumber(format, end);
    if (end == index || end >= format.size() || format[end] != '$' || position == 0)
        return 0;
    index = end + 1;
    return position;
}

// A width or precision: digits, or "*" taking an integer argument (a negative width aligns left, a negative
// precision counts as none). Answers -1 for none.
int Formatter::_parseField(std::string_view format, size_t& index, Directive& directive, bool isPrecision)
{
    if (index < format.size() && format[index] == '*') {
        ++index;
        const ZRFormatArgument* argument = _take(_parsePosition(format, index));
        int64_t value = 0;
        if (argument && argument->kind() == Kind::Signed)
            value = argument->signedValue();
        else if (argument && argument->kind() == Kind::Unsigned)
            value = static_cast<int64_t>(std::min<uint64_t>(argument->unsignedValue(), maximumField));
        else
            directive.valid = false;
        if (value < 0) {
            if (isPrecision)
                return -1;
            directive.flags |= LeftAlign;
            value = value < -maximumField ? maximumField : -value;
        }
        return static_cast<int>(std::min<int64_t>(value, maximumField));
    }
    const size_t start = index;
    const size_t value = _parseNumber(format, index);
    if (index == start && !isPrecision)
        return -1;
    return static_cast<int>(std::min<size_t>(value, maximumField));
}

void Formatter::format(std::string_view format)
{
    size_t index = 0;
    while (index < format.size()) {
        const size_t percent = format.find('%', index);
        if (percent == std::string_view::npos) {
            _output.append(format.substr(index));
            return;
        }
        _output.append(format.substr(index, percent - index));
        index = percent + 1;

        Directive directive;
        const size_t position = _parsePosition(format, index);
        for (; index < format.size(); ++index) {
            const char flag = format[index];
            if (flag == '-')
                directive.flags |= LeftAlign;
            else if (flag == '+')
                directive.flags |= PlusSign;
            else if (flag == ' ')
                directive.flags |= SpaceSign;
            else if (flag == '#')
                directive.flags |= Alternate;
            else if (flag == '0')
                directive.flags |= ZeroPad;
            else
                break;
        }
        directive.width = _parseField(format, index, directive, false);
        if (index < format.size() && format[index] == '.') {
            ++index;
            directive.precision = _parseField(format, index, directive, true);
        }
        while (index < format.size()) {
            const char modifier = format[index];
            if (modifier == 'h')
                directive.length = directive.length == Length::Short ? Length::Char : Length::Short;
            else if (modifier == 'l' || modifier == 'q' || modifier == 'z' || modifier == 'j' || modifier == 't')
                directive.length = Length::Long;
            else if (modifier != 'L')
                break;
            ++index;
        }
        directive.conversion = index < format.size() ? format[index] : 0;

        switch (directive.conversion) {
        case '%':
            _output.push_back('%');
            break;
        case 'D':
        case 'U':
        case 'O':
            directive.length = Length::Long;
            directive.conversion = static_cast<char>(directive.conversion - 'A' + 'a');
            [[fallthrough]];
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            _writeInteger(directive, _take(position));
            break;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            _writeReal(directive, _take(position));
            break;
        case 'c':
            _writeByte(directive, _take(position));
            break;
        case 'C':
            _writeUnit(directive, _take(position));
            break;
        case 's':
            _writeCString(directive, _take(position));
            break;
        case '@':
            _writeObject(directive, _take(position));
            break;
        case 'p':
            _writePointer(directive, _take(position));
            break;
        default:
            // Not a directive: the text stays as it was written.
            _output.append(format.substr(percent, std::min(index + 1, format.size()) - percent));
            break;
        }
        index = std::min(index + 1, format.size());
    }
}

// Prints one value through snprintf with a directive rebuilt from the parsed fields, so that the caller's text
// never reaches snprintf.
template <typename Value> void Formatter::_print(const Directive& directive, const char* lengthModifier, Value value)
{
    char printfFormat[40];
    char* end = printfFormat;
    *end++ = '%';
    for (const auto& [flag, character] : { std::pair { LeftAlign, '-' }, std::pair { PlusSign, '+' },
             std::pair { SpaceSign, ' ' }, std::pair { Alternate, '#' }, std::pair { ZeroPad, '0' } }) {
        if (directive.flags & flag)
            *end++ = character;
    }
    if (directive.width >= 0)
        end = std::to_chars(end, printfFormat + 20, directive.width).ptr;
    if (directive.precision >= 0) {
        *end++ = '.';
        end = std::to_chars(end, printfFormat + 32, directive.precision).ptr;
    }
    while (*lengthModifier)
        *end++ = *lengthModifier++;
    *end++ = directive.conversion;
    *end = '\0';

    char buffer[128];
    const int length = std::snprintf(buffer, sizeof buffer, printfFormat, value);
    if (length < 0)
        return;
    if (static_cast<size_t>(length) < sizeof buffer) {
        _output.append(buffer, static_cast<size_t>(length));
        return;
    }
    const size_t start = _output.size();
    _output.resize(start + static_cast<size_t>(length) + 1);
    std::snprintf(_output.data() + start, static_cast<size_t>(length) + 1, printfFormat, value);
    _output.resize(start + static_cast<size_t>(length));
}

bool integerBits(const ZRFormatArgument* argument, uint64_t& bits)
{
    if (!argument)
        return false;
    switch (argument->kind()) {
    case Kind::Signed:
        bits = static_cast<uint64_t>(argument->signedValue());
        return true;
    case Kind::Unsigned:
    case Kind::Character:
        bits = argument->unsignedValue();
        return true;
    default:
        return false;
    }
}

// The integer is narrowed to the size the length modifier names, as a C variadic call would read it.
void Formatter::_writeInteger(const Directive& directive, const ZRFormatArgument* argument)
{
    uint64_t bits = 0;
    if (!integerBits(argument, bits))
        return _writeNull(directive);
    const bool isSigned = directive.conversion == 'd' || directive.conversion == 'i';
    switch (directive.length) {
    case Length::Char:
        return isSigned ? _print(directive, "hh", static_cast<signed char>(bits))
                        : _print(directive, "hh", static_cast<unsigned char>(bits));
    case Length::Short:
        return isSigned ? _print(directive, "h", static_cast<short>(bits))
                        : _print(directive, "h", static_cast<unsigned short>(bits));
    case Length::None:
        return isSigned ? _print(directive, "", static_cast<int>(bits))
                        : _print(directive, "", static_cast<unsigned>(bits));
    case Length::Long:
        return isSigned ? _print(directive, "ll", static_cast<long long>(bits))
                        : _print(directive, "ll", static_cast<unsigned long long>(bits));
    }
}

void Formatter::_writeReal(const Directive& directive, const ZRFormatArgument* argument)
{
    if (!argument)
        return _writeNull(directive);
    switch (argument->kind()) {
    case Kind::Real:
        return _print(directive, "", argument->realValue());
    case Kind::Signed:
        return _print(directive, "", static_cast<double>(argument->signedValue()));
    case Kind::Unsigned:
    case Kind::Character:
        return _print(directive, "", static_cast<double>(argument->unsignedValue()));
    default:
        return _writeNull(directive);
    }
}

void Formatter::_writeByte(const Directive& directive, const ZRFormatArgument* argument)
{
    uint64_t bits = 0;
    if (!integerBits(argument, bits))
        return _writeNull(directive);
    const char byte = static_cast<char>(bits);
    _writePadded(directive, std::string_view(&byte, 1), 1);
}

// A UTF-16 unit written as UTF-8; a lone surrogate cannot be, and becomes U+FFFD.
void Formatter::_writeUnit(const Directive& directive, const ZRFormatArgument* argument)
{
    uint64_t bits = 0;
    if (!integerBits(argument, bits))
        return _writeNull(directive);
    std::string encoded;
    ZRUnicode::appendUTF8(encoded, static_cast<uint16_t>(bits));
    _writePadded(directive, encoded, 1);
}

// Width and precision of %s count bytes, as in C: the log's " %-12.12s" cuts a UTF-8 domain name at 12 bytes.
void Formatter::_writeCString(const Directive& directive, const ZRFormatArgument* argument)
{
    if (!argument || (argument->kind() != Kind::String && argument->kind() != Kind::CString) || argument->isNull())
        return _writeNull(directive);
    std::string_view text = argument->stringValue();
    if (directive.precision >= 0)
        text = text.substr(0, static_cast<size_t>(directive.precision));
    _writePadded(directive, text, text.size());
}

void Formatter::_writePadded(const Directive& directive, std::string_view text, size_t columns)
{
    const size_t padding = directive.width > 0 && static_cast<size_t>(directive.width) > columns
        ? static_cast<size_t>(directive.width) - columns
        : 0;
    if (!(directive.flags & LeftAlign))
        _output.append(padding, ' ');
    _output.append(text);
    if (directive.flags & LeftAlign)
        _output.append(padding, ' ');
}

void appendInteger(std::string& output, uint64_t magnitude, bool negative)
{
    char buffer[24];
    char* end = buffer;
    if (negative)
        *end++ = '-';
    end = std::to_chars(end, buffer + sizeof buffer, magnitude).ptr;
    output.append(buffer, end);
}

void appendSigned(std::string& output, int64_t value)
{
    appendInteger(output, value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value), value < 0);
}

bool needsQuotes(std::string_view text)
{
    if (text.empty())
        return true;
    for (const char character : text) {
        const bool plain = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
            || (character >= '0' && character <= '9') || character == '_' || character == '.';
        if (!plain)
            return true;
    }
    return false;
}

void appendDescription(std::string& output, const ZRPropertyList& value, size_t depth, bool nested);

void appendIndent(std::string& output, size_t depth) { output.append(depth * 4, ' '); }

// The description the host gives its values: numbers as NSNumber writes them, data in groups of four bytes,
// dates in UTC, collections in the old-style property-list layout.
void appendDescription(std::string& output, const ZRPropertyList& value, size_t depth, bool nested)
{
    switch (value.type()) {
    case ZRPropertyList::Type::None:
        output.append("(null)");
        break;
    case ZRPropertyList::Type::Boolean:
        output.push_back(value.boolValue() ? '1' : '0');
        break;
    case ZRPropertyList::Type::Integer:
        if (value.isUnsigned())
            appendInteger(output, value.unsignedLongLongValue(), false);
        else
            appendSigned(output, value.longLongValue());
        break;
    case ZRPropertyList::Type::Real: {
        char buffer[40];
        const int length = std::snprintf(buffer, sizeof buffer, "%0.16g", value.doubleValue());
        output.append(buffer, static_cast<size_t>(std::max(length, 0)));
        break;
    }
    case ZRPropertyList::Type::String:
        if (nested && needsQuotes(*value.string())) {
            output.push_back('"');
            output.append(*value.string());
            output.push_back('"');
        } else {
            output.append(*value.string());
        }
        break;
    case ZRPropertyList::Type::Data: {
        static constexpr char digits[] = "0123456789abcdef";
        const ZRData& data = *value.data();
        output.push_back('<');
        for (size_t index = 0; index < data.size(); ++index) {
            if (index && index % 4 == 0)
                output.push_back(' ');
            output.push_back(digits[data[index] >> 4]);
            output.push_back(digits[data[index] & 0xF]);
        }
        output.push_back('>');
        break;
    }
    case ZRPropertyList::Type::Date: {
        const std::time_t seconds = std::chrono::system_clock::to_time_t(*value.date());
        std::tm utc {};
        gmtime_r(&seconds, &utc);
        char buffer[40];
        output.append(buffer, std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S +0000", &utc));
        break;
    }
    case ZRPropertyList::Type::Array: {
        output.append("(\n");
        const ZRArray& array = *value.array();
        for (size_t index = 0; index < array.size(); ++index) {
            appendIndent(output, depth + 1);
            appendDescription(output, array[index], depth + 1, true);
            output.append(index + 1 < array.size() ? ",\n" : "\n");
        }
        appendIndent(output, depth);
        output.push_back(')');
        break;
    }
    case ZRPropertyList::Type::Dictionary:
        output.append("{\n");
        for (const auto& [key, element] : *value.dictionary()) {
            appendIndent(output, depth + 1);
            appendDescription(output, ZRPropertyList(std::string_view(key)), depth + 1, true);
            output.append(" = ");
            appendDescription(output, element, depth + 1, true);
            output.append(";\n");
        }
        appendIndent(output, depth);
        output.push_back('}');
        break;
    }
}

// Width and precision of %@ count characters (UTF-16 units), as the host's strings do.
void Formatter::_writeObject(const Directive& directive, const ZRFormatArgument* argument)
{
    if (!argument || argument->isNull())
        return _writeNull(directive);
    const bool plain = directive.width < 0 && directive.precision < 0;
    std::string described;
    std::string_view text;
    switch (argument->kind()) {
    case Kind::String:
    case Kind::CString:
        text = argument->stringValue();
        break;
    case Kind::Signed:
        appendSigned(plain ? _output : described, argument->signedValue());
        break;
    case Kind::Unsigned:
    case Kind::Character:
        appendInteger(plain ? _output : described, argument->unsignedValue(), false);
        break;
    case Kind::PropertyList:
        appendDescription(plain ? _output : described, *argument->propertyList(), 0, false);
        break;
    default:
        return _writeNull(directive);
    }
    if (text.empty())
        text = described;
    if (plain) {
        _output.append(text);
        return;
    }
    if (directive.precision >= 0) {
        // Cut at a character boundary once the units allowed are used up.
        size_t units = 0;
        size_t end = 0;
        while (end < text.size()) {
            size_t next = end + 1;
            while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80)
                ++next;
            const size_t characterUnits = ZRUnicode::utf16Length(text.substr(end, next - end));
            if (units + characterUnits > static_cast<size_t>(directive.precision))
                break;
            units += characterUnits;
            end = next;
        }
        text = text.substr(0, end);
    }
    _writePadded(directive, text, ZRUnicode::utf16Length(text));
}

void Formatter::_writePointer(const Directive& directive, const ZRFormatArgument* argument)
{
    if (!argument || argument->kind() != Kind::Pointer)
        return _writeNull(directive);
    char buffer[24] = { '0', 'x' };
    const char* end
        = std::to_chars(buffer + 2, buffer + sizeof buffer, reinterpret_cast<uintptr_t>(argument->pointerValue()), 16)
              .ptr;
    _writePadded(directive, std::string_view(buffer, end), static_cast<size_t>(end - buffer));
}

}

std::string ZRStringWithFormatArguments(std::string_view format, std::span<const ZRFormatArgument> arguments)
{
    std::string output;
    output.reserve(format.size() + 16 * arguments.size());
    const ZRCLocaleScope locale;
    Formatter(output, arguments).format(format);
    return output;
}
