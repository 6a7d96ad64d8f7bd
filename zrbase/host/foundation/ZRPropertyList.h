#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class ZRPropertyList;

using ZRArray = std::vector<ZRPropertyList>;
using ZRDictionary = std::map<std::string, ZRPropertyList, std::less<>>;
using ZRDate = std::chrono::system_clock::time_point;

// One property-list value: nothing, a boolean, an integer (signed or unsigned), a real, a string, data, a date,
// an array or a dictionary. The readers coerce between kinds as the host's number class does and never throw.
// Dates are the host's (seconds since 2001-01-01 00:00:00 UTC) in files. A dictionary {"CF$UID": n} stands for a
// keyed archive's reference and is written as one.
class ZR_EXPORT ZRPropertyList {
public:
    enum class Type { None, Boolean, Integer, Real, String, Data, Date, Array, Dictionary };
    enum class Format { XML, Binary };

    ZRPropertyList() = default;
    ZRPropertyList(bool value);
    ZRPropertyList(int value);
    ZRPropertyList(unsigned value);
    ZRPropertyList(long value);
    ZRPropertyList(unsigned long value);
    ZRPropertyList(long long value);
    ZRPropertyList(unsigned long long value);
    ZRPropertyList(float value);
    ZRPropertyList(double value);
    ZRPropertyList(const char* value);
    ZRPropertyList(std::string_view value);
    ZRPropertyList(std::string value);
    ZRPropertyList(ZRData value);
    ZRPropertyList(ZRDate value);
    ZRPropertyList(ZRArray value);
    ZRPropertyList(ZRDictionary value);

    Type type() const noexcept;
    bool isNone() const noexcept { return type() == Type::None; }
    bool isNumber() const noexcept; // boolean, integer or real
    // True for an integer that was made unsigned and does not fit a signed 64-bit value.
    bool isUnsigned() const noexcept;

    // Numeric readers: numbers convert as the host's number class converts them (integers wrap as in C, reals
    // truncate and saturate, NaN gives 0), strings are scanned for a leading decimal number after white space
    // and saturate, everything else gives 0. A string is YES when it starts, after white space, a sign and zeros,
    // with Y, y, T, t or a digit 1-9.
    bool boolValue() const noexcept;
    int32_t intValue() const noexcept;
    uint32_t unsignedIntValue() const noexcept;
    int64_t longLongValue() const noexcept;
    uint64_t unsignedLongLongValue() const noexcept;
    float floatValue() const noexcept;
    double doubleValue() const noexcept;

    // Typed access: null when the value is of another kind.
    const std::string* string() const noexcept;
    const ZRData* data() const noexcept;
    const ZRDate* date() const noexcept;
    const ZRArray* array() const noexcept;
    const ZRDictionary* dictionary() const noexcept;
    ZRArray* array() noexcept;
    ZRDictionary* dictionary() noexcept;
    // The string, or a number's text (a boolean as 1 or 0, a real in its shortest exact form); empty otherwise.
    std::string stringValue() const;

    // Numbers are equal when their values are, whatever their kind (1 == 1.0 == YES), as the host's are.
    bool operator==(const ZRPropertyList& other) const;

    // Reading and writing property-list bytes and files (XML or binary; reading recognises both). A failure
    // gives nullopt or false and, when `failure` is given, a sentence saying why. Collections nest at most 512
    // levels deep. Strings are UTF-8 and end at a zero character: bytes of a file that are not UTF-8 read as
    // U+FFFD, and a string that is not UTF-8 or holds a zero character cannot be written. Dates keep milliseconds
    // in binary lists and whole seconds in XML ones, between 1932-12-13 and 2069-01-19 (others are clamped). A
    // file is written to a temporary file beside it that then replaces it, so it is never left half written.
    static std::optional<ZRPropertyList> propertyListWithData(
        std::span<const uint8_t> bytes, std::string* failure = nullptr);
    static std::optional<ZRPropertyList> propertyListWithContentsOfFile(
        const std::string& path, std::string* failure = nullptr);
    std::optional<ZRData> dataWithFormat(Format format, std::string* failure = nullptr) const;
    bool writeToFile(const std::string& path, Format format = Format::XML, std::string* failure = nullptr) const;

private:
    template <typename T> T _integerValue() const noexcept;

    struct Integer {
        uint64_t bits = 0;
        bool isUnsigned = false;
        bool operator==(const Integer&) const = default;
    };
    std::variant<std::monostate, bool, Integer, double, std::string, ZRData, ZRDate, ZRArray, ZRDictionary> _value;
};

// Looks up a key of a dictionary: null when absent.
ZR_EXPORT const ZRPropertyList* ZRDictionaryObject(const ZRDictionary& dictionary, std::string_view key) noexcept;
