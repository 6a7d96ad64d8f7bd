#include "support/ZRRecordingAlertPresenter.h"
#include "support/ZRTestChildProcess.h"
#include "support/ZRTestFiles.h"
#include <zrbase/core/ZRApplicationLog.h>
#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRUserDefaults.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Studio {

struct Strip {
    virtual ~Strip() = default;
};
struct AuxiliaryBus : Strip { };
struct SurroundPannerWithDelayCompensation { };

}

namespace {

const std::string date = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";

// Every test logs as an application of its own name, from a fresh log file and fresh defaults.
class ZRApplicationLogTest : public testing::Test {
protected:
    void SetUp() override
    {
        _name = std::string("LogTest-") + testing::UnitTest::GetInstance()->current_test_info()->name();
        ZRBundle::main().setInfoDictionary(
            { { "CFBundleName", _name }, { "CFBundleShortVersionString", "2.1" }, { "CFBundleVersion", "210" } });
        std::remove(ZRUserDefaults::standard().path().c_str());
        ZRUserDefaults::standard().reload();
        _path = std::string(std::getenv("HOME")) + "/Library/Logs/Velmora/" + _name + ".log";
        std::remove(_path.c_str());
    }
    void TearDown() override { ZRApplicationLog::dispose(); }

    std::vector<std::string> lines()
    {
        if (ZRApplicationLog* log = ZRApplicationLog::existingLog())
            log->flush();
        std::vector<std::string> lines;
        std::istringstream contents(ZRTestContentsOfFile(_path));
        for (std::string line; std::getline(contents, line);)
            lines.push_back(line);
        return lines;
    }
    static bool matches(const std::string& line, const std::string& pattern)
    {
        return std::regex_match(line, std::regex(pattern));
    }

    std::string _name;
    std::string _path;
};

ZRDictionary ruleState(std::string domain, uint32_t threshold, bool active = true)
{
    return { { "active", active }, { "domain", std::move(domain) }, { "threshold", threshold } };
}

}

TEST_F(ZRApplicationLogTest, isOffByDefaultAndThenPassesErrorsOnly)
{
    ZRApplicationLog::error(nullptr, "not written");
    EXPECT_FALSE(ZRApplicationLog::active());
    EXPECT_FALSE(ZRUserDefaults::standard().boolForKey("Debug Logging Active"));
    EXPECT_EQ(ZRUserDefaults::standard().integerForKey("Debug Default Threshold"), 4);
    EXPECT_TRUE(ZRUserDefaults::standard().arrayForKey("Debug Rules").empty());
    EXPECT_TRUE(lines().empty());

    ZRApplicationLog::setActive(true);
    ZRApplicationLog::error(nullptr, "an error");
    ZRApplicationLog::warning(nullptr, "a warning");
    ZRApplicationLog::setActive(true);
    ZRApplicationLog::setActive(false);
    ZRApplicationLog::error(nullptr, "after switching off");
    std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 4u);
    EXPECT_TRUE(matches(written[0], date + " ===== " + _name + " 2.1 210 logging activated"));
    EXPECT_TRUE(matches(written[1], date + " \\[e\\] an error"));
    EXPECT_TRUE(matches(written[2], date + " ===== " + _name + " 2.1 210 logging activated"));
    EXPECT_TRUE(matches(written[3], date + " ===== " + _name + " 2.1 210 logging deactivated"));

    // The switch is kept: the next launch starts active, and the end is written too.
    ZRApplicationLog::setActive(true);
    ZRApplicationLog::dispose();
    EXPECT_TRUE(ZRUserDefaults::standard().boolForKey("Debug Logging Active"));
    ZRApplicationLog::create();
    ZRApplicationLog::dispose();
    written = lines();
    ASSERT_EQ(written.size(), 8u);
    EXPECT_TRUE(matches(written[4], date + " ===== " + _name + " 2.1 210 logging activated"));
    EXPECT_TRUE(matches(written[5], date + " ===== " + _name + " terminated ====="));
    EXPECT_TRUE(matches(written[6], date + " ===== " + _name + " 2.1 210 launched"));
    EXPECT_TRUE(matches(written[7], date + " ===== " + _name + " terminated ====="));
}

