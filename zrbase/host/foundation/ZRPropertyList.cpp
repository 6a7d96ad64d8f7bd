#include <zrbase/host/foundation/ZRPropertyList.h>

#include <zrbase/host/foundation/ZRCLocalePrivate.h>
#include <zrbase/host/foundation/ZRPropertyListPrivate.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

using namespace std::chrono;

// Collections nested deeper than this are refused rather than risking the stack.
constexpr int maximumDepth = 512;
// The host's reference date, 2001-01-01 00:00:00 UTC, in seconds after the Unix epoch.
constexpr int64_t referenceDateSeconds = 978307200;
constexpr ZRDate referenceDate() { return ZRDate(seconds(referenceDateSeconds)); }
constexpr const char* uidKey = "CF$UID";

std::string systemMessage(int code) { return std::error_code(code, std::generic_category()).message(); }

void fail(std::string* failure, std::string sentence)
{
    if (failure)
        *failure = std::move(sentence);
}

bool isSpace(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

std::string_view skipSpace(std::string_view text) noexcept
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    return text;
}

// The leading decimal integer of a text after white space and an optional sign; its magnitude saturates.
struct ScannedInteger {
    bool negative = false;
    uint64_t magnitude = 0;
};

ScannedInteger scanInteger(std::string_view text) noexcept
{
    ScannedInteger result;
    text = skipSpace(text);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        result.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    for (char c : text) {
        if (c < '0' || c > '9')
            break;
        const uint64_t digit = static_cast<uint64_t>(c - '0');
        if (result.magnitude > (std::numeric_limits<uint64_t>::max() - digit) / 10)
            result.magnitude = std::numeric_limits<uint64_t>::max();
        else
            result.magnitude = result.magnitude * 10 + digit;
    }
    return result;
}

template <typename T> T clampScanned(ScannedInteger scanned) noexcept
{
    if (!scanned.negative)
        return static_cast<T>(std::min<uint64_t>(scanned.magnitude, std::numeric_limits<T>::max()));
    if constexpr (std::is_unsigned_v<T>)
        return 0;
    else {
        const uint64_t limit = static_cast<uint64_t>(-(std::numeric_limits<T>::min() + 1)) + 1;
        if (scanned.magnitude >= limit)
            return std::numeric_limits<T>::min();
        return static_cast<T>(-static_cast<int64_t>(scanned.magnitude));
    }
}

// The leading decimal number of a text; hexadecimal, "inf" and "nan" do not count as numbers. Overflow gives
// ±HUGE_VAL and underflow 0, as the host's strings answer.
double scanDouble(std::string_view text) noexcept
{
    text = skipSpace(text);
    std::string_view digits = text;
    if (!digits.empty() && (digits.front() == '-' || digits.front() == '+'))
        digits.remove_prefix(1);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.empty()
        || !(isDigit(digits.front()) || (digits.front() == '.' && digits.size() > 1 && isDigit(digits[1]))))
        return 0;
    if (digits.size() > 1 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
        return 0;
    const std::string terminated(text);
    return strtod_l(terminated.c_str(), nullptr, ZRCLocaleScope::cLocale());
}

// Reals convert to integers by truncation, saturating at the ends of the range; NaN gives 0.
template <typename T> T saturatingCast(double value) noexcept
{
    if (std::isnan(value))
        return 0;
    const double upperBound = std::ldexp(1.0, std::numeric_limits<T>::digits);
    const double lowerBound = std::is_signed_v<T> ? -upperBound : 0.0;
    if (value >= upperBound)
        return std::numeric_limits<T>::max();
    if (value <= lowerBound)
        return std::numeric_limits<T>::min();
    return static_cast<T>(value);
}

std::string integerText(uint64_t bits, bool isUnsigned)
{
    return isUnsigned ? std::to_string(bits) : std::to_string(static_cast<int64_t>(bits));
}

// libplist 2.2 keeps an integer as 64 bits and a width: 8 bytes for a value it treats as signed, 16 for a value
// above INT64_MAX that it read as unsigned. Only its binary writer shows the width (marker 0x13 or 0x14).
bool isWideUnsignedNode(plist_t node)
{
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    const bool wide = bytes && length > 8 && static_cast<uint8_t>(bytes[8]) == 0x14;
    if (bytes)
        plist_to_bin_free(bytes);
    return wide;
}

