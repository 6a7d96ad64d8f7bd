#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono;

const ZRDate referenceDate { seconds(978307200) };

std::string uid(int reference)
{
    return "<dict><key>CF$UID</key><integer>" + std::to_string(reference) + "</integer></dict>";
}

std::string classDescription(std::string_view chain)
{
    std::string classes;
    std::string_view rest = chain;
    while (!rest.empty()) {
        const size_t space = rest.find(' ');
        classes += "<string>" + std::string(rest.substr(0, space)) + "</string>";
        rest = space == std::string_view::npos ? std::string_view() : rest.substr(space + 1);
    }
    return "<dict><key>$classname</key><string>" + std::string(chain.substr(0, chain.find(' ')))
        + "</string><key>$classes</key><array>" + classes + "</array></dict>";
}

// A keyed archive in the XML form the host writes, with the given objects after "$null".
ZRData archive(const std::string& objects, const std::string& top = "<key>root</key>" + uid(1),
    std::string_view archiver = "NSKeyedArchiver")
{
    const std::string xml = "<plist version=\"1.0\"><dict><key>$archiver</key><string>" + std::string(archiver)
        + "</string><key>$version</key><integer>100000</integer><key>$top</key><dict>" + top
        + "</dict><key>$objects</key><array><string>$null</string>" + objects + "</array></dict></plist>";
    return ZRData(xml.begin(), xml.end());
}

}

TEST(ZRKeyedArchiver, writesTheHostsKeyedArchiveLayout)
{
    const ZRDate saved = referenceDate + milliseconds(259200000500);
    const ZRData bytes = ZRKeyedArchiver::archivedDataWithRootObject(
        ZRDictionary { { "name", "Take" }, { "saved", saved }, { "gains", ZRArray { -6, 0.5 } } });
    ASSERT_GE(bytes.size(), 8u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "bplist00");

    const auto plist = ZRPropertyList::propertyListWithData(bytes);
    ASSERT_TRUE(plist && plist->dictionary());
    const ZRDictionary& top = *plist->dictionary();
    EXPECT_EQ(top.at("$archiver"), ZRPropertyList("NSKeyedArchiver"));
    EXPECT_EQ(top.at("$version"), ZRPropertyList(100000));
    EXPECT_EQ(top.at("$top"), ZRPropertyList(ZRDictionary { { "root", ZRDictionary { { "CF$UID", 1 } } } }));
    const ZRArray& objects = *top.at("$objects").array();
    EXPECT_EQ(objects.at(0), ZRPropertyList("$null"));
    const auto object = [&](const ZRPropertyList& reference) -> const ZRPropertyList& {
        return objects.at(reference.dictionary()->at("CF$UID").unsignedIntValue());
    };
    const auto description = [](std::string_view name, std::string_view base) {
        return ZRPropertyList(ZRDictionary { { "$classname", name }, { "$classes", ZRArray { name, base } } });
    };

    const ZRDictionary& root = *objects.at(1).dictionary();
    EXPECT_EQ(object(root.at("$class")), description("NSDictionary", "NSObject"));
    ZRArray keys;
    for (const ZRPropertyList& reference : *root.at("NS.keys").array())
        keys.push_back(object(reference));
    EXPECT_EQ(ZRPropertyList(keys), ZRPropertyList(ZRArray { "gains", "name", "saved" }));
    const ZRArray& values = *root.at("NS.objects").array();
    ASSERT_EQ(values.size(), 3u);
    const ZRDictionary& gains = *object(values[0]).dictionary();
    EXPECT_EQ(object(gains.at("$class")), description("NSArray", "NSObject"));
    EXPECT_EQ(object(gains.at("NS.objects").array()->at(0)).type(), ZRPropertyList::Type::Integer);
    EXPECT_EQ(object(gains.at("NS.objects").array()->at(1)), ZRPropertyList(0.5));
    EXPECT_EQ(object(values[1]), ZRPropertyList("Take"));
    const ZRDictionary& date = *object(values[2]).dictionary();
    EXPECT_EQ(object(date.at("$class")), description("NSDate", "NSObject"));
    EXPECT_EQ(date.at("NS.time").type(), ZRPropertyList::Type::Real);
    EXPECT_EQ(date.at("NS.time").doubleValue(), 259200000.5);

    // Keyed scalars sit in the root object's own dictionary; the caller's "$" keys get another "$".
    ZRKeyedArchiver archiver;
    archiver.encodeDouble("location", 1.5);
    archiver.encodeInt("rate", 44100);
    archiver.encodeBytes("$uuid", ZRData { 1, 2 });
    const auto keyed = ZRPropertyList::propertyListWithData(archiver.finishEncoding("ZRRange"));
    const ZRArray& keyedObjects = *keyed->dictionary()->at("$objects").array();
    const ZRDictionary& range = *keyedObjects.at(1).dictionary();
    EXPECT_EQ(range.at("location"), ZRPropertyList(1.5));
    EXPECT_EQ(range.at("rate").type(), ZRPropertyList::Type::Integer);
    EXPECT_EQ(range.at("$$uuid"), ZRPropertyList(ZRData { 1, 2 }));
    EXPECT_EQ(keyedObjects.at(range.at("$class").dictionary()->at("CF$UID").unsignedIntValue()),
        description("ZRRange", "NSObject"));
}