TEST_F(ZRApplicationLogTest, linesCarryTheDomainTheSenderClassAndTheLevelCode)
{
    ZRApplicationLog::setActive(true);
    ZRApplicationLog::setThreshold(ZRLogLevelDebug);
    Studio::AuxiliaryBus bus;
    const Studio::Strip* strip = &bus;
    Studio::SurroundPannerWithDelayCompensation panner;

    ZRApplicationLog::warning(ZR_LOG_CONTEXT("Mixer", strip), "level %d of %@", 3, "bus");
    ZRApplicationLog::info(ZR_LOG_CONTEXT(std::nullopt, nullptr), "no domain, no sender");
    ZRApplicationLog::debug(ZR_LOG_CONTEXT("AutomationRecording1", &panner), "long names");
    ZRApplicationLog::sharedLog()->log(7, nullptr, "odd level");
    ZRApplicationLog::error(nullptr, "");
    ZRApplicationLog::error(nullptr, "%@", "100% of '%@'");
    ZRFileError::errorWithCode(9, "Reading from a file");
    EXPECT_THROW(ZRFileError::errorWithCode(-1, "Synchronizing a file"), std::invalid_argument);
    ZRApplicationLog::info(nullptr, "Lautstärke");

    std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 10u);
    const std::string mixer = " Mixer" + std::string(7, ' ') + " Studio::AuxiliaryBus" + std::string(4, ' ');
    EXPECT_TRUE(matches(written[1], date + mixer + " \\[w\\] level 3 of bus"));
    EXPECT_TRUE(matches(written[2], date + std::string(37, ' ') + " \\[i\\] no domain, no sender"));
    EXPECT_TRUE(matches(written[3], date + " AutomationRe Studio::SurroundPannerWi \\[d\\] long names"));
    EXPECT_TRUE(matches(written[4], date + " \\[\\?\\] odd level"));
    EXPECT_TRUE(matches(written[5], date + " \\[e\\] \\(nil\\)"));
    EXPECT_TRUE(matches(written[6], date + " \\[e\\] 100% of '%@'"));
    EXPECT_TRUE(matches(
        written[7], date + " \\[e\\] Reading from a file failed because a bad file descriptor was given. \\(EBADF\\)"));
    EXPECT_TRUE(matches(written[8], date + " \\[e\\] Synchronizing a file failed because \\(null\\)"));
    // One byte more in UTF-8 than in UTF-16 units: the newline is lost.
    EXPECT_TRUE(matches(written[9], date + " \\[i\\] Lautstärke"));
    EXPECT_NE(ZRTestContentsOfFile(_path).back(), '\n');
}

TEST_F(ZRApplicationLogTest, rulesSetThresholdsPerDomainAndAreKeptInTheDefaults)
{
    ZRUserDefaults& defaults = ZRUserDefaults::standard();
    defaults.setObject("Debug Logging Active", true);
    defaults.setObject("Debug Default Threshold", 3);
    defaults.setObject("Debug Rules",
        ZRArray { ruleState("Meter", 1, false), ZRDictionary { { "domain", "Disk" }, { "threshold", 2 } } });

    EXPECT_EQ(ZRApplicationLog::thresholdForDomain("Meter"), 0x7FFFFFFFu);
    EXPECT_EQ(ZRApplicationLog::thresholdForDomain("Disk"), 2u);
    EXPECT_EQ(ZRApplicationLog::thresholdForDomain("Other"), 3u);
    EXPECT_EQ(ZRApplicationLog::thresholdForDomain(std::nullopt), 3u);
    ZRApplicationLog::error(ZR_LOG_CONTEXT("Meter", nullptr), "silenced");
    ZRApplicationLog::info(ZR_LOG_CONTEXT("Disk", nullptr), "disk info");
    ZRApplicationLog::info(ZR_LOG_CONTEXT("Other", nullptr), "filtered");
    ZRApplicationLog::warning(ZR_LOG_CONTEXT("Other", nullptr), "other warning");
    std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 3u);
    EXPECT_TRUE(matches(written[0], date + " ===== " + _name + " 2.1 210 launched"));
    EXPECT_TRUE(matches(written[1], date + " Disk .* disk info"));
    EXPECT_TRUE(matches(written[2], date + " Other .* other warning"));

    ZRApplicationLog::setThreshold(1, "Tape");
    ZRApplicationLog::setThreshold(2, std::nullopt);
    EXPECT_EQ(defaults.integerForKey("Debug Default Threshold"), 2);
    EXPECT_EQ(defaults.arrayForKey("Debug Rules"),
        (ZRArray { ruleState("Meter", 1, false), ruleState("Disk", 2), ruleState("Tape", 1) }));

    ZRApplicationLog::setThreshold(4);
    ZRApplicationLog* log = ZRApplicationLog::sharedLog();
    log->removeRule(log->ruleForDomain("Disk"));
    log->removeRule(std::nullopt);
    EXPECT_EQ(defaults.integerForKey("Debug Default Threshold"), 4);
    EXPECT_EQ(defaults.arrayForKey("Debug Rules"), (ZRArray { ruleState("Meter", 4, false), ruleState("Tape", 4) }));
    EXPECT_EQ(ZRApplicationLog::thresholdForDomain("Meter"), 0x7FFFFFFFu);
}

TEST(ZRApplicationLogRule, stateHoldsThreeKeysAndSettingItAppliesOnlyThosePresent)
{
    ZRApplicationLogRule rule(ZRDictionary { { "threshold", 3 } });
    EXPECT_EQ(rule, ZRApplicationLogRule("", 3));
    rule.setState({ { "active", false }, { "domain", "Disk" } });
    EXPECT_EQ(rule.state(), ruleState("Disk", 3, false));
}

