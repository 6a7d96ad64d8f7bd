#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

class ZRPropertyList;

// One argument of a Cocoa-style format string, remembered with its kind so that every directive can check the
// argument it consumes. The argument only refers to its value: it lives as long as the call it is made for.
class ZR_EXPORT ZRFormatArgument {
public:
    enum class Kind { String, CString, Signed, Unsigned, Real, Character, Pointer, PropertyList };

    ZRFormatArgument(std::string_view value) noexcept
        : _kind(Kind::String)
        , _string(value)
    {
    }
    ZRFormatArgument(const std::string& value) noexcept
        : _kind(Kind::String)
        , _string(value)
    {
    }
    ZRFormatArgument(const char* value) noexcept
        : _kind(Kind::CString)
        , _string(value ? value : std::string_view())
        , _isNull(!value)
    {
    }
    ZRFormatArgument(char value) noexcept
        : _kind(Kind::Character)
        , _unsigned(static_cast<unsigned char>(value))
    {
    }
    ZRFormatArgument(char16_t value) noexcept
        : _kind(Kind::Character)
        , _unsigned(value)
    {
    }
    template <std::signed_integral T>
    requires(!std::same_as<T, char>) ZRFormatArgument(T value)
    noexcept
        : _kind(Kind::Signed)
        , _signed(value)
    {
    }
    template <std::unsigned_integral T>
    requires(!std::same_as<T, char16_t> && !std::same_as<T, bool>) ZRFormatArgument(T value)
    noexcept
        : _kind(Kind::Unsigned)
        , _unsigned(value)
    {
    }
    ZRFormatArgument(bool value) noexcept
        : _kind(Kind::Signed)
        , _signed(value ? 1 : 0)
    {
    }
    template <std::floating_point T>
    ZRFormatArgument(T value) noexcept
        : _kind(Kind::Real)
        , _real(static_cast<double>(value))
    {
    }
    ZRFormatArgument(const void* value) noexcept
        : _kind(Kind::Pointer)
        , _pointer(value)
    {
    }
    ZRFormatArgument(const ZRPropertyList& value) noexcept
        : _kind(Kind::PropertyList)
        , _object(&value)
    {
    }

    Kind kind() const noexcept { return _kind; }
    std::string_view stringValue() const noexcept { return _string; }
    bool isNull() const noexcept { return _isNull; }
    int64_t signedValue() const noexcept { return _signed; }
    uint64_t unsignedValue() const noexcept { return _unsigned; }
    double realValue() const noexcept { return _real; }
    const void* pointerValue() const noexcept { return _pointer; }
    const ZRPropertyList* propertyList() const noexcept { return _object; }

private:
    Kind _kind;
    std::string_view _string;
    bool _isNull = false;
    int64_t _signed = 0;
    uint64_t _unsigned = 0;
    double _real = 0;
    const void* _pointer = nullptr;
    const ZRPropertyList* _object = nullptr;
};

// Formats with the host's format strings as they stand, so that translated formats keep their placeholders:
// %@ (a string or property-list value, written as its description), %d %i %u %x %X %o with the length
// modifiers h hh l ll q z, %qi %qu, %c (a byte), %C (a UTF-16 unit), %s (a C string), %f %e %g %F %E %G %a,
// %p, %%, flags "-+ #0", width, precision ("*" included) and positions ("%2$@").
// Each directive checks the kind of the argument it takes: an integer for %d, text for %@ and %s, a number for
// %f, and so on (an integer also satisfies %@, and any integer satisfies %c and %C). A mismatched or missing
// argument never reads past what was passed: the directive writes "(null)" instead. Numbers are written in the C
// locale; widths and precisions above 4096 count as 4096; an unknown directive stays in the text as written.
ZR_EXPORT std::string ZRStringWithFormatArguments(std::string_view format, std::span<const ZRFormatArgument> arguments);

template <typename... Arguments> std::string ZRStringWithFormat(std::string_view format, const Arguments&... arguments)
{
    if constexpr (sizeof...(Arguments) == 0) {
        return ZRStringWithFormatArguments(format, {});
    } else {
        const ZRFormatArgument list[] = { ZRFormatArgument(arguments)... };
        return ZRStringWithFormatArguments(format, list);
    }
}
