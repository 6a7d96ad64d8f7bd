#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

// A request for a URL as a value: the URL, the method ("GET" until set), header fields and a body.
class ZR_EXPORT ZRURLRequest {
public:
    // Header field names compare without regard to letter case, as HTTP has them.
    struct FieldNameLess {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept;
    };
    using HeaderFields = std::map<std::string, std::string, FieldNameLess>;

    // The fixed boundary between the parts of a multipart form.
    static constexpr std::string_view MultipartBoundary = "0xKhTmLbOuNdArY";
    // The key of the one-entry dictionary that stands for a file in a multipart form (see fileFormValue).
    static constexpr std::string_view FilePathKey = "ZRFilePath";

    explicit ZRURLRequest(std::string url);
    static ZRURLRequest requestWithURL(std::string url) { return ZRURLRequest(std::move(url)); }
    // A POST request whose body is a multipart form of the fields, in the dictionary's (sorted) key order: strings
    // and numbers as their text, data as a file named "<field>.txt", files made by fileFormValue as their contents
    // under their own name (empty when they cannot be read). Other values give an empty part.
    static ZRURLRequest requestWithURL(std::string url, const ZRDictionary& multipartForm);
    // The form value that uploads the file at the path: the dictionary { FilePathKey: path }. A file is never
    // marked by a string, so that no text a user typed can name a file to be sent.
    static ZRPropertyList fileFormValue(std::string path);

    const std::string& url() const noexcept { return _url; }
    const std::string& httpMethod() const noexcept { return _method; }
    void setHTTPMethod(std::string method) { _method = std::move(method); }
    const HeaderFields& allHTTPHeaderFields() const noexcept { return _headers; }
    std::optional<std::string> valueForHTTPHeaderField(std::string_view field) const;
    // Sets a header field, replacing one of the same name in any letter case.
    void setValue(std::string value, std::string_view field);
    const ZRData& httpBody() const noexcept { return _body; }
    void setHTTPBody(ZRData body) { _body = std::move(body); }

    bool operator==(const ZRURLRequest&) const = default;

private:
    std::string _url;
    std::string _method = "GET";
    HeaderFields _headers;
    ZRData _body;
};
