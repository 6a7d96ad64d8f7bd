#include <zrbase/core/ZRURLRequest.h>

#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

ZRData contentsOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return ZRData(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// The path of a value made by fileFormValue; null for every other value.
const std::string* filePath(const ZRPropertyList& value)
{
    const ZRDictionary* dictionary = value.dictionary();
    if (!dictionary || dictionary->size() != 1)
        return nullptr;
    const ZRPropertyList* path = ZRDictionaryObject(*dictionary, ZRURLRequest::FilePathKey);
    return path ? path->string() : nullptr;
}

void append(ZRData& body, std::string_view text) { body.insert(body.end(), text.begin(), text.end()); }

void append(ZRData& body, const ZRData& bytes) { body.insert(body.end(), bytes.begin(), bytes.end()); }

}

bool ZRURLRequest::FieldNameLess::operator()(std::string_view a, std::string_view b) const noexcept
{
    const auto lower = [](char character) { return character >= 'A' && character <= 'Z' ? character + 32 : character; };
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) < lower(y); });
}

ZRURLRequest::ZRURLRequest(std::string url)
    : _url(std::move(url))
{
}

ZRURLRequest ZRURLRequest::requestWithURL(std::string url, const ZRDictionary& multipartForm)
{
    ZRData body;
    for (const auto& [name, value] : multipartForm) {
        append(body, ZRStringWithFormat("--%@\r\n", MultipartBoundary));
        switch (value.type()) {
        case ZRPropertyList::Type::Boolean:
        case ZRPropertyList::Type::Integer:
        case ZRPropertyList::Type::Real:
        case ZRPropertyList::Type::String:
            append(body,
                ZRStringWithFormat("Content-Disposition: form-data; name=\"%@\"\r\n\r\n%@", name, value.stringValue()));
            break;
        case ZRPropertyList::Type::Data:
            append(body,
                ZRStringWithFormat("Content-Disposition: form-data; name=\"%@\"; filename=\"%@.txt\"\r\n", name, name));
            append(body, "Content-Type: application/octet-stream\r\n\r\n");
            append(body, *value.data());
            break;
        default:
            if (const std::string* path = filePath(value)) {
                append(body,
                    ZRStringWithFormat("Content-Disposition: form-data; name=\"%@\"; filename=\"%@\"\r\n", name,
                        ZRExtension::lastPathComponent(*path)));
                append(body, "Content-Type: application/octet-stream\r\n\r\n");
                append(body, contentsOfFile(*path));
            }
            break;
        }
        append(body, "\r\n");
    }
    append(body, ZRStringWithFormat("--%@--\r\n", MultipartBoundary));

    ZRURLRequest request(std::move(url));
    request.setHTTPMethod("POST");
    request.setValue(ZRStringWithFormat("multipart/form-data; boundary=%@", MultipartBoundary), "Content-Type");
    request.setHTTPBody(std::move(body));
    return request;
}

ZRPropertyList ZRURLRequest::fileFormValue(std::string path)
{
    return ZRDictionary { { std::string(FilePathKey), ZRPropertyList(std::move(path)) } };
}

std::optional<std::string> ZRURLRequest::valueForHTTPHeaderField(std::string_view field) const
{
    const auto found = _headers.find(field);
    if (found == _headers.end())
        return std::nullopt;
    return found->second;
}

void ZRURLRequest::setValue(std::string value, std::string_view field)
{
    if (const auto found = _headers.find(field); found != _headers.end())
        _headers.erase(found);
    _headers.emplace(std::string(field), std::move(value));
}
