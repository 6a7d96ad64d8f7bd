#include <zrbase/core/ZRXMLParser.h>

#include <benchmark/benchmark.h>

#include "ZRBenchmarkRatio.h"

#include <expat.h>

#include <string>

// A 10 MB catalogue of dictionaries in arrays, indented as property lists are, against expat reading the same
// bytes with empty callbacks.
namespace {

std::string catalogue(size_t size)
{
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalogue>\n";
    for (size_t index = 0; document.size() < size; ++index) {
        const std::string number = std::to_string(index);
        document += "  <track>\n    <title>Track number " + number + " &amp; friends</title>\n    <artist>Artist "
            + number + "</artist>\n    <length>" + std::to_string(index * 7 % 600)
            + "</length>\n    <tags>\n      <tag>live</tag>\n      <tag>remastered</tag>\n    </tags>\n"
              "    <note>A longer line of text, as album notes carry, with a few words more to read.</note>\n"
              "  </track>\n";
    }
    return document + "</catalogue>\n";
}

void BM_XMLParser_objectForData(benchmark::State& state)
{
    const std::string document = catalogue(10 << 20);
    const std::span bytes(reinterpret_cast<const uint8_t*>(document.data()), document.size());
    ZRXMLParser parser;
    parser.setArrayElements(std::vector<std::string> { "catalogue", "tags" });
    parser.setDictionaryElements(std::vector<std::string> { "track" });
    ZRBenchmarkRatio(
        state, [&] { benchmark::DoNotOptimize(parser.objectForData(bytes)); },
        [&] {
            XML_Parser expat = XML_ParserCreate(nullptr);
            XML_SetElementHandler(
                expat, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
            XML_SetCharacterDataHandler(expat, [](void*, const XML_Char*, int) {});
            benchmark::DoNotOptimize(XML_Parse(expat, document.data(), static_cast<int>(document.size()), XML_TRUE));
            XML_ParserFree(expat);
        },
        static_cast<int64_t>(document.size()));
}

}

BENCHMARK(BM_XMLParser_objectForData)->Unit(benchmark::kMillisecond)->UseManualTime();
