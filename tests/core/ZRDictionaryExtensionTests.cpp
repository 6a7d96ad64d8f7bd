#include <zrbase/core/ZRDictionaryExtension.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

TEST(ZRDictionaryExtension, writesAPropertyListThatReadsBack)
{
    const std::string folder = ZRTestScratchFolder("ZRDictionaryExtension");
    const ZRDictionary dictionary { { "name", "Take 1" }, { "rate", 44100.0 },
        { "nested", ZRDictionary { { "channels", ZRArray { 1, 2 } } } } };
    ASSERT_TRUE(ZRExtension::writePropertyListToURL(dictionary, folder + "/state.plist"));
    EXPECT_EQ(ZRPropertyList::propertyListWithContentsOfFile(folder + "/state.plist"), ZRPropertyList(dictionary));
    EXPECT_NE(ZRTestContentsOfFile(folder + "/state.plist").find("<?xml"), std::string::npos);
    EXPECT_FALSE(ZRExtension::writePropertyListToURL(dictionary, folder + "/missing/state.plist"));
}
