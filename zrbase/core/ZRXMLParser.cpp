#include <zrbase/core/ZRXMLParser.h>

#include <zrbase/core/ZRXMLParserError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

// The system's expat is built with DTD support; its header declares the calls that bound entity expansion only
// when told so.
#ifndef XML_DTD
#define XML_DTD
#endif
#include <expat.h>

#include <algorithm>
#include <climits>
#include <string_view>
#include <unordered_map>

namespace {

enum class Role { Dictionary, Array, IgnoredElement, IgnoredContainer, Leaf };

struct NameHash {
    using is_transparent = void;
    size_t operator()(std::string_view name) const noexcept { return std::hash<std::string_view> {}(name); }
};

// Collections nest no deeper than property lists do, so that the tree can be copied and destroyed on any stack.
constexpr size_t maximumDepth = 512;
// Past this much output, expat compares what entities expanded to with the input and stops at a factor of 100.
constexpr unsigned long long amplificationThreshold = 1 << 20;
constexpr float maximumAmplification = 100.0f;

// Blank text as the host's white-space-and-newline set defines it: ASCII blanks and controls, the next-line and
// no-break spaces, the Unicode space separators and the line and paragraph separators.
bool isBlank(std::string_view text) noexcept
{
    const auto* byte = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = byte + text.size();
    while (byte < end) {
        const unsigned char first = *byte;
        if (first == ' ' || (first >= '\t' && first <= '\r')) {
            ++byte;
        } else if (first == 0xC2 && end - byte >= 2 && (byte[1] == 0x85 || byte[1] == 0xA0)) {
            byte += 2;
        } else if (end - byte >= 3
            && ((first == 0xE1 && byte[1] == 0x9A && byte[2] == 0x80)
                || (first == 0xE2 && byte[1] == 0x80
                    && (byte[2] <= 0x8A || byte[2] == 0xA8 || byte[2] == 0xA9 || byte[2] == 0xAF))
                || (first == 0xE2 && byte[1] == 0x81 && byte[2] == 0x9F)
                || (first == 0xE3 && byte[1] == 0x80 && byte[2] == 0x80))) {
            byte += 3;
        } else {
            return false;
        }
    }
    return true;
}

void accumulate(std::vector<std::string>& list, const std::optional<std::vector<std::string>>& names)
{
    if (names)
        list.insert(list.end(), names->begin(), names->end());
    else
        list.clear();
}

}

struct ZRXMLParser::Parse {
    ZRXMLParser& owner;
    XML_Parser expat;
    std::unordered_map<std::string, Role, NameHash, std::equal_to<>> roles;
    std::vector<ZRPropertyList*> familyTree;
    // The text of the open leaf; the bytes from runStart on are the text since the last tag, dropped at the next
    // tag when blank, however expat divided them into calls.
    // One buffer serves every leaf, so that text grows into memory already there; a value is copied out at its
    // exact length.
    std::string element;
    bool isLeafOpen = false;
    size_t runStart = 0;
    uint32_t isIgnoring = 0;
    bool tooDeep = false;

    Parse(ZRXMLParser& parser, XML_Parser expatParser)
        : owner(parser)
        , expat(expatParser)
    {
        // Inserted in the order of precedence: a name keeps its first role.
        for (const std::string& name : owner._dictionaryElements)
            roles.emplace(name, Role::Dictionary);
        for (const std::string& name : owner._arrayElements)
            roles.emplace(name, Role::Array);
        for (const std::string& name : owner._ignoredElements)
            roles.emplace(name, Role::IgnoredElement);
        for (const std::string& name : owner._ignoredContainers)
            roles.emplace(name, Role::IgnoredContainer);
    }

    Role roleOf(std::string_view name) const
    {
        const auto found = roles.find(name);
        return found == roles.end() ? Role::Leaf : found->second;
    }

    void endTextRun()
    {
        if (isLeafOpen && runStart < element.size() && isBlank(std::string_view(element).substr(runStart)))
            element.resize(runStart);
        runStart = element.size();
    }

    void ensureRoot(Role role)
    {
        if (!familyTree.empty() || owner._root)
            return;
        if (owner._rootClass == RootClass::None)
            owner._rootClass = role == Role::Array ? RootClass::Array : RootClass::Dictionary;
        owner._root
            = owner._rootClass == RootClass::Array ? ZRPropertyList(ZRArray {}) : ZRPropertyList(ZRDictionary {});
        familyTree.push_back(&*owner._root);
    }

