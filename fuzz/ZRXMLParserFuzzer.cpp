#include <zrbase/core/ZRXMLParser.h>

#include <cstdlib>

// Any bytes as an XML document, with the first byte choosing the roles of a few element names: the parser never
// crashes, and either succeeds or reports an error.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const std::vector<std::string> names { "a", "b", "c", "d" };
    ZRXMLParser parser;
    parser.setDictionaryElements(std::vector<std::string> { names[data[0] & 3] });
    parser.setArrayElements(std::vector<std::string> { names[(data[0] >> 2) & 3] });
    parser.setIgnoredElements(std::vector<std::string> { names[(data[0] >> 4) & 3] });
    parser.setIgnoredContainers(std::vector<std::string> { names[(data[0] >> 6) & 3] });
    parser.setMakeKeysLowercase(data[0] & 1);
    ZRErrorPtr error;
    const ZRPropertyList* root = parser.objectForData(std::span(data + 1, size - 1), &error);
    if (root && !root->dictionary() && !root->array())
        std::abort();
    return 0;
}