// plist_new_uint always makes an 8-byte integer, which the writers treat as signed; the parser is the one way to
// a 16-byte unsigned integer.
plist_t newWideUnsignedNode(uint64_t value)
{
    const std::string xml = "<plist version=\"1.0\"><integer>" + std::to_string(value) + "</integer></plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &node);
    return node;
}

ZRDate dateOfNode(plist_t node)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    // libplist 2.2 reads a binary date by truncating its seconds and keeping the fraction's magnitude: -100.25 comes
    // as -100 and +250000. (Dates less than a second before the reference date lose their sign altogether.)
    if (seconds < 0 && microseconds > 0)
        microseconds = -microseconds;
    // Dates beyond its range come out of it as they happen to, the fraction included.
    if (microseconds <= -1000000 || microseconds >= 1000000)
        microseconds = 0;
    // It also truncates the fraction to whole microseconds, often one below what was written; dates keep
    // milliseconds, so that a date read and written again stays the same.
    const int64_t since = int64_t(seconds) * 1000000 + microseconds;
    const int64_t rounded = (since >= 0 ? since + 500 : since - 500) / 1000;
    constexpr int64_t earliest = int64_t(std::numeric_limits<int32_t>::min()) * 1000;
    return referenceDate() + milliseconds(std::max(rounded, earliest));
}

// libplist 2.2 keeps dates as 32-bit seconds after the reference date: 1932-12-13 to 2069-01-19.
plist_t newDateNode(ZRDate date)
{
    const int64_t since = floor<microseconds>(date.time_since_epoch()).count() - referenceDateSeconds * 1000000;
    int64_t seconds = since >= 0 ? since / 1000000 : -((-since + 999999) / 1000000);
    int64_t microseconds = since - seconds * 1000000;
    if (seconds < std::numeric_limits<int32_t>::min()) {
        seconds = std::numeric_limits<int32_t>::min();
        microseconds = 0;
    } else if (seconds > std::numeric_limits<int32_t>::max()) {
        seconds = std::numeric_limits<int32_t>::max();
        microseconds = 0;
    }
    return plist_new_date(static_cast<int32_t>(seconds), static_cast<int32_t>(microseconds));
}

std::optional<ZRPropertyList> valueOfNode(plist_t node, int depth, std::string* failure)
{
    if (depth > maximumDepth) {
        fail(failure, "The property list nests deeper than " + std::to_string(maximumDepth) + " levels.");
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_ARRAY: {
        ZRArray array;
        const uint32_t count = plist_array_get_size(node);
        array.reserve(count);
        for (uint32_t index = 0; index < count; ++index) {
            auto element = valueOfNode(plist_array_get_item(node, index), depth + 1, failure);
            if (!element)
                return std::nullopt;
            array.push_back(std::move(*element));
        }
        return ZRPropertyList(std::move(array));
    }
    case PLIST_DICT: {
        ZRDictionary dictionary;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        std::optional<ZRPropertyList> result;
        for (;;) {
            char* key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator, &key, &item);
            if (!item) {
                result = ZRPropertyList(std::move(dictionary));
                free(key);
                break;
            }
            auto element = valueOfNode(item, depth + 1, failure);
            if (element)
                dictionary.insert_or_assign(ZRUnicode::validUTF8(key ? key : ""), std::move(*element));
            free(key);
            if (!element)
                break;
        }
        free(iterator);
        return result;
    }
    case PLIST_UID: {
        // Written as the host's XML form of a keyed-archive reference, which turns back into one when written.
        uint64_t uid = 0;
        plist_get_uid_val(node, &uid);
        return ZRPropertyList(ZRDictionary { { uidKey, ZRPropertyList(uid) } });
    }
    case PLIST_KEY:
    case PLIST_NONE:
        fail(failure, "The property list holds a value of unknown kind.");
        return std::nullopt;
    default:
        return ZRPropertyListPrivate::scalarValue(node);
    }
}

// libplist keeps strings as C strings and writes binary strings through UTF-16: a zero character would cut a
// string short and bytes that are not UTF-8 would garble the file.
bool isWritableString(const std::string& text, std::string* failure)
{
    if (text.find('\0') != std::string::npos) {
        fail(failure, "A string of the property list holds a zero character.");
        return false;
    }
    if (!ZRUnicode::isValidUTF8(text)) {
        fail(failure, "A string of the property list is not valid UTF-8.");
        return false;
    }
    return true;
}