    ZRPropertyList* addChildToCurrentParent(ZRPropertyList child, std::string_view key)
    {
        if (familyTree.empty())
            return nullptr;
        ZRPropertyList& parent = *familyTree.back();
        if (ZRDictionary* dictionary = parent.dictionary()) {
            std::string name(key);
            if (owner._lowercaseKeys)
                std::transform(name.begin(), name.end(), name.begin(),
                    [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
            ZRPropertyList& slot = (*dictionary)[std::move(name)];
            slot = std::move(child);
            return &slot;
        }
        if (ZRArray* array = parent.array())
            return &array->emplace_back(std::move(child));
        return nullptr;
    }

    void pushContainer(ZRPropertyList container, std::string_view name)
    {
        if (familyTree.size() >= maximumDepth) {
            tooDeep = true;
            XML_StopParser(expat, XML_FALSE);
            return;
        }
        // An open container is always the newest child of its parent, and its parent receives no other child
        // while it is open, so the pointers on the stack stay valid.
        if (ZRPropertyList* child = addChildToCurrentParent(std::move(container), name))
            familyTree.push_back(child);
        else
            familyTree.push_back(nullptr);
    }

    void startElement(const char* name)
    {
        endTextRun();
        const Role role = roleOf(name);
        switch (role) {
        case Role::IgnoredElement:
            return;
        case Role::Dictionary:
            ensureRoot(role);
            pushContainer(ZRDictionary {}, name);
            return;
        case Role::Array:
            ensureRoot(role);
            pushContainer(ZRArray {}, name);
            return;
        case Role::IgnoredContainer:
            ++isIgnoring;
            return;
        case Role::Leaf:
            ensureRoot(role);
            element.clear();
            isLeafOpen = true;
            runStart = 0;
            return;
        }
    }

    void endElement(const char* name)
    {
        endTextRun();
        switch (roleOf(name)) {
        case Role::IgnoredElement:
            return;
        case Role::Dictionary:
        case Role::Array:
            if (!familyTree.empty())
                familyTree.pop_back();
            return;
        case Role::IgnoredContainer:
            --isIgnoring;
            return;
        case Role::Leaf:
            if (!isLeafOpen || element.empty())
                return;
            addChildToCurrentParent(std::string(element), name);
            element.clear();
            isLeafOpen = false;
            runStart = 0;
            return;
        }
    }

    void characters(const char* text, int length)
    {
        if (isIgnoring > 0 || !isLeafOpen || length <= 0)
            return;
        element.append(text, static_cast<size_t>(length));
    }
};

ZRXMLParser::ZRXMLParser() = default;
ZRXMLParser::~ZRXMLParser() = default;

std::unique_ptr<ZRXMLParser> ZRXMLParser::parser() { return std::make_unique<ZRXMLParser>(); }

void ZRXMLParser::setDictionaryElements(const std::optional<std::vector<std::string>>& names)
{
    accumulate(_dictionaryElements, names);
}

void ZRXMLParser::setArrayElements(const std::optional<std::vector<std::string>>& names)
{
    accumulate(_arrayElements, names);
}

void ZRXMLParser::setIgnoredElements(const std::optional<std::vector<std::string>>& names)
{
    accumulate(_ignoredElements, names);
}

void ZRXMLParser::setIgnoredContainers(const std::optional<std::vector<std::string>>& names)
{
    accumulate(_ignoredContainers, names);
}

const ZRPropertyList* ZRXMLParser::root() const noexcept { return _root ? &*_root : nullptr; }

const ZRPropertyList* ZRXMLParser::objectForData(std::span<const uint8_t> data, ZRErrorPtr* error)
{
    _root.reset();
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expat(XML_ParserCreate(nullptr), XML_ParserFree);
    if (!expat)
        return nullptr;
    Parse parse(*this, expat.get());
    XML_SetUserData(expat.get(), &parse);
    XML_SetElementHandler(
        expat.get(),
        [](void* user, const XML_Char* name, const XML_Char**) { static_cast<Parse*>(user)->startElement(name); },
        [](void* user, const XML_Char* name) { static_cast<Parse*>(user)->endElement(name); });
    XML_SetCharacterDataHandler(expat.get(),
        [](void* user, const XML_Char* text, int length) { static_cast<Parse*>(user)->characters(text, length); });
    // Nothing outside the document is read: no external DTD subset or parameter entities, and references to
    // external general entities are skipped.
    XML_SetParamEntityParsing(expat.get(), XML_PARAM_ENTITY_PARSING_NEVER);
    XML_SetExternalEntityRefHandler(
        expat.get(), [](XML_Parser, const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
            return int(XML_STATUS_OK);
        });
    XML_SetBillionLaughsAttackProtectionActivationThreshold(expat.get(), amplificationThreshold);
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(expat.get(), maximumAmplification);

    // expat takes at most INT_MAX bytes a call.
    constexpr size_t chunk = size_t { 1 } << 30;
    XML_Status status = XML_STATUS_OK;
    size_t offset = 0;
    do {
        const size_t length = std::min(chunk, data.size() - offset);
        const bool isFinal = offset + length == data.size();
        status = XML_Parse(expat.get(), reinterpret_cast<const char*>(data.data() + offset), static_cast<int>(length),
            isFinal ? XML_TRUE : XML_FALSE);
        offset += length;
    } while (status == XML_STATUS_OK && offset < data.size());

    if (status != XML_STATUS_OK && error) {
        const std::string action
            = ZRStringWithFormat(ZRLocalizedString("Reading the XML document at line %qu, column %qu"),
                static_cast<unsigned long long>(XML_GetCurrentLineNumber(expat.get())),
                static_cast<unsigned long long>(XML_GetCurrentColumnNumber(expat.get()) + 1));
        *error = ZRXMLParserError::errorWithCode(
            parse.tooDeep ? ZRXMLParserError::nestingTooDeep : XML_GetErrorCode(expat.get()), action);
    }
    return root();
}
