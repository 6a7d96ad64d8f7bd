#pragma once

#include <zrbase/core/ZRError.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Turns an XML document into plain collections without a schema. The caller names the elements that become
// dictionaries and arrays, the elements whose tags are skipped (their children still count) and the containers
// whose text is dropped; every other element is a leaf whose text becomes a string, added to its parent
// dictionary under the element's name (the last of repeated names wins) or appended to its parent array.
// Attributes and namespaces are not read. The root object wraps the document: the top element is its first child.
//
// The document is read by expat. External entities are never loaded, and entity expansion is bounded: a document
// that expands small entities into huge text fails as not well-formed.
class ZR_EXPORT ZRXMLParser {
public:
    // The kind of root object. None until set or decided by the first element of a parse (an array element makes
    // an array root, anything else a dictionary root); then kept for later parses.
    enum class RootClass { None, Dictionary, Array };

    ZRXMLParser();
    ~ZRXMLParser();
    ZRXMLParser(const ZRXMLParser&) = delete;
    ZRXMLParser& operator=(const ZRXMLParser&) = delete;

    static std::unique_ptr<ZRXMLParser> parser();

    // A list given is added to the names already there (lists accumulate); nullopt empties the list. A name in
    // several lists takes the role of the first in the order dictionary, array, ignored element, ignored container.
    void setDictionaryElements(const std::optional<std::vector<std::string>>& names);
    void setArrayElements(const std::optional<std::vector<std::string>>& names);
    void setIgnoredElements(const std::optional<std::vector<std::string>>& names);
    void setIgnoredContainers(const std::optional<std::vector<std::string>>& names);
    const std::vector<std::string>& dictionaryElements() const noexcept { return _dictionaryElements; }
    const std::vector<std::string>& arrayElements() const noexcept { return _arrayElements; }
    const std::vector<std::string>& ignoredElements() const noexcept { return _ignoredElements; }
    const std::vector<std::string>& ignoredContainers() const noexcept { return _ignoredContainers; }

    // Dictionary keys are lower-cased (ASCII letters) when set.
    void setMakeKeysLowercase(bool lowercase) noexcept { _lowercaseKeys = lowercase; }
    bool makeKeysLowercase() const noexcept { return _lowercaseKeys; }

    void setRootClass(RootClass rootClass) noexcept { _rootClass = rootClass; }
    RootClass rootClass() const noexcept { return _rootClass; }

    // Parses the document (UTF-8, UTF-16 with a byte-order mark, or as its declaration says) and returns the root,
    // null when no element made one. A document that is not well-formed gives a ZRXMLParserError naming expat's
    // line and column, and the tree built so far as result. The result belongs to the parser and stays valid until
    // its next parse.
    const ZRPropertyList* objectForData(std::span<const uint8_t> data, ZRErrorPtr* error = nullptr);
    // The result of the last parse, null when it made no root.
    const ZRPropertyList* root() const noexcept;

private:
    struct Parse;
    friend struct Parse;

    std::vector<std::string> _dictionaryElements;
    std::vector<std::string> _arrayElements;
    std::vector<std::string> _ignoredElements;
    std::vector<std::string> _ignoredContainers;
    bool _lowercaseKeys = false;
    RootClass _rootClass = RootClass::None;
    std::optional<ZRPropertyList> _root;
};
