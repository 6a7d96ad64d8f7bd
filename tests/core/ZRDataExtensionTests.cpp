#include <zrbase/core/ZRDataExtension.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <string>

using namespace ZRExtension;

namespace {

ZRData bytes(std::string_view text) { return ZRData(text.begin(), text.end()); }

std::string hex(const ZRData& data)
{
    std::string text;
    for (const uint8_t byte : data) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xF];
    }
    return text;
}

}

TEST(ZRDataExtension, computesMD5AsRFC1321Publishes)
{
    const std::pair<std::string, const char*> vectors[] = {
        { "", "d41d8cd98f00b204e9800998ecf8427e" },
        { "a", "0cc175b9c0f1b6a831c399e269772661" },
        { "abc", "900150983cd24fb0d6963f7d28e17f72" },
        { "message digest", "f96b697d7cb7938d525a2f31aaf161d0" },
        { "abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b" },
        { "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f" },
        { "12345678901234567890123456789012345678901234567890123456789012345678901234567890",
            "57edf4a22be3c955ac49da2e2107b67a" },
    };
    for (const auto& [message, digest] : vectors) {
        EXPECT_EQ(md5String(bytes(message)), digest) << message;
        EXPECT_EQ(hex(md5Digest(bytes(message))), digest) << message;
    }
}

TEST(ZRDataExtension, computesSHA1AsFIPS180Publishes)
{
    EXPECT_EQ(hex(sha1Digest(bytes(""))), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(hex(sha1Digest(bytes("abc"))), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hex(sha1Digest(bytes("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"))),
        "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(hex(sha1Digest(ZRData(1000000, 'a'))), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(ZRDataExtension, writesBytesOverAFileAndIgnoresFailures)
{
    const std::string path = ZRTestScratchFolder("ZRDataExtension") + "/bytes";
    writeToFile(bytes("a longer first content"), path);
    writeToFile(bytes("short"), path);
    EXPECT_EQ(ZRTestContentsOfFile(path), "short");
    writeToFile(ZRData { 0, 1, 2 }, path);
    EXPECT_EQ(ZRTestContentsOfFile(path), std::string("\0\1\2", 3));
    writeToFile(bytes("lost"), path + "/inside/a/file");
    EXPECT_EQ(ZRTestContentsOfFile(path), std::string("\0\1\2", 3));
}
