#include <zrbase/host/foundation/ZRCoder.h>

#include <zrbase/host/foundation/ZRPropertyListPrivate.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace {

using ZRPropertyListPrivate::Node;

// References that chain or nest deeper than this are taken for a cycle.
constexpr int maximumDepth = 512;
// Shared objects unfold into copies. An archive written as a tree holds at least one byte per reference, so it unfolds
// into fewer values than it has bytes; one that would unfold into many more is refused, so that a small archive of
// objects that share objects cannot take exponential time and memory.
constexpr size_t valuesPerByte = 4;
constexpr size_t minimumValueBudget = 65536;
constexpr uint64_t archiveVersion = 100000;

// Keys beginning with "$" are the archive's own; a caller's key that begins with one is written with another "$".
std::string archiveKey(std::string_view key)
{
    return key.starts_with('$') ? "$" + std::string(key) : std::string(key);
}

// Names become C strings written through UTF-16: they end at a zero character and must be UTF-8.
plist_t newName(std::string_view name) { return plist_new_string(ZRUnicode::validUTF8(name).c_str()); }

std::vector<std::string> classChain(std::string_view className)
{
    if (className == "NSObject")
        return { "NSObject" };
    if (className == "NSMutableArray")
        return { "NSMutableArray", "NSArray", "NSObject" };
    if (className == "NSMutableDictionary")
        return { "NSMutableDictionary", "NSDictionary", "NSObject" };
    return { std::string(className), "NSObject" };
}

// A key under which a scalar value or a class description is filed, so that equal ones are written once.
std::string uniqueKey(const ZRPropertyList& value)
{
    switch (value.type()) {
    case ZRPropertyList::Type::Boolean:
        return value.boolValue() ? "b1" : "b0";
    case ZRPropertyList::Type::Integer:
        return "i" + value.stringValue();
    case ZRPropertyList::Type::Real: {
        const double real = value.doubleValue();
        std::string key(1 + sizeof real, 'r');
        std::memcpy(key.data() + 1, &real, sizeof real);
        return key;
    }
    case ZRPropertyList::Type::String:
        return "s" + *value.string();
    case ZRPropertyList::Type::Data:
        return "d" + std::string(value.data()->begin(), value.data()->end());
    default:
        return {};
    }
}

bool isType(plist_t node, plist_type type) { return node && plist_get_node_type(node) == type; }

plist_t itemForKey(plist_t dictionary, const char* key)
{
    return isType(dictionary, PLIST_DICT) ? plist_dict_get_item(dictionary, key) : nullptr;
}

std::optional<std::string_view> stringOf(plist_t node)
{
    if (!isType(node, PLIST_STRING))
        return std::nullopt;
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string_view(text, length) : std::string_view();
}

// A reference to an archived object: a UID node, or its XML form, a dictionary {"CF$UID": n}.
std::optional<uint64_t> referenceOf(plist_t node)
{
    uint64_t reference = 0;
    if (isType(node, PLIST_UID)) {
        plist_get_uid_val(node, &reference);
        return reference;
    }
    if (isType(node, PLIST_DICT) && plist_dict_get_size(node) == 1) {
        plist_t value = plist_dict_get_item(node, "CF$UID");
        if (isType(value, PLIST_UINT)) {
            plist_get_uint_val(value, &reference);
            return reference;
        }
    }
    return std::nullopt;
}

} // namespace

struct ZRKeyedArchiver::Impl {
    // The "$objects" array: "$null" first, then every object in the order it was first encoded.
    Node objects;
    // Scalar values and class descriptions already in the array, by their unique key.
    std::map<std::string, uint64_t> written;
    // The dictionary of the root object that the encode calls fill; it lives in `objects` at index 1.
    plist_t root = nullptr;

    void start()
    {
        objects.reset(plist_new_array());
        written.clear();
        append(plist_new_string("$null"));
        root = nullptr;
    }

    uint64_t append(plist_t node)
    {
        plist_array_append_item(objects.get(), node);
        return plist_array_get_size(objects.get()) - 1;
    }

    uint64_t encodeClass(std::string_view className)
    {
        const std::string key = "c" + std::string(className);
        if (const auto found = written.find(key); found != written.end())
            return found->second;
        plist_t description = plist_new_dict();
        plist_t chain = plist_new_array();
        for (const std::string& name : classChain(className))
            plist_array_append_item(chain, newName(name));
        plist_dict_set_item(description, "$classes", chain);
        plist_dict_set_item(description, "$classname", newName(className));
        const uint64_t reference = append(description);
        written.emplace(key, reference);
        return reference;
    }

