#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <string>

// Operations the library adds to its dictionaries. Deep copies need none: a ZRDictionary is a value, and copying
// it copies every array and dictionary inside it, mutable or not.
namespace ZRExtension {

// Writes the dictionary as an XML property list to the file (a file URL is given by its path, as everywhere in the
// library), through a temporary file so that it is never left half written. False when it cannot be written.
ZR_EXPORT bool writePropertyListToURL(const ZRDictionary& dictionary, const std::string& path);

}