plist_t newNode(const ZRPropertyList& value, std::string* failure)
{
    if (const ZRArray* array = value.array()) {
        plist_t node = plist_new_array();
        for (const ZRPropertyList& element : *array) {
            plist_t child = newNode(element, failure);
            if (!child) {
                plist_free(node);
                return nullptr;
            }
            plist_array_append_item(node, child);
        }
        return node;
    }
    if (const ZRDictionary* dictionary = value.dictionary()) {
        if (dictionary->size() == 1 && dictionary->begin()->first == uidKey
            && dictionary->begin()->second.type() == ZRPropertyList::Type::Integer)
            return plist_new_uid(dictionary->begin()->second.unsignedLongLongValue());
        plist_t node = plist_new_dict();
        for (const auto& [key, element] : *dictionary) {
            plist_t child = isWritableString(key, failure) ? newNode(element, failure) : nullptr;
            if (!child) {
                plist_free(node);
                return nullptr;
            }
            plist_dict_set_item(node, key.c_str(), child);
        }
        return node;
    }
    if (value.isNone()) {
        fail(failure, "A property list cannot hold an empty value.");
        return nullptr;
    }
    if (value.string() && !isWritableString(*value.string(), failure))
        return nullptr;
    return ZRPropertyListPrivate::newScalarNode(value);
}

// Whether an integer and a real stand for the same number, compared exactly.
bool integerEqualsReal(uint64_t bits, bool isUnsigned, double real) noexcept
{
    if (!std::isfinite(real) || std::trunc(real) != real)
        return false;
    if (real >= 0x1p63)
        return isUnsigned && real < 0x1p64 && static_cast<uint64_t>(real) == bits;
    if (real < -0x1p63)
        return false;
    return !isUnsigned && static_cast<int64_t>(real) == static_cast<int64_t>(bits);
}

// libplist's XML writer passes a zero character through as a zero byte.
bool writesZeroByte(plist_t node)
{
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const bool zero = xml && std::memchr(xml, 0, length);
    if (xml)
        plist_to_xml_free(xml);
    return zero;
}

// libplist 2.2 stops the process on an assertion when asked for a dictionary key that holds a zero character, which
// a binary list can hold.
bool holdsKeyWithZeroCharacter(plist_t node, int depth)
{
    if (depth > maximumDepth)
        return false;
    if (plist_get_node_type(node) == PLIST_ARRAY) {
        const uint32_t count = plist_array_get_size(node);
        for (uint32_t index = 0; index < count; ++index) {
            if (holdsKeyWithZeroCharacter(plist_array_get_item(node, index), depth + 1))
                return true;
        }
    } else if (plist_get_node_type(node) == PLIST_DICT) {
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        bool found = false;
        for (plist_t item = nullptr; !found;) {
            plist_dict_next_item(node, iterator, nullptr, &item);
            if (!item)
                break;
            found = writesZeroByte(plist_dict_item_get_key(item)) || holdsKeyWithZeroCharacter(item, depth + 1);
        }
        free(iterator);
        return found;
    }
    return false;
}

} // namespace

