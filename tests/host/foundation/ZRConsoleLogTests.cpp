#include <zrbase/host/foundation/ZRConsoleLog.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <regex>
#include <thread>
#include <unistd.h>
#include <vector>

TEST(ZRConsoleLog, writesWholeTimestampedLinesToStandardError)
{
    testing::internal::CaptureStderr();
    ZRConsoleLog("%@: %@", "ZRFileError", "Opening a file failed");
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < 50; ++line)
                ZRConsoleLog("thread %d line %d %@", thread, line, std::string(200, 'x'));
        });
    }
    for (auto& thread : threads)
        thread.join();
    const std::string output = testing::internal::GetCapturedStderr();

    const std::string process = program_invocation_short_name;
    const std::regex first("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} " + process + "\\["
        + std::to_string(getpid()) + ":" + std::to_string(gettid()) + "\\] ZRFileError: Opening a file failed\n");
    const size_t firstEnd = output.find('\n') + 1;
    EXPECT_TRUE(std::regex_match(output.substr(0, firstEnd), first)) << output.substr(0, firstEnd);

    const std::regex threaded("[-0-9: .]{24}" + process + "\\[\\d+:\\d+\\] thread \\d line \\d+ x{200}");
    size_t lines = 0;
    for (size_t start = firstEnd; start < output.size(); ++lines) {
        const size_t end = output.find('\n', start);
        ASSERT_NE(end, std::string::npos);
        EXPECT_TRUE(std::regex_match(output.substr(start, end - start), threaded)) << output.substr(start, end - start);
        start = end + 1;
    }
    EXPECT_EQ(lines, 200u);
}
