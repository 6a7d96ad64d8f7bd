#include "JsonWriter.h"

#include <charconv>
#include <cmath>

namespace zr {

void JsonWriter::_separate()
{
    if (_afterKey) {
        _afterKey = false;
        return;
    }
    if (!_hasMember.empty()) {
        if (_hasMember.back())
            _text += ',';
        _hasMember.back() = true;
    }
}

void JsonWriter::beginObject()
{
    _separate();
    _text += '{';
    _hasMember.push_back(false);
}

void JsonWriter::endObject()
{
    _text += '}';
    _hasMember.pop_back();
}

void JsonWriter::beginArray()
{
    _separate();
    _text += '[';
    _hasMember.push_back(false);
}

void JsonWriter::endArray()
{
    _text += ']';
    _hasMember.pop_back();
}

void JsonWriter::key(std::string_view name)
{
    value(name);
    _text += ':';
    _afterKey = true;
}

template <typename T> static void appendNumber(std::string& text, T number)
{
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, number);
    text.append(digits, result.ptr);
}

template <typename T> static void appendReal(std::string& text, T number)
{
    if (std::isfinite(number))
        appendNumber(text, number);
    else
        text += "null";
}

void JsonWriter::value(double number)
{
    _separate();
    appendReal(_text, number);
}

void JsonWriter::value(float number)
{
    _separate();
    appendReal(_text, number);
}

void JsonWriter::value(int64_t number)
{
    _separate();
    appendNumber(_text, number);
}

void JsonWriter::value(uint64_t number)
{
    _separate();
    appendNumber(_text, number);
}

void JsonWriter::value(std::string_view text)
{
    _separate();
    _text += '"';
    for (const char c : text) {
        switch (c) {
        case '"':
            _text += "\\\"";
            break;
        case '\\':
            _text += "\\\\";
            break;
        case '\n':
            _text += "\\n";
            break;
        case '\t':
            _text += "\\t";
            break;
        case '\r':
            _text += "\\r";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                static const char hex[] = "0123456789abcdef";
                _text += "\\u00";
                _text += hex[(c >> 4) & 0xf];
                _text += hex[c & 0xf];
            } else {
                _text += c;
            }
        }
    }
    _text += '"';
}

void JsonWriter::value(bool flag)
{
    _separate();
    _text += flag ? "true" : "false";
}

void JsonWriter::null()
{
    _separate();
    _text += "null";
}

}
