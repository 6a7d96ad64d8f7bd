#include <zrbase/core/ZRDictionaryExtension.h>

namespace ZRExtension {

bool writePropertyListToURL(const ZRDictionary& dictionary, const std::string& path)
{
    return ZRPropertyList(dictionary).writeToFile(path, ZRPropertyList::Format::XML);
}

}
