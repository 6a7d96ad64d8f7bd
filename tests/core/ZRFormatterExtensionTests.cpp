#include "core/ZRFormatterExtension.h"

#include <gtest/gtest.h>

#include <charconv>

namespace {

// Reads whole decimal integers and shows them with a unit.
class ZRHertzFormatter : public ZRFormatter {
public:
    std::string stringForObjectValue(const ZRPropertyList& value) const override
    {
        return std::to_string(value.intValue()) + " Hz";
    }
    bool getObjectValue(ZRPropertyList& value, std::string_view text, std::string* errorDescription) const override
    {
        int hertz = 0;
        const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), hertz);
        if (failure != std::errc() || end != text.data() + text.size()) {
            if (errorDescription)
                *errorDescription = "not a number";
            return false;
        }
        value = hertz;
        return true;
    }
};

}

TEST(ZRFormatterExtension, answersTheValueReadOrNothing)
{
    const ZRHertzFormatter formatter;
    EXPECT_EQ(ZRExtension::objectValueForString(formatter, "440"), ZRPropertyList(440));
    EXPECT_EQ(ZRExtension::objectValueForString(formatter, "440 Hz"), std::nullopt);
    EXPECT_EQ(ZRExtension::objectValueForString(formatter, ""), std::nullopt);
    EXPECT_EQ(formatter.stringForObjectValue(48000), "48000 Hz");
    EXPECT_TRUE(formatter.isPartialStringValid("4"));
}