namespace ZRPropertyListPrivate {

Node parse(std::span<const uint8_t> bytes, std::string* failure)
{
    if (bytes.size() > std::numeric_limits<uint32_t>::max()) {
        fail(failure, "The property list is larger than 4 GB.");
        return nullptr;
    }
    plist_t node = nullptr;
    if (!bytes.empty()) {
        // libplist reads and writes reals with the C library, which follows the thread's locale.
        const ZRCLocaleScope scope;
        plist_from_memory(reinterpret_cast<const char*>(bytes.data()), static_cast<uint32_t>(bytes.size()), &node);
    }
    if (!node) {
        fail(failure, "The data is not a property list.");
        return nullptr;
    }
    // Looking at the whole list first keeps the key-by-key search to the rare list that holds a zero character.
    Node result(node);
    if (writesZeroByte(node) && holdsKeyWithZeroCharacter(node, 0)) {
        fail(failure, "A key of the property list holds a zero character.");
        return nullptr;
    }
    return result;
}

std::optional<ZRData> serialize(plist_t node, ZRPropertyList::Format format, std::string* failure)
{
    char* bytes = nullptr;
    uint32_t length = 0;
    {
        const ZRCLocaleScope scope;
        if (format == ZRPropertyList::Format::XML)
            plist_to_xml(node, &bytes, &length);
        else
            plist_to_bin(node, &bytes, &length);
    }
    if (!bytes) {
        fail(failure, "The property list could not be written.");
        return std::nullopt;
    }
    ZRData data(bytes, bytes + length);
    if (format == ZRPropertyList::Format::XML)
        plist_to_xml_free(bytes);
    else
        plist_to_bin_free(bytes);
    return data;
}

ZRPropertyList scalarValue(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return ZRPropertyList(value != 0);
    }
    case PLIST_UINT: {
        uint64_t bits = 0;
        plist_get_uint_val(node, &bits);
        if (bits > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) && !isWideUnsignedNode(node))
            return ZRPropertyList(static_cast<long long>(bits));
        return ZRPropertyList(static_cast<unsigned long long>(bits));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return ZRPropertyList(value);
    }
    case PLIST_STRING: {
        // Strings end at a zero character, as libplist's own ASCII strings and everything it writes do.
        const char* text = plist_get_string_ptr(node, nullptr);
        return ZRPropertyList(ZRUnicode::validUTF8(text ? text : ""));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        return ZRPropertyList(bytes ? ZRData(bytes, bytes + length) : ZRData());
    }
    case PLIST_DATE:
        return ZRPropertyList(dateOfNode(node));
    default:
        return ZRPropertyList();
    }
}

plist_t newScalarNode(const ZRPropertyList& value)
{
    switch (value.type()) {
    case ZRPropertyList::Type::Boolean:
        return plist_new_bool(value.boolValue());
    case ZRPropertyList::Type::Integer:
        if (value.isUnsigned())
            return newWideUnsignedNode(value.unsignedLongLongValue());
        return plist_new_uint(static_cast<uint64_t>(value.longLongValue()));
    case ZRPropertyList::Type::Real:
        return plist_new_real(value.doubleValue());
    case ZRPropertyList::Type::String:
        return plist_new_string(ZRUnicode::validUTF8(*value.string()).c_str());
    case ZRPropertyList::Type::Data:
        return plist_new_data(reinterpret_cast<const char*>(value.data()->data()), value.data()->size());
    case ZRPropertyList::Type::Date:
        return newDateNode(*value.date());
    default:
        return nullptr;
    }
}

double referenceSeconds(ZRDate date) noexcept
{
    const int64_t since = floor<microseconds>(date.time_since_epoch()).count() - referenceDateSeconds * 1000000;
    return static_cast<double>(since) / 1e6;
}

ZRDate dateWithReferenceSeconds(double seconds) noexcept
{
    if (std::isnan(seconds))
        seconds = 0;
    // The clock counts 64-bit nanoseconds: about 292 years either side of 1970.
    constexpr double limit = 9.2e9;
    const double unixSeconds = std::clamp(seconds + static_cast<double>(referenceDateSeconds), -limit, limit);
    return ZRDate(duration_cast<system_clock::duration>(microseconds(std::llround(unixSeconds * 1e6))));
}

}

ZRPropertyList::ZRPropertyList(bool value)
    : _value(value)
{
}

ZRPropertyList::ZRPropertyList(int value)
    : ZRPropertyList(static_cast<long long>(value))
{
}

ZRPropertyList::ZRPropertyList(unsigned value)
    : ZRPropertyList(static_cast<unsigned long long>(value))
{
}

ZRPropertyList::ZRPropertyList(long value)
    : ZRPropertyList(static_cast<long long>(value))
{
}

ZRPropertyList::ZRPropertyList(unsigned long value)
    : ZRPropertyList(static_cast<unsigned long long>(value))
{
}

ZRPropertyList::ZRPropertyList(long long value)
    : _value(Integer { static_cast<uint64_t>(value), false })
{
}

// Only values that a signed 64-bit integer cannot hold are marked unsigned, so that 5u and 5 are the same value.
ZRPropertyList::ZRPropertyList(unsigned long long value)
    : _value(Integer { value, value > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) })
{
}

ZRPropertyList::ZRPropertyList(float value)
    : _value(static_cast<double>(value))
{
}

ZRPropertyList::ZRPropertyList(double value)
    : _value(value)
{
}

ZRPropertyList::ZRPropertyList(const char* value)
{
    if (value)
        _value = std::string(value);
}

