#include "support/ZRTestFiles.h"
#include <zrbase/core/ZRLog.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <regex>
#include <sys/stat.h>
#include <thread>

namespace {

// Waits, generously, until the file holds the expected text.
bool eventuallyContains(const std::string& path, const std::string& expected)
{
    for (int attempt = 0; attempt < 300; ++attempt) {
        if (ZRTestContentsOfFile(path) == expected)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

std::string localTime(time_t time)
{
    struct tm local;
    localtime_r(&time, &local);
    char text[32];
    strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

}

TEST(ZRLog, appendsTheQueueCutToTheTextsUtf16Length)
{
    const std::string folder = ZRTestScratchFolder("ZRLog.append");
    const std::string path = folder + "/take.log";
    std::ofstream(path) << "earlier\n";

    ZRErrorPtr error;
    std::unique_ptr<ZRLog> log = ZRLog::logWithPath(path, &error);
    ASSERT_TRUE(log);
    log->log("first line\n");
    log->log("Grüße\n");
    log->log("😀 end\n");
    EXPECT_EQ(ZRTestContentsOfFile(path), "earlier\n");
    log->flush();
    EXPECT_EQ(ZRTestContentsOfFile(path), "earlier\nfirst line\nGrüß😀 en");

    // What is still queued when the log goes reaches the file; a missing file is made.
    log->log("last\n");
    ASSERT_TRUE(log->setPath(folder + "/new.log", &error));
    log->log("in the new file\n");
    log.reset();
    EXPECT_EQ(ZRTestContentsOfFile(folder + "/new.log"), "last\nin the new file\n");

    EXPECT_FALSE(ZRLog::logWithPath(folder + "/missing/take.log", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(error->code(), ENOENT);
}

TEST(ZRLog, writesInTheBackgroundAfterAQuietPeriod)
{
    const std::string path = ZRTestScratchFolder("ZRLog.background") + "/take.log";
    std::unique_ptr<ZRLog> log = ZRLog::logWithPath(path);
    ASSERT_TRUE(log);
    log->log("one\n");
    log->log("two\n");
    EXPECT_TRUE(eventuallyContains(path, "one\ntwo\n"));
    log->log("three\n");
    EXPECT_TRUE(eventuallyContains(path, "one\ntwo\nthree\n"));
}

TEST(ZRLog, logDateIsTheLocalTimeWithMilliseconds)
{
    setenv("TZ", "Asia/Kathmandu", 1);
    tzset();
    const time_t before = time(nullptr);
    const std::string date = ZRLog::logDate();
    const time_t after = time(nullptr);
    EXPECT_TRUE(std::regex_match(date, std::regex("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}"))) << date;
    EXPECT_GE(date.substr(0, 19), localTime(before));
    EXPECT_LE(date.substr(0, 19), localTime(after));
    unsetenv("TZ");
    tzset();
}

TEST(ZRLog, openLogFileHandsThePathToXdgOpen)
{
    const std::string folder = ZRTestScratchFolder("ZRLog.open");
    const std::string script = folder + "/xdg-open";
    std::ofstream(script)
        << "#!/bin/sh\nprintf '%s' \"$1\" > \"$0.argument.tmp\" && mv \"$0.argument.tmp\" \"$0.argument\"\n";
    chmod(script.c_str(), 0755);
    setenv("PATH", (folder + ":" + std::getenv("PATH")).c_str(), 1);

    std::unique_ptr<ZRLog> log = ZRLog::logWithPath(folder + "/take log.txt");
    ASSERT_TRUE(log);
    log->openLogFile();
    EXPECT_TRUE(eventuallyContains(script + ".argument", folder + "/take log.txt"));
}
