#include "core/ZRDictionaryExtension.h"

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

TEST(ZRDictionaryExtension, writesAPropertyListThatReadsBack)
{
    const std::string folder = ZRTestScratchFolder("ZRDictionaryExtension");
    const ZRDictionary dictionary { { "name", "Take 1" }, { "rate", 44100.0 },
        { "nested", ZRDictionary { { "channels", ZRArray { 1, 2 } } } } };
    ASSERT_TRUE(ZRExtension::writePropertyListToURL(dictionary, folder + "/state.plist"));
    const auto read = ZRPropertyList::propertyListWithContentsOfFile(folder + "/state.plist");
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, ZRPropertyList(dictionary));
    EXPECT_NE(ZRTestContentsOfFile(folder + "/state.plist").find("<?xml"), std::string::npos);
    EXPECT_FALSE(ZRExtension::writePropertyListToURL(dictionary, folder + "/missing/state.plist"));
}