ZRPropertyList::ZRPropertyList(std::string_view value)
    : _value(std::string(value))
{
}

ZRPropertyList::ZRPropertyList(std::string value)
    : _value(std::move(value))
{
}

ZRPropertyList::ZRPropertyList(ZRData value)
    : _value(std::move(value))
{
}

ZRPropertyList::ZRPropertyList(ZRDate value)
    : _value(value)
{
}

ZRPropertyList::ZRPropertyList(ZRArray value)
    : _value(std::move(value))
{
}

ZRPropertyList::ZRPropertyList(ZRDictionary value)
    : _value(std::move(value))
{
}

ZRPropertyList::Type ZRPropertyList::type() const noexcept
{
    static constexpr Type types[] = { Type::None, Type::Boolean, Type::Integer, Type::Real, Type::String, Type::Data,
        Type::Date, Type::Array, Type::Dictionary };
    return types[_value.index()];
}

bool ZRPropertyList::isNumber() const noexcept
{
    return std::holds_alternative<bool>(_value) || std::holds_alternative<Integer>(_value)
        || std::holds_alternative<double>(_value);
}

bool ZRPropertyList::isUnsigned() const noexcept
{
    const Integer* integer = std::get_if<Integer>(&_value);
    return integer && integer->isUnsigned;
}

// A string is YES when, after white space, a sign and leading zeros, it starts with Y, y, T, t or a digit 1 to 9.
bool ZRPropertyList::boolValue() const noexcept
{
    if (const bool* value = std::get_if<bool>(&_value))
        return *value;
    if (const Integer* integer = std::get_if<Integer>(&_value))
        return integer->bits != 0;
    if (const double* real = std::get_if<double>(&_value))
        return *real != 0;
    if (const std::string* text = std::get_if<std::string>(&_value)) {
        std::string_view rest = skipSpace(*text);
        if (!rest.empty() && (rest.front() == '-' || rest.front() == '+'))
            rest.remove_prefix(1);
        while (!rest.empty() && rest.front() == '0')
            rest.remove_prefix(1);
        if (rest.empty())
            return false;
        const char c = rest.front();
        return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
    }
    return false;
}

// Integers convert as C converts them (wrapping), reals and strings saturate.
template <typename T> T ZRPropertyList::_integerValue() const noexcept
{
    if (const std::string* text = std::get_if<std::string>(&_value))
        return clampScanned<T>(scanInteger(*text));
    if (const double* real = std::get_if<double>(&_value))
        return saturatingCast<T>(*real);
    if (const bool* value = std::get_if<bool>(&_value))
        return *value ? 1 : 0;
    if (const Integer* integer = std::get_if<Integer>(&_value))
        return static_cast<T>(integer->bits);
    return 0;
}

int32_t ZRPropertyList::intValue() const noexcept { return _integerValue<int32_t>(); }

uint32_t ZRPropertyList::unsignedIntValue() const noexcept { return _integerValue<uint32_t>(); }

int64_t ZRPropertyList::longLongValue() const noexcept { return _integerValue<int64_t>(); }

uint64_t ZRPropertyList::unsignedLongLongValue() const noexcept { return _integerValue<uint64_t>(); }

