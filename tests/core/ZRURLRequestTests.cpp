#include <zrbase/core/ZRURLRequest.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <fstream>

TEST(ZRURLRequest, postsAMultipartFormByteForByte)
{
    const std::string path = ZRTestScratchFolder("ZRURLRequest") + "/take 1.aif";
    std::ofstream(path, std::ios::binary) << std::string("FORM\0\1", 6);

    const ZRDictionary form {
        { "yes", true },
        { "rate", 44100.5 },
        { "notes", ZRData { 'x', 'y' } },
        { "file", ZRURLRequest::fileFormValue(path) },
        { "missing", ZRURLRequest::fileFormValue("/nonexistent/gone.wav") },
        { "date", ZRDate() },
        { "count", 12 },
        { "comment", "file:///etc/hostname" },
    };
    const ZRURLRequest request = ZRURLRequest::requestWithURL("https://example.invalid/upload", form);

    EXPECT_EQ(request.httpMethod(), "POST");
    EXPECT_EQ(request.valueForHTTPHeaderField("content-type"), "multipart/form-data; boundary=0xKhTmLbOuNdArY");
    const std::string expected
        = std::string("--0xKhTmLbOuNdArY\r\n"
                      "Content-Disposition: form-data; name=\"comment\"\r\n\r\n"
                      "file:///etc/hostname\r\n"
                      "--0xKhTmLbOuNdArY\r\n"
                      "Content-Disposition: form-data; name=\"count\"\r\n\r\n12\r\n"
                      "--0xKhTmLbOuNdArY\r\n"
                      "\r\n"
                      "--0xKhTmLbOuNdArY\r\n"
                      "Content-Disposition: form-data; name=\"file\"; filename=\"take 1.aif\"\r\n"
                      "Content-Type: application/octet-stream\r\n\r\n")
        + std::string("FORM\0\1", 6)
        + "\r\n"
          "--0xKhTmLbOuNdArY\r\n"
          "Content-Disposition: form-data; name=\"missing\"; filename=\"gone.wav\"\r\n"
          "Content-Type: application/octet-stream\r\n\r\n"
          "\r\n"
          "--0xKhTmLbOuNdArY\r\n"
          "Content-Disposition: form-data; name=\"notes\"; filename=\"notes.txt\"\r\n"
          "Content-Type: application/octet-stream\r\n\r\n"
          "xy\r\n"
          "--0xKhTmLbOuNdArY\r\n"
          "Content-Disposition: form-data; name=\"rate\"\r\n\r\n44100.5\r\n"
          "--0xKhTmLbOuNdArY\r\n"
          "Content-Disposition: form-data; name=\"yes\"\r\n\r\n1\r\n"
          "--0xKhTmLbOuNdArY--\r\n";
    EXPECT_EQ(std::string(request.httpBody().begin(), request.httpBody().end()), expected);

    const ZRURLRequest empty = ZRURLRequest::requestWithURL("https://example.invalid/", ZRDictionary());
    EXPECT_EQ(std::string(empty.httpBody().begin(), empty.httpBody().end()), "--0xKhTmLbOuNdArY--\r\n");
}

TEST(ZRURLRequest, keepsOneHeaderFieldPerNameInAnyLetterCase)
{
    ZRURLRequest request("https://example.invalid/");
    EXPECT_EQ(request.httpMethod(), "GET");
    request.setValue("text/plain", "Content-Type");
    request.setValue("audio/aiff", "content-TYPE");
    request.setValue("1", "X-Take");
    EXPECT_EQ(request.valueForHTTPHeaderField("CONTENT-type"), "audio/aiff");
    EXPECT_EQ(request.valueForHTTPHeaderField("Accept"), std::nullopt);
    ASSERT_EQ(request.allHTTPHeaderFields().size(), 2u);
    EXPECT_EQ(request.allHTTPHeaderFields().begin()->first, "content-TYPE");
    EXPECT_NE(request, ZRURLRequest("https://example.invalid/"));
}
