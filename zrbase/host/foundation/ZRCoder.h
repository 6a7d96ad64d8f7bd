#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Keyed archives as binary property lists in the layout of the host's keyed archiver ("$archiver"
// "NSKeyedArchiver", "$version" 100000, "$top", "$objects" with "$null" first, objects referred to by UID,
// classes described by "$classname" and "$classes"), so that archives made elsewhere read back here.
// Property-list values archive as the host's own classes: strings as NSString, numbers as NSNumber, data as
// NSData, dates as NSDate (microseconds kept), arrays as NSArray ("NS.objects") and dictionaries as NSDictionary
// ("NS.keys", "NS.objects"); none is the nil reference. Strings and keys end at a zero character, and their bytes
// that are not UTF-8 are written as U+FFFD. Keys beginning with "$" are written with another "$" in front, as the
// host's archiver does.
class ZR_EXPORT ZRKeyedArchiver {
public:
    ZRKeyedArchiver();
    ~ZRKeyedArchiver();

    void encodeBool(std::string_view key, bool value);
    void encodeInt(std::string_view key, int64_t value);
    void encodeDouble(std::string_view key, double value);
    void encodeBytes(std::string_view key, std::span<const uint8_t> bytes);
    void encodeObject(std::string_view key, const ZRPropertyList& value);

    // The finished archive; the root object is the one whose keys were encoded, with the class name given.
    ZRData finishEncoding(std::string_view className = "NSObject");

    // An archive whose root object is one property-list value.
    static ZRData archivedDataWithRootObject(const ZRPropertyList& object);

    ZRKeyedArchiver(const ZRKeyedArchiver&) = delete;
    ZRKeyedArchiver& operator=(const ZRKeyedArchiver&) = delete;

private:
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

// Reads keyed archives, binary or XML, with the mutable classes too (NSMutableString "NS.string", NSMutableData
// "NS.data", NSMutableArray, NSMutableDictionary). Malformed bytes, dangling references, cycles and values of
// unexpected kinds never crash: the unarchiver fails to open, or the decoder answers the value's absence. Keys are
// those of the root object, or of "$top" when the archive has no root object. The scalar decoders answer 0 (NO)
// for a key that is absent or holds no number.
class ZR_EXPORT ZRKeyedUnarchiver {
public:
    static std::unique_ptr<ZRKeyedUnarchiver> unarchiverWithData(
        std::span<const uint8_t> bytes, std::string* failure = nullptr);
    ~ZRKeyedUnarchiver();

    // The class name of the root object.
    std::string className() const;
    bool containsValueForKey(std::string_view key) const;
    bool decodeBool(std::string_view key) const;
    int64_t decodeInt(std::string_view key) const;
    double decodeDouble(std::string_view key) const;
    std::optional<ZRData> decodeBytes(std::string_view key) const;
    std::optional<ZRPropertyList> decodeObject(std::string_view key) const;

    // The root object of an archive made by archivedDataWithRootObject (or by the host from a property list).
    static std::optional<ZRPropertyList> unarchiveObjectWithData(
        std::span<const uint8_t> bytes, std::string* failure = nullptr);

    ZRKeyedUnarchiver(const ZRKeyedUnarchiver&) = delete;
    ZRKeyedUnarchiver& operator=(const ZRKeyedUnarchiver&) = delete;

private:
    ZRKeyedUnarchiver();
    struct Impl;
    std::unique_ptr<Impl> _impl;
};