float ZRPropertyList::floatValue() const noexcept
{
    const double value = doubleValue();
    if (std::fabs(value) > std::numeric_limits<float>::max())
        return value > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

double ZRPropertyList::doubleValue() const noexcept
{
    if (const bool* value = std::get_if<bool>(&_value))
        return *value ? 1 : 0;
    if (const Integer* integer = std::get_if<Integer>(&_value))
        return integer->isUnsigned ? static_cast<double>(integer->bits)
                                   : static_cast<double>(static_cast<int64_t>(integer->bits));
    if (const double* real = std::get_if<double>(&_value))
        return *real;
    if (const std::string* text = std::get_if<std::string>(&_value))
        return scanDouble(*text);
    return 0;
}

const std::string* ZRPropertyList::string() const noexcept { return std::get_if<std::string>(&_value); }

const ZRData* ZRPropertyList::data() const noexcept { return std::get_if<ZRData>(&_value); }

const ZRDate* ZRPropertyList::date() const noexcept { return std::get_if<ZRDate>(&_value); }

const ZRArray* ZRPropertyList::array() const noexcept { return std::get_if<ZRArray>(&_value); }

const ZRDictionary* ZRPropertyList::dictionary() const noexcept { return std::get_if<ZRDictionary>(&_value); }

ZRArray* ZRPropertyList::array() noexcept { return std::get_if<ZRArray>(&_value); }

ZRDictionary* ZRPropertyList::dictionary() noexcept { return std::get_if<ZRDictionary>(&_value); }

// Numbers read as the host's numbers describe themselves: a boolean as 1 or 0, a real in its shortest exact form.
std::string ZRPropertyList::stringValue() const
{
    if (const std::string* text = std::get_if<std::string>(&_value))
        return *text;
    if (const bool* value = std::get_if<bool>(&_value))
        return *value ? "1" : "0";
    if (const Integer* integer = std::get_if<Integer>(&_value))
        return integerText(integer->bits, integer->isUnsigned);
    if (const double* real = std::get_if<double>(&_value)) {
        char text[32];
        const auto result = std::to_chars(text, text + sizeof text, *real);
        return std::string(text, result.ptr);
    }
    return {};
}

// Numbers are equal when they stand for the same value, whatever their kind: 1, 1.0 and YES are one number.
bool ZRPropertyList::operator==(const ZRPropertyList& other) const
{
    if (isNumber() && other.isNumber()) {
        const double* real = std::get_if<double>(&_value);
        const double* otherReal = std::get_if<double>(&other._value);
        if (real && otherReal)
            return *real == *otherReal;
        if (!real && !otherReal)
            return unsignedLongLongValue() == other.unsignedLongLongValue() && isUnsigned() == other.isUnsigned();
        const ZRPropertyList& integer = real ? other : *this;
        return integerEqualsReal(integer.unsignedLongLongValue(), integer.isUnsigned(), real ? *real : *otherReal);
    }
    return _value == other._value;
}

std::optional<ZRPropertyList> ZRPropertyList::propertyListWithData(std::span<const uint8_t> bytes, std::string* failure)
{
    ZRPropertyListPrivate::Node node = ZRPropertyListPrivate::parse(bytes, failure);
    if (!node)
        return std::nullopt;
    return valueOfNode(node.get(), 0, failure);
}

std::optional<ZRPropertyList> ZRPropertyList::propertyListWithContentsOfFile(
    const std::string& path, std::string* failure)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        fail(failure, "The file " + path + " could not be opened: " + systemMessage(errno) + ".");
        return std::nullopt;
    }
    ZRData bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t count = read(file, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            fail(failure, "The file " + path + " could not be read: " + systemMessage(errno) + ".");
            close(file);
            return std::nullopt;
        }
        if (count == 0)
            break;
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    close(file);
    std::string reason;
    auto result = propertyListWithData(bytes, &reason);
    if (!result)
        fail(failure, "The file " + path + " is not a valid property list. " + reason);
    return result;
}

std::optional<ZRData> ZRPropertyList::dataWithFormat(Format format, std::string* failure) const
{
    ZRPropertyListPrivate::Node node(newNode(*this, failure));
    if (!node)
        return std::nullopt;
    return ZRPropertyListPrivate::serialize(node.get(), format, failure);
}

// The bytes go to a temporary file in the same folder that is renamed over the target once complete, so a crash
// leaves either the old file or the new one, never a torn one.
bool ZRPropertyList::writeToFile(const std::string& path, Format format, std::string* failure) const
{
    const std::optional<ZRData> bytes = dataWithFormat(format, failure);
    if (!bytes)
        return false;
    std::string temporary = path + ".XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) {
        fail(failure, "The file " + path + " could not be created: " + systemMessage(errno) + ".");
        return false;
    }
    struct stat existing;
    fchmod(file, stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644);
    size_t written = 0;
    while (written < bytes->size()) {
        const ssize_t count = write(file, bytes->data() + written, bytes->size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            break;
        written += static_cast<size_t>(count);
    }
    const int error = written < bytes->size() ? errno : (fsync(file) != 0 ? errno : 0);
    if (close(file) != 0 || error != 0 || rename(temporary.c_str(), path.c_str()) != 0) {
        fail(failure, "The file " + path + " could not be written: " + systemMessage(error ? error : errno) + ".");
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

const ZRPropertyList* ZRDictionaryObject(const ZRDictionary& dictionary, std::string_view key) noexcept
{
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}