TEST(ZRKeyedArchiver, valuesAndKeyedScalarsReadBack)
{
    const ZRDictionary state { { "points", ZRArray { ZRDictionary { { "x", 0.25 }, { "y", -1 } }, ZRArray {} } },
        { "name", "Fade \xE2\x80\x93 out" }, { "big", std::numeric_limits<unsigned long long>::max() },
        { "when", referenceDate - microseconds(1500250) }, { "bytes", ZRData { 0, 255 } }, { "on", true } };
    ZRKeyedArchiver archiver;
    archiver.encodeBool("active", true);
    archiver.encodeInt("offset", -44100);
    archiver.encodeDouble("gain", -6.5);
    archiver.encodeBytes("uuid", ZRData(16, 0xAB));
    archiver.encodeObject("state", state);
    archiver.encodeObject("$class", "not the class");
    archiver.encodeObject("nothing", ZRPropertyList());
    const ZRData bytes = archiver.finishEncoding("ZRValueMap");

    std::string failure;
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(bytes, &failure);
    ASSERT_TRUE(unarchiver) << failure;
    EXPECT_EQ(unarchiver->className(), "ZRValueMap");
    EXPECT_TRUE(unarchiver->decodeBool("active"));
    EXPECT_EQ(unarchiver->decodeInt("offset"), -44100);
    EXPECT_EQ(unarchiver->decodeDouble("gain"), -6.5);
    EXPECT_EQ(unarchiver->decodeBytes("uuid"), ZRData(16, 0xAB));
    EXPECT_EQ(unarchiver->decodeObject("state"), ZRPropertyList(state));
    EXPECT_TRUE(unarchiver->decodeObject("state")->dictionary()->at("big").isUnsigned());
    EXPECT_EQ(unarchiver->decodeObject("$class"), ZRPropertyList("not the class"));
    EXPECT_TRUE(unarchiver->containsValueForKey("nothing"));
    EXPECT_FALSE(unarchiver->decodeObject("nothing"));
    EXPECT_FALSE(unarchiver->containsValueForKey("missing"));
    EXPECT_EQ(unarchiver->decodeInt("missing"), 0);
    EXPECT_EQ(unarchiver->decodeInt("uuid"), 0);
    EXPECT_FALSE(unarchiver->decodeBytes("gain"));

    // The archiver starts over after finishing.
    archiver.encodeInt("rate", 48000);
    const auto second = ZRKeyedUnarchiver::unarchiverWithData(archiver.finishEncoding());
    EXPECT_EQ(second->className(), "NSObject");
    EXPECT_EQ(second->decodeInt("rate"), 48000);
    EXPECT_FALSE(second->containsValueForKey("offset"));

    for (const ZRPropertyList& root : { ZRPropertyList("Take"), ZRPropertyList(-7), ZRPropertyList(ZRArray {}),
             ZRPropertyList(ZRDictionary { { "a", ZRArray { "a", "a", 1, 1.0, true } } }) })
        EXPECT_EQ(ZRKeyedUnarchiver::unarchiveObjectWithData(ZRKeyedArchiver::archivedDataWithRootObject(root)), root);
    EXPECT_EQ(ZRKeyedUnarchiver::unarchiverWithData(ZRKeyedArchiver::archivedDataWithRootObject(3.5))->className(),
        "NSNumber");
}

