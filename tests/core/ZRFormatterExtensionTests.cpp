#include <zrbase/core/ZRFormatterExtension.h>

#include <gtest/gtest.h>

namespace {

// Reads "440" and nothing else.
class ZRConcertPitchFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList&) const override { return "440"; }
    bool getObjectValue(ZRPropertyList& value, std::string_view text, std::string*) const override
    {
        if (text != "440")
            return false;
        value = 440;
        return true;
    }
};

}

TEST(ZRFormatterExtension, answersTheValueReadOrNothing)
{
    const ZRConcertPitchFormatter formatter;
    EXPECT_EQ(ZRExtension::objectValueForString(formatter, "440"), ZRPropertyList(440));
    EXPECT_EQ(ZRExtension::objectValueForString(formatter, "440 Hz"), std::nullopt);
    // The base lets every text stand while it is typed.
    EXPECT_TRUE(formatter.isPartialStringValid("4"));
}
