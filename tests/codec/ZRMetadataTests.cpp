#include <zrbase/codec/ZRMetadata.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>

#include <gtest/gtest.h>

TEST(ZRMetadata, TranslatesTheCatalogueKeys)
{
    EXPECT_TRUE(ZRMetadata::keyExists("title"));
    EXPECT_EQ(ZRMetadata::titleForKey("trackNumber"), "Track Number");
    EXPECT_EQ(ZRMetadata::oggVorbisFormatKeyForKey("trackNumber"), "TRACKNUMBER");
    EXPECT_EQ(ZRMetadata::keyForOggVorbisFormatKey("ISRC"), "isrc");
    EXPECT_EQ(ZRMetadata::infoDictionaryFormatKeyForKey("comments"), "comments");
    EXPECT_EQ(ZRMetadata::keyForInfoDictionaryFormatKey("time signature"), "timeSignature");
    EXPECT_EQ(ZRMetadata::keyForUserDataFormatKey(0xA96E616D), "title"); // '©nam'
    EXPECT_EQ(ZRMetadata::keyForUserDataFormatKey(ZRFourCharCode("trkn")), "trackNumber");
    EXPECT_EQ(ZRMetadata::keyForTitle("Composer"), "composer");
    EXPECT_EQ(ZRMetadata::categoryMaskForKey("tempo"), 2U);
    const std::optional<ZRDictionary> info = ZRMetadata::infoForKey("tempo");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->at("class").stringValue(), "NSNumber");
    EXPECT_EQ(ZRMetadata::infoForTitle("Tempo"), info);
}

TEST(ZRMetadata, UnknownKeysFallBackAsDocumented)
{
    EXPECT_EQ(ZRMetadata::oggVorbisFormatKeyForKey("noSuchKey"), "noSuchKey");
    EXPECT_EQ(ZRMetadata::keyForOggVorbisFormatKey("NOSUCHFIELD"), "NOSUCHFIELD");
    EXPECT_EQ(ZRMetadata::infoDictionaryFormatKeyForKey("noSuchKey"), std::nullopt);
    EXPECT_EQ(ZRMetadata::keyForInfoDictionaryFormatKey("no such key"), std::nullopt);
    EXPECT_EQ(ZRMetadata::keyForUserDataFormatKey(ZRFourCharCode("zzzz")), std::nullopt);
    EXPECT_EQ(ZRMetadata::categoryMaskForKey("noSuchKey"), 0U);
    EXPECT_FALSE(ZRMetadata::keyExists("noSuchKey"));
    // Fields without an Ogg name keep their own key.
    EXPECT_EQ(ZRMetadata::oggVorbisFormatKeyForKey("timeSignature"), "timeSignature");
}

TEST(ZRMetadata, ListsTheFieldsOfCategoriesInCatalogueOrder)
{
    EXPECT_EQ(ZRMetadata::keysForCategoryMask(4), (std::vector<std::string> { "copyright", "isrc" }));
    const std::vector<std::string> keys = ZRMetadata::keysForCategoryMask(1 | 2);
    ASSERT_GE(keys.size(), 12U);
    EXPECT_EQ(keys.front(), "title");
    const std::vector<std::string> titles = ZRMetadata::titlesForCategoryMask(1 | 2);
    ASSERT_EQ(titles.size(), keys.size());
    for (size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(ZRMetadata::keyForTitle(titles[i]), keys[i]);
    const ZRArray properties = ZRMetadata::propertiesForCategoryMask(8);
    ASSERT_FALSE(properties.empty());
    EXPECT_EQ(properties[0].dictionary()->size(), 3U);
    EXPECT_EQ(properties[0].dictionary()->at("key").stringValue(), "sourceEncoder");
    EXPECT_TRUE(ZRMetadata::keysForCategoryMask(0).empty());
}
