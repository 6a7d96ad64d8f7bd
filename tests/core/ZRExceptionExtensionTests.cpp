#include <zrbase/core/ZRDataExtension.h>
#include <zrbase/core/ZRExceptionExtension.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace ZRExtension;

TEST(ZRExceptionExtension, namesTheFunctionsOfRecordedAddresses)
{
    EXPECT_EQ(stackTrace(""), "No stack trace was available.");
    EXPECT_EQ(stackTrace("  \n "), "No stack trace was available.");

    // A return address just inside an exported function of the library, one that nothing maps, and a word.
    const auto inside = reinterpret_cast<uintptr_t>(&md5String) + 1;
    const std::string trace = stackTrace(ZRStringWithFormat("0x%qx  0x10  garbage", static_cast<uint64_t>(inside)));
    const size_t firstLineEnd = trace.find('\n');
    ASSERT_NE(firstLineEnd, std::string::npos);
    const std::string first = trace.substr(0, firstLineEnd);
    EXPECT_NE(first.find("ZRExtension::md5String"), std::string::npos) << first;
    EXPECT_NE(first.find(" (in libzrbase.so"), std::string::npos) << first;
    EXPECT_EQ(trace.substr(firstLineEnd), "\n0x10\ngarbage\n");
}

TEST(ZRExceptionExtension, symbolisesTheCallersStackFromItsDebugInformation)
{
    if (access("/usr/bin/addr2line", X_OK) != 0)
        GTEST_SKIP() << "addr2line is not installed";
    for (const std::string& trace : { stackTrace(), stackTrace(stackTraceAddresses()) }) {
        const std::string first = trace.substr(0, trace.find('\n'));
        EXPECT_NE(first.find("symbolisesTheCallersStackFromItsDebugInformation_Test::TestBody() (in zrbase-tests) ("),
            std::string::npos)
            << trace;
        EXPECT_NE(first.find("ZRExceptionExtensionTests.cpp:"), std::string::npos) << first;
    }
}
