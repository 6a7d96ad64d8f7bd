#include <zrbase/formatters/ZRBooleanFormatter.h>
#include <zrbase/formatters/ZRChannelsFormatter.h>
#include <zrbase/formatters/ZRDecibelFormatter.h>
#include <zrbase/formatters/ZRDifferenceFormatter.h>
#include <zrbase/formatters/ZRFileSizeFormatter.h>
#include <zrbase/formatters/ZRLoopTypeFormatter.h>
#include <zrbase/formatters/ZRScaleFormatter.h>
#include <zrbase/formatters/ZRTimeFormatter.h>
#include <zrbase/formatters/ZRTimeRemainingFormatter.h>

#include <zrbase/core/ZRFormatterExtension.h>
#include <zrbase/host/foundation/ZRBundle.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

using ZRExtension::objectValueForString;

namespace {

// A German user for the length of a test, with the application's own text domain as given.
class GermanUser {
public:
    explicit GermanUser(std::string applicationDomain)
    {
        _locale = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
        setenv("LANGUAGE", "de", 1);
        ZRBundle::main().setTextDomain(std::move(applicationDomain));
        ZRBundle::main().setLocalePath(ZR_TEST_BINARY_DIR "/../resources/locale");
    }
    ~GermanUser()
    {
        ZRBundle::main().setTextDomain("");
        unsetenv("LANGUAGE");
        std::setlocale(LC_ALL, "C");
    }
    bool hasLocale() const { return _locale; }

private:
    bool _locale = false;
};

}

TEST(ZRFormattersLocalization, germanWordsWithNumbersAsTheyWere)
{
    const GermanUser user("");
    ASSERT_TRUE(user.hasLocale());

    EXPECT_EQ(ZRScaleFormatter().stringForObjectValue(2), "Dur");
    EXPECT_EQ(ZRTimeRemainingFormatter().stringForObjectValue(150), "etwa 3 Minuten");
    EXPECT_EQ(ZRTimeRemainingFormatter().stringForObjectValue(2), "etwa eine Sekunde");
    EXPECT_EQ(ZRChannelsFormatter().stringForObjectValue(3), "3-Kanal");
    EXPECT_EQ(ZRChannelsFormatter().stringForObjectValue(6), "5.1");
    EXPECT_EQ(ZRDifferenceFormatter().stringForObjectValue(12.5), "12.500%");
    EXPECT_EQ(ZRDifferenceFormatter().stringForObjectValue(-2), "k. A.");
    EXPECT_EQ(ZRDecibelFormatter().stringForObjectValue(0.5), "-6.0 dB");
    EXPECT_EQ(ZRFileSizeFormatter().stringForObjectValue(1048576), "1.0 MB");

    // Words read back in the user's language.
    const ZRLoopTypeFormatter loops;
    EXPECT_EQ(loops.stringForObjectValue(1), "Vorwärts-Rückwärts");
    EXPECT_EQ(objectValueForString(loops, "Vorwärts"), 0);
    EXPECT_EQ(objectValueForString(loops, "Forward"), -1);
    const ZRBooleanFormatter booleans;
    EXPECT_EQ(booleans.stringForObjectValue(true), "Ja");
    EXPECT_EQ(objectValueForString(booleans, "ja"), true);
    EXPECT_EQ(objectValueForString(booleans, "Yes"), false);

    ZRTimeFormatter time;
    time.setTimeFormat(ZRTimeFormatSecondsMilliseconds);
    EXPECT_EQ(time.stringForObjectValue(1.5), "1.500");
    EXPECT_EQ(objectValueForString(time, "1.5"), 1.5);
    time.setTimeFormat(ZRTimeFormatBarsBeats480);
    std::string message;
    ZRPropertyList value;
    EXPECT_FALSE(time.getObjectValue(value, "1|1|000", &message));
    EXPECT_EQ(message, "Tempo und/oder Taktart sind nicht festgelegt.");
}

TEST(ZRFormattersLocalization, theApplicationsTranslationWins)
{
    const GermanUser user("zrtest");
    ASSERT_TRUE(user.hasLocale());
    EXPECT_EQ(ZRChannelsFormatter().stringForObjectValue(2), "Zweikanal"); // the application's
    EXPECT_EQ(ZRChannelsFormatter().stringForObjectValue(1), "Mono"); // the library's
    EXPECT_EQ(ZRScaleFormatter().stringForObjectValue(1), "Moll");
}
