#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zr {

// Writes one JSON document into a string as it goes: objects, arrays, keys and values, with the commas placed
// for the caller. Numbers that are not finite (the level of silence in dB) are written as null.
class JsonWriter {
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(std::string_view name);

    void value(double number);
    void value(float number);
    void value(int64_t number);
    void value(uint64_t number);
    void value(uint32_t number) { value(uint64_t(number)); }
    void value(int number) { value(int64_t(number)); }
    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(bool flag);
    void null();

    // A key and its value in one call.
    template <typename T> void member(std::string_view name, T v)
    {
        key(name);
        value(v);
    }

    const std::string& text() const noexcept { return _text; }
    std::string take() { return std::move(_text); }

private:
    void _separate();

    std::string _text;
    // One entry per open object or array: whether it has a member yet.
    std::vector<bool> _hasMember;
    bool _afterKey = false;
};

}