    static plist_t referenceArray(const std::vector<uint64_t>& references)
    {
        plist_t array = plist_new_array();
        for (uint64_t reference : references)
            plist_array_append_item(array, plist_new_uid(reference));
        return array;
    }

    // An object's own dictionary is placed before its members, its class description after them, as the host
    // writes them.
    uint64_t encode(const ZRPropertyList& value)
    {
        if (value.isNone())
            return 0;
        if (const ZRArray* array = value.array()) {
            plist_t object = plist_new_dict();
            const uint64_t reference = append(object);
            std::vector<uint64_t> elements;
            for (const ZRPropertyList& element : *array)
                elements.push_back(encode(element));
            plist_dict_set_item(object, "NS.objects", referenceArray(elements));
            plist_dict_set_item(object, "$class", plist_new_uid(encodeClass("NSArray")));
            return reference;
        }
        if (const ZRDictionary* dictionary = value.dictionary()) {
            plist_t object = plist_new_dict();
            const uint64_t reference = append(object);
            std::vector<uint64_t> keys;
            std::vector<uint64_t> values;
            for (const auto& entry : *dictionary)
                keys.push_back(encode(ZRPropertyList(entry.first)));
            for (const auto& entry : *dictionary)
                values.push_back(encode(entry.second));
            plist_dict_set_item(object, "NS.keys", referenceArray(keys));
            plist_dict_set_item(object, "NS.objects", referenceArray(values));
            plist_dict_set_item(object, "$class", plist_new_uid(encodeClass("NSDictionary")));
            return reference;
        }
        if (const ZRDate* date = value.date()) {
            plist_t object = plist_new_dict();
            const uint64_t reference = append(object);
            plist_dict_set_item(object, "NS.time", plist_new_real(ZRPropertyListPrivate::referenceSeconds(*date)));
            plist_dict_set_item(object, "$class", plist_new_uid(encodeClass("NSDate")));
            return reference;
        }
        const std::string key = uniqueKey(value);
        if (const auto found = written.find(key); found != written.end())
            return found->second;
        const uint64_t reference = append(ZRPropertyListPrivate::newScalarNode(value));
        written.emplace(key, reference);
        return reference;
    }

    ZRData finish(uint64_t rootReference)
    {
        Node archive(plist_new_dict());
        plist_dict_set_item(archive.get(), "$version", plist_new_uint(archiveVersion));
        plist_dict_set_item(archive.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(rootReference));
        plist_dict_set_item(archive.get(), "$top", top);
        plist_dict_set_item(archive.get(), "$objects", objects.release());
        start();
        return ZRPropertyListPrivate::serialize(archive.get(), ZRPropertyList::Format::Binary, nullptr)
            .value_or(ZRData());
    }

    void startRootObject()
    {
        start();
        root = plist_new_dict();
        append(root);
    }

    void setRootItem(std::string_view key, plist_t node)
    {
        plist_dict_set_item(root, ZRUnicode::validUTF8(archiveKey(key)).c_str(), node);
    }
};

ZRKeyedArchiver::ZRKeyedArchiver()
    : _impl(std::make_unique<Impl>())
{
    _impl->startRootObject();
}

ZRKeyedArchiver::~ZRKeyedArchiver() = default;

void ZRKeyedArchiver::encodeBool(std::string_view key, bool value) { _impl->setRootItem(key, plist_new_bool(value)); }

void ZRKeyedArchiver::encodeInt(std::string_view key, int64_t value)
{
    _impl->setRootItem(key, plist_new_uint(static_cast<uint64_t>(value)));
}

void ZRKeyedArchiver::encodeDouble(std::string_view key, double value)
{
    _impl->setRootItem(key, plist_new_real(value));
}