TEST_F(ZRApplicationLogTest, anUnwritableLogFolderGivesAnAlertAndNoLog)
{
    const std::string home = ZRTestScratchFolder("ZRApplicationLog.unwritable");
    std::ofstream(home + "/Library");
    const std::string previousHome = std::getenv("HOME");
    setenv("HOME", home.c_str(), 1);
    ZRRecordingAlertPresenter presenter;

    EXPECT_EQ(ZRApplicationLog::sharedLog(), nullptr);
    ZRApplicationLog::error(nullptr, "nowhere to go");
    ZRApplicationLog::setActive(true);
    EXPECT_FALSE(ZRApplicationLog::active());
    EXPECT_EQ(ZRFileError::errorWithCode(2, "Reading")->code(), 2);
    ASSERT_FALSE(presenter.alerts().empty());
    EXPECT_EQ(presenter.alerts()[0].messageText, "A file error occurred");
    EXPECT_NE(presenter.alerts()[0].informativeText.find("failed because"), std::string::npos);
    setenv("HOME", previousHome.c_str(), 1);
}

TEST_F(ZRApplicationLogTest, linesOfManyThreadsAllArriveWholeAndInOrder)
{
    constexpr int threadCount = 4;
    constexpr int linesPerThread = 250000;
    ZRApplicationLog::setActive(true);
    // Straight into the queue, as every message ends: formatting a million lines would only slow the test down.
    ZRApplicationLog* log = ZRApplicationLog::sharedLog();
    ASSERT_TRUE(log);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([log, thread] {
            const std::string prefix = "thread " + std::to_string(thread) + " line ";
            for (int line = 0; line < linesPerThread; ++line)
                log->ZRLog::log(prefix + std::to_string(line) + "\n");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    ZRApplicationLog::dispose();

    // Between the two banners, whole lines only, each thread's in the order written.
    std::istringstream contents(ZRTestContentsOfFile(_path));
    std::string line;
    std::getline(contents, line);
    int next[threadCount] = {};
    int count = 0;
    while (std::getline(contents, line) && line.find(" terminated =====") == std::string::npos) {
        int thread = -1, number = -1;
        char after = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "thread %d line %d%c", &thread, &number, &after), 2) << line;
        ASSERT_TRUE(thread >= 0 && thread < threadCount) << line;
        ASSERT_EQ(number, next[thread]++) << line;
        ++count;
    }
    EXPECT_NE(line.find(" terminated ====="), std::string::npos);
    EXPECT_EQ(count, threadCount * linesPerThread);
    EXPECT_FALSE(std::getline(contents, line));
}

TEST_F(ZRApplicationLogTest, threadsLogAndMakeErrorsWhileTheLogIsDisposedAndReopened)
{
    ZRApplicationLog::setActive(true);
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&stop, thread] {
            while (!stop.load()) {
                ZRApplicationLog::error(nullptr, "thread %d", thread);
                ZRFileError::errorWithCode(2, "Reading");
                if (ZRApplicationLog* log = ZRApplicationLog::existingLog())
                    log->log(ZRLogLevelError, nullptr, "through a held log");
                ZRApplicationLog::setThreshold(4, "Disk");
                (void)ZRApplicationLog::thresholdForDomain("Disk");
            }
        });
    }
    for (int round = 0; round < 50; ++round) {
        ZRApplicationLog::dispose();
        ZRApplicationLog::create();
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    ZRApplicationLog::dispose();

    // Every line is whole: a banner, a message of a thread, or an error's sentence.
    std::vector<std::string> written = lines();
    EXPECT_GT(written.size(), 100u);
    for (const std::string& line : written) {
        ASSERT_TRUE(matches(line,
            date + " (===== " + _name + " (2.1 210 (launched|logging activated)|terminated =====)|\\[e\\] (thread \\d"
                + "|through a held log|Reading failed because the file or directory was not found\\. \\(ENOENT\\)))"))
            << line;
    }
}

TEST_F(ZRApplicationLogTest, twoLogsOnOneFileKeepEachOthersLines)
{
    // Two copies of an application log to the same file: every line lands at the end, none over another.
    ZRApplicationLog::create();
    ZRApplicationLog::dispose();
    std::unique_ptr<ZRLog> first = ZRLog::logWithPath(_path);
    std::unique_ptr<ZRLog> second = ZRLog::logWithPath(_path);
    ASSERT_TRUE(first && second);
    for (int line = 0; line < 3; ++line) {
        first->log("first " + std::to_string(line) + "\n");
        first->flush();
        second->log("second " + std::to_string(line) + "\n");
        second->flush();
    }
    EXPECT_EQ(
        lines(), (std::vector<std::string> { "first 0", "second 0", "first 1", "second 1", "first 2", "second 2" }));
}

TEST(ZRApplicationLogName, aProgramWithoutInformationLogsUnderItsExecutablesName)
{
    EXPECT_TRUE(ZRTestRunInChildProcess([] {
        ZRApplicationLog::create();
        ZRApplicationLog* log = ZRApplicationLog::existingLog();
        EXPECT_TRUE(log && log->path() == std::string(std::getenv("HOME")) + "/Library/Logs/Velmora/zrbase-tests.log");
        ZRApplicationLog::dispose();
        return !testing::Test::HasFailure();
    }));
}