TEST(ZRKeyedUnarchiver, readsTheHostsMutableClassesAndXMLArchives)
{
    const ZRData bytes = archive("<dict><key>NS.keys</key><array>" + uid(2) + uid(3) + uid(4) + uid(5)
        + "</array><key>NS.objects</key><array>" + uid(6) + uid(9) + uid(11) + uid(13) + "</array><key>$class</key>"
        + uid(8) + "</dict>" + "<string>list</string><string>name</string><string>cookie</string><string>saved</string>"
        + "<dict><key>NS.objects</key><array>" + uid(7) + uid(15) + "</array><key>$class</key>" + uid(16) + "</dict>"
        + "<integer>-3</integer>" + classDescription("NSMutableDictionary NSDictionary NSObject")
        + "<dict><key>NS.string</key><string>Take 3</string><key>$class</key>" + uid(10) + "</dict>"
        + classDescription("NSMutableString NSString NSObject")
        + "<dict><key>NS.data</key><data>AAEC</data><key>$class</key>" + uid(12) + "</dict>"
        + classDescription("NSMutableData NSData NSObject")
        + "<dict><key>NS.time</key><real>259200000.5</real><key>$class</key>" + uid(14) + "</dict>"
        + classDescription("NSDate NSObject") + "<real>0.5</real>"
        + classDescription("NSMutableArray NSArray NSObject"));
    const ZRDictionary expected { { "list", ZRArray { -3, 0.5 } }, { "name", "Take 3" },
        { "cookie", ZRData { 0, 1, 2 } }, { "saved", referenceDate + milliseconds(259200000500) } };
    std::string failure;
    EXPECT_EQ(ZRKeyedUnarchiver::unarchiveObjectWithData(bytes, &failure), ZRPropertyList(expected)) << failure;
    EXPECT_EQ(ZRKeyedUnarchiver::unarchiverWithData(bytes)->className(), "NSMutableDictionary");

    // Keys encoded at the top level, not into a root object, read from "$top".
    const auto topLevel = ZRKeyedUnarchiver::unarchiverWithData(
        archive("<string>x</string>", "<key>rate</key><integer>44100</integer><key>label</key>" + uid(1)));
    ASSERT_TRUE(topLevel);
    EXPECT_EQ(topLevel->decodeInt("rate"), 44100);
    EXPECT_EQ(topLevel->decodeObject("label"), ZRPropertyList("x"));
}

TEST(ZRKeyedUnarchiver, malformedArchivesFailOrReadAsAbsent)
{
    std::string failure;
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiverWithData(ZRData { 'x' }, &failure));
    EXPECT_FALSE(failure.empty());
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiverWithData(archive("<string>a</string>", "<key>root</key>" + uid(1), "X")));
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiverWithData(archive("<string>a</string>", "<key>root</key>" + uid(9))));
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiveObjectWithData(archive("", "<key>root</key>" + uid(0)), &failure));
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiveObjectWithData(
        ZRPropertyList(ZRArray { 1 }).dataWithFormat(ZRPropertyList::Format::Binary).value()));

    // Dangling references, objects of unexpected kinds and unknown classes read as absent.
    const std::string array = classDescription("NSArray NSObject");
    const std::string dictionary = classDescription("NSDictionary NSObject");
    const auto keyed = ZRKeyedUnarchiver::unarchiverWithData(archive("<dict><key>dangling</key>" + uid(99)
        + "<key>text</key>" + uid(3) + "<key>plain</key><array/><key>keys</key>" + uid(4) + "<key>count</key>" + uid(5)
        + "<key>date</key>" + uid(6) + "<key>unknown</key>" + uid(8) + "<key>$class</key>" + uid(2) + "</dict>" + array
        + "<string>x</string>" + "<dict><key>NS.keys</key><array>" + uid(9) + "</array><key>NS.objects</key><array>"
        + uid(3) + "</array><key>$class</key>" + uid(7) + "</dict>" + "<dict><key>NS.keys</key><array>" + uid(3)
        + "</array><key>NS.objects</key><array/><key>$class</key>" + uid(7) + "</dict>"
        + "<dict><key>NS.time</key><string>soon</string><key>$class</key>" + uid(10) + "</dict>" + dictionary
        + "<dict><key>$class</key>" + uid(11) + "</dict><integer>1</integer>" + classDescription("NSDate NSObject")
        + classDescription("NSWindow NSObject")));
    ASSERT_TRUE(keyed);
    EXPECT_EQ(keyed->className(), "NSArray");
    EXPECT_TRUE(keyed->containsValueForKey("dangling"));
    for (const char* key : { "dangling", "plain", "keys", "count", "date", "unknown" })
        EXPECT_FALSE(keyed->decodeObject(key)) << key;
    EXPECT_EQ(keyed->decodeInt("text"), 0);
    EXPECT_FALSE(keyed->decodeBool("text"));
    EXPECT_FALSE(keyed->decodeBytes("text"));
    EXPECT_EQ(keyed->decodeObject("text"), ZRPropertyList("x"));

    // An array that holds itself, and a chain of arrays that each hold the next one twice, unfolding into 2^60
    // values: both are refused, the second without unfolding it.
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiveObjectWithData(archive(
        "<dict><key>NS.objects</key><array>" + uid(1) + "</array><key>$class</key>" + uid(2) + "</dict>" + array)));
    std::string chain;
    for (int level = 1; level <= 60; ++level)
        chain += "<dict><key>NS.objects</key><array>" + uid(level + 1) + uid(level + 1) + "</array><key>$class</key>"
            + uid(62) + "</dict>";
    EXPECT_FALSE(ZRKeyedUnarchiver::unarchiveObjectWithData(archive(chain + "<string>leaf</string>" + array)));
}