void ZRKeyedArchiver::encodeBytes(std::string_view key, std::span<const uint8_t> bytes)
{
    _impl->setRootItem(key, plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void ZRKeyedArchiver::encodeObject(std::string_view key, const ZRPropertyList& value)
{
    const uint64_t reference = _impl->encode(value);
    _impl->setRootItem(key, plist_new_uid(reference));
}

ZRData ZRKeyedArchiver::finishEncoding(std::string_view className)
{
    plist_dict_set_item(_impl->root, "$class", plist_new_uid(_impl->encodeClass(className)));
    ZRData archive = _impl->finish(1);
    _impl->startRootObject();
    return archive;
}

ZRData ZRKeyedArchiver::archivedDataWithRootObject(const ZRPropertyList& object)
{
    Impl impl;
    impl.start();
    return impl.finish(impl.encode(object));
}

struct ZRKeyedUnarchiver::Impl {
    Node archive;
    // The number of values one decoding may unfold.
    size_t valueBudget = 0;
    plist_t objects = nullptr;
    // The root object's node; null when the root is nil.
    plist_t root = nullptr;

    plist_t object(uint64_t reference) const
    {
        return reference < plist_array_get_size(objects)
            ? plist_array_get_item(objects, static_cast<uint32_t>(reference))
            : nullptr;
    }

    std::string className(plist_t node) const
    {
        const std::optional<uint64_t> reference = referenceOf(itemForKey(node, "$class"));
        const auto name = reference ? stringOf(itemForKey(object(*reference), "$classname")) : std::nullopt;
        return name ? std::string(*name) : std::string();
    }

    // The value of a node: none for the nil reference, nullopt for whatever cannot be read.
    std::optional<ZRPropertyList> value(plist_t node, int depth, size_t& budget) const
    {
        if (!node || depth > maximumDepth || budget == 0)
            return std::nullopt;
        --budget;
        if (const std::optional<uint64_t> reference = referenceOf(node)) {
            if (*reference == 0)
                return ZRPropertyList();
            return value(object(*reference), depth + 1, budget);
        }
        const plist_type type = plist_get_node_type(node);
        if (type != PLIST_DICT) {
            if (type == PLIST_ARRAY || type == PLIST_UID || type == PLIST_KEY || type == PLIST_NONE)
                return std::nullopt;
            return ZRPropertyListPrivate::scalarValue(node);
        }
        const std::string name = className(node);
        if (name == "NSArray" || name == "NSMutableArray")
            return array(itemForKey(node, "NS.objects"), depth, budget);
        if (name == "NSDictionary" || name == "NSMutableDictionary")
            return dictionary(itemForKey(node, "NS.keys"), itemForKey(node, "NS.objects"), depth, budget);
        if (name == "NSString" || name == "NSMutableString") {
            const auto text = stringOf(itemForKey(node, "NS.string"));
            return text ? std::optional<ZRPropertyList>(std::string(*text)) : std::nullopt;
        }
        if (name == "NSData" || name == "NSMutableData") {
            plist_t bytes = itemForKey(node, "NS.data");
            return isType(bytes, PLIST_DATA) ? std::optional<ZRPropertyList>(ZRPropertyListPrivate::scalarValue(bytes))
                                             : std::nullopt;
        }
        if (name == "NSDate") {
            const ZRPropertyList time = ZRPropertyListPrivate::scalarValue(itemForKey(node, "NS.time"));
            if (!time.isNumber())
                return std::nullopt;
            return ZRPropertyList(ZRPropertyListPrivate::dateWithReferenceSeconds(time.doubleValue()));
        }
        return std::nullopt;
    }

    std::optional<ZRArray> elements(plist_t references, int depth, size_t& budget) const
    {
        if (!isType(references, PLIST_ARRAY))
            return std::nullopt;
        ZRArray result;
        const uint32_t count = plist_array_get_size(references);
        for (uint32_t index = 0; index < count; ++index) {
            auto element = value(plist_array_get_item(references, index), depth + 1, budget);
            if (!element)
                return std::nullopt;
            result.push_back(std::move(*element));
        }
        return result;
    }

    std::optional<ZRPropertyList> array(plist_t references, int depth, size_t& budget) const
    {
        auto result = elements(references, depth, budget);
        return result ? std::optional<ZRPropertyList>(std::move(*result)) : std::nullopt;
    }

    std::optional<ZRPropertyList> dictionary(
        plist_t keyReferences, plist_t valueReferences, int depth, size_t& budget) const
    {
        auto keys = elements(keyReferences, depth, budget);
        auto values = keys ? elements(valueReferences, depth, budget) : std::nullopt;
        if (!values || values->size() != keys->size())
            return std::nullopt;
        ZRDictionary result;
        for (size_t index = 0; index < keys->size(); ++index) {
            const std::string* key = (*keys)[index].string();
            if (!key)
                return std::nullopt;
            result.insert_or_assign(*key, std::move((*values)[index]));
        }
        return ZRPropertyList(std::move(result));
    }

    std::optional<ZRPropertyList> valueForKey(std::string_view key) const
    {
        size_t budget = valueBudget;
        return value(itemForKey(root, archiveKey(key).c_str()), 0, budget);
    }
};

ZRKeyedUnarchiver::ZRKeyedUnarchiver()
    : _impl(std::make_unique<Impl>())
{
}

ZRKeyedUnarchiver::~ZRKeyedUnarchiver() = default;

std::unique_ptr<ZRKeyedUnarchiver> ZRKeyedUnarchiver::unarchiverWithData(
    std::span<const uint8_t> bytes, std::string* failure)
{
    Node archive = ZRPropertyListPrivate::parse(bytes, failure);
    if (!archive)
        return nullptr;
    plist_t objects = itemForKey(archive.get(), "$objects");
    plist_t top = itemForKey(archive.get(), "$top");
    if (stringOf(itemForKey(archive.get(), "$archiver")) != "NSKeyedArchiver" || !isType(objects, PLIST_ARRAY)
        || !isType(top, PLIST_DICT)) {
        if (failure)
            *failure = "The data is not a keyed archive.";
        return nullptr;
    }
    std::unique_ptr<ZRKeyedUnarchiver> unarchiver(new ZRKeyedUnarchiver());
    Impl& impl = *unarchiver->_impl;
    impl.objects = objects;
    impl.valueBudget = std::max(bytes.size() * valuesPerByte, minimumValueBudget);
    // Archives whose keys were encoded at the top level rather than into a root object are read from "$top".
    plist_t rootItem = plist_dict_get_item(top, "root");
    const std::optional<uint64_t> rootReference = referenceOf(rootItem);
    if (!rootItem)
        impl.root = top;
    else if (rootReference && *rootReference != 0) {
        impl.root = impl.object(*rootReference);
        if (!impl.root) {
            if (failure)
                *failure = "The keyed archive refers to a root object it does not hold.";
            return nullptr;
        }
    }
    impl.archive = std::move(archive);
    return unarchiver;
}

// Root objects that are plain property-list values are the host's string, number and data classes.
std::string ZRKeyedUnarchiver::className() const
{
    switch (_impl->root ? plist_get_node_type(_impl->root) : PLIST_NONE) {
    case PLIST_STRING:
        return "NSString";
    case PLIST_BOOLEAN:
    case PLIST_UINT:
    case PLIST_REAL:
        return "NSNumber";
    case PLIST_DATA:
        return "NSData";
    case PLIST_DICT:
        return _impl->className(_impl->root);
    default:
        return {};
    }
}

bool ZRKeyedUnarchiver::containsValueForKey(std::string_view key) const
{
    return itemForKey(_impl->root, archiveKey(key).c_str()) != nullptr;
}

bool ZRKeyedUnarchiver::decodeBool(std::string_view key) const
{
    const auto value = _impl->valueForKey(key);
    return value && value->isNumber() && value->boolValue();
}

int64_t ZRKeyedUnarchiver::decodeInt(std::string_view key) const
{
    const auto value = _impl->valueForKey(key);
    return value && value->isNumber() ? value->longLongValue() : 0;
}

double ZRKeyedUnarchiver::decodeDouble(std::string_view key) const
{
    const auto value = _impl->valueForKey(key);
    return value && value->isNumber() ? value->doubleValue() : 0;
}

std::optional<ZRData> ZRKeyedUnarchiver::decodeBytes(std::string_view key) const
{
    const auto value = _impl->valueForKey(key);
    return value && value->data() ? std::optional<ZRData>(*value->data()) : std::nullopt;
}

std::optional<ZRPropertyList> ZRKeyedUnarchiver::decodeObject(std::string_view key) const
{
    auto value = _impl->valueForKey(key);
    return value && !value->isNone() ? value : std::nullopt;
}

std::optional<ZRPropertyList> ZRKeyedUnarchiver::unarchiveObjectWithData(
    std::span<const uint8_t> bytes, std::string* failure)
{
    const auto unarchiver = unarchiverWithData(bytes, failure);
    if (!unarchiver)
        return std::nullopt;
    size_t budget = unarchiver->_impl->valueBudget;
    auto object = unarchiver->_impl->value(unarchiver->_impl->root, 0, budget);
    if (!object || object->isNone()) {
        if (failure)
            *failure = "The keyed archive holds no root object that can be read.";
        return std::nullopt;
    }
    return object;
}
