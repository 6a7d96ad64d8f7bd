#include <zrbase/core/ZRXMLParser.h>
#include <zrbase/core/ZRXMLParserError.h>

#include <expat.h>
#include <gtest/gtest.h>

#include <string_view>

namespace {

std::span<const uint8_t> bytes(std::string_view text)
{
    return { reinterpret_cast<const uint8_t*>(text.data()), text.size() };
}

ZRPropertyList dictionary(ZRDictionary entries) { return ZRPropertyList(std::move(entries)); }
ZRPropertyList array(ZRArray entries) { return ZRPropertyList(std::move(entries)); }

}

TEST(ZRXMLParser, containersLeavesAndTheRootThatWrapsTheDocument)
{
    ZRXMLParser parser;
    parser.setArrayElements(std::vector<std::string> { "items" });
    parser.setDictionaryElements(std::vector<std::string> { "item" });
    const ZRPropertyList* root = parser.objectForData(bytes("<items>\n  <item>\n    <name>One</name>\n  </item>\n"
                                                            "  <item><name>Two</name><size>2</size></item>\n</items>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(parser.rootClass(), ZRXMLParser::RootClass::Array);
    EXPECT_EQ(*root,
        array({ array({ dictionary({ { "name", "One" } }), dictionary({ { "name", "Two" }, { "size", "2" } }) }) }));
    EXPECT_EQ(parser.root(), root);

    // The root class stays for later parses; a dictionary top element then sits in an array root.
    root = parser.objectForData(bytes("<item><name>Three</name></item>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, array({ dictionary({ { "name", "Three" } }) }));

    ZRXMLParser nested;
    nested.setDictionaryElements(std::vector<std::string> { "plist", "dict" });
    nested.setArrayElements(std::vector<std::string> { "list" });
    root = nested.objectForData(
        bytes("<plist><dict><a>1</a><list><x>p</x><dict><y>q</y></dict><x>r</x></list></dict><b>2</b></plist>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(nested.rootClass(), ZRXMLParser::RootClass::Dictionary);
    EXPECT_EQ(*root,
        dictionary({ { "plist",
            dictionary(
                { { "dict",
                      dictionary({ { "a", "1" }, { "list", array({ "p", dictionary({ { "y", "q" } }), "r" }) } }) },
                    { "b", "2" } }) } }));

    // A document of only a leaf makes a dictionary root holding it; an empty leaf makes no entry.
    ZRXMLParser leaves;
    root = leaves.objectForData(bytes("<title>Song</title>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({ { "title", "Song" } }));
    root = leaves.objectForData(bytes("<title> \n\t </title>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({}));
}

TEST(ZRXMLParser, textKeepsInnerSpacesDropsBlankRunsAndJoinsWhatExpatSplits)
{
    ZRXMLParser parser;
    parser.setDictionaryElements(std::vector<std::string> { "d" });
    const ZRPropertyList* root = parser.objectForData(
        bytes("<d>\n    <a>two words</a>\n    <b>\n      indented\n    </b>\n    <c>line one\nline two</c>\n"
              "    <e>fish &amp; chips &#x263A; &lt;b&gt;</e>\n    <f><![CDATA[<raw> & ]]> tail</f>\n"
              "    <g>\xC2\xA0\xE2\x80\x83</g>\n    <h>caf\xC3\xA9</h>\n</d>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root,
        dictionary({ { "d",
            dictionary({ { "a", "two words" }, { "b", "\n      indented\n    " }, { "c", "line one\nline two" },
                { "e", "fish & chips \xE2\x98\xBA <b>" }, { "f", "<raw> &  tail" }, { "h", "caf\xC3\xA9" } }) } }));
}

TEST(ZRXMLParser, listsAccumulateAndTakeTheirRolesInOrder)
{
    ZRXMLParser parser;
    parser.setArrayElements(std::vector<std::string> { "a" });
    parser.setArrayElements(std::vector<std::string> { "b" });
    EXPECT_EQ(parser.arrayElements(), (std::vector<std::string> { "a", "b" }));
    parser.setArrayElements(std::nullopt);
    EXPECT_TRUE(parser.arrayElements().empty());

    // "x" is both a dictionary and an array element: the dictionary role comes first.
    parser.setDictionaryElements(std::vector<std::string> { "x" });
    parser.setArrayElements(std::vector<std::string> { "x", "y" });
    parser.setMakeKeysLowercase(true);
    const ZRPropertyList* root = parser.objectForData(bytes("<y><x><Title>A</Title><TITLE>B</TITLE></x></y>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, array({ array({ dictionary({ { "title", "B" } }) }) }));

    parser.setMakeKeysLowercase(false);
    root = parser.objectForData(bytes("<y><x><Title>A</Title><v>1</v><v>2</v></x></y>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, array({ array({ dictionary({ { "Title", "A" }, { "v", "2" } }) }) }));
}

TEST(ZRXMLParser, ignoredElementsAndHiddenContainers)
{
    ZRXMLParser parser;
    parser.setDictionaryElements(std::vector<std::string> { "d" });
    parser.setIgnoredElements(std::vector<std::string> { "wrapper" });
    parser.setIgnoredContainers(std::vector<std::string> { "comment" });
    // The wrapper's tags vanish and its children land in the enclosing dictionary; text inside the hidden
    // container is dropped while its dictionaries are still made, empty of text.
    const ZRPropertyList* root = parser.objectForData(bytes("<wrapper><d><wrapper><a>1</a></wrapper>"
                                                            "<comment>note<d><b>hidden</b></d><c>gone</c></comment>"
                                                            "<e>kept</e></d></wrapper>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({ { "d", dictionary({ { "a", "1" }, { "d", dictionary({}) }, { "e", "kept" } }) } }));

    // A document of ignored elements only makes no root.
    EXPECT_EQ(parser.objectForData(bytes("<wrapper><comment>x</comment></wrapper>")), nullptr);
}

TEST(ZRXMLParser, encodingsAndTheRootClassSetBeforehand)
{
    // UTF-16 little-endian with a byte-order mark, holding a non-ASCII letter.
    const std::u16string text = u"\uFEFF<title>Gr\u00FC\u00DFe</title>";
    ZRData utf16;
    for (char16_t unit : text) {
        utf16.push_back(static_cast<uint8_t>(unit & 0xFF));
        utf16.push_back(static_cast<uint8_t>(unit >> 8));
    }
    ZRXMLParser parser;
    parser.setRootClass(ZRXMLParser::RootClass::Array);
    const ZRPropertyList* root = parser.objectForData(utf16);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root,
        array({ "Gr\xC3\xBC\xC3\x9F"
                "e" }));

    root = parser.objectForData(bytes("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><title>\xE9t\xE9</title>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, array({ "\xC3\xA9t\xC3\xA9" }));
}

TEST(ZRXMLParser, malformedDocumentsGiveExpatsPositionAndThePartialTree)
{
    ZRXMLParser parser;
    parser.setDictionaryElements(std::vector<std::string> { "d" });
    ZRErrorPtr error;
    const ZRPropertyList* root = parser.objectForData(bytes("<d>\n<a>1</a>\n<b>2</c>\n</d>"), &error);
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(error->errorClass().name, "ZRXMLParserError");
    EXPECT_EQ(error->domain(), "ZRXMLParserErrorDomain");
    EXPECT_EQ(error->code(), XML_ERROR_TAG_MISMATCH);
    EXPECT_EQ(
        error->localizedDescription(), "Reading the XML document at line 3, column 7 failed because mismatched tag");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({ { "d", dictionary({ { "a", "1" } }) } }));

    // Bad bytes for the declared encoding, an undefined entity, nothing at all.
    for (std::string_view malformed : { std::string_view("<a>\xFF\xFE</a>"), std::string_view("<a>&nope;</a>"),
             std::string_view(""), std::string_view("<a>1</a><b>2</b>") }) {
        error.reset();
        parser.objectForData(bytes(malformed), &error);
        EXPECT_NE(error, nullptr) << malformed;
    }

    // Cut short at every byte, a sample document fails without crashing, and only the whole one parses.
    const std::string_view sample = "<?xml version=\"1.0\"?>\n<d><a>x &amp; y</a><![CDATA[z]]><b attr='1'/></d>";
    for (size_t length = 0; length < sample.size(); ++length) {
        error.reset();
        parser.objectForData(bytes(sample.substr(0, length)), &error);
        EXPECT_NE(error, nullptr) << length;
    }
    error.reset();
    EXPECT_NE(parser.objectForData(bytes(sample), &error), nullptr);
    EXPECT_EQ(error, nullptr);
}

TEST(ZRXMLParser, entitiesAreBoundedAndNothingOutsideTheDocumentIsRead)
{
    ZRXMLParser parser;
    // Internal entities expand as usual.
    const ZRPropertyList* root
        = parser.objectForData(bytes("<!DOCTYPE t [<!ENTITY who \"world\">]><t>hello &who;</t>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({ { "t", "hello world" } }));

    // An external entity is skipped, never read.
    root
        = parser.objectForData(bytes("<!DOCTYPE t [<!ENTITY secret SYSTEM \"file:///etc/passwd\">]><t>[&secret;]</t>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(*root, dictionary({ { "t", "[]" } }));

    // Ten levels of ten-fold entities would expand to gigabytes: the parse stops instead.
    std::string bomb = "<!DOCTYPE t [<!ENTITY l0 \"laughter\">";
    for (int level = 1; level < 10; ++level) {
        bomb += "<!ENTITY l" + std::to_string(level) + " \"";
        for (int copy = 0; copy < 10; ++copy)
            bomb += "&l" + std::to_string(level - 1) + ";";
        bomb += "\">";
    }
    bomb += "]><t>&l9;</t>";
    ZRErrorPtr error;
    parser.objectForData(bytes(bomb), &error);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), XML_ERROR_AMPLIFICATION_LIMIT_BREACH);

    // Collections nest at most 512 deep.
    ZRXMLParser deep;
    deep.setDictionaryElements(std::vector<std::string> { "d" });
    std::string nesting;
    for (int level = 0; level < 600; ++level)
        nesting += "<d>";
    for (int level = 0; level < 600; ++level)
        nesting += "</d>";
    error.reset();
    EXPECT_NE(deep.objectForData(bytes(nesting), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), ZRXMLParserError::nestingTooDeep);
}
