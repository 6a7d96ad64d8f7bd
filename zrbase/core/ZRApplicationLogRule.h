#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <string>

// The threshold of one domain of the application log. An inactive rule silences its domain at every level.
class ZR_EXPORT ZRApplicationLogRule {
public:
    ZRApplicationLogRule() = default;
    ZRApplicationLogRule(std::string domain, uint32_t threshold);
    // A rule from its state dictionary; keys that are absent keep the values of a new rule.
    explicit ZRApplicationLogRule(const ZRDictionary& state);

    // The three keys "active" (boolean), "domain" (string) and "threshold" (unsigned integer).
    ZRDictionary state() const;
    // Applies each of the three keys that is present and leaves the other fields as they are.
    void setState(const ZRDictionary& state);

    bool active() const noexcept { return _active; }
    void setActive(bool active) noexcept { _active = active; }
    const std::string& domain() const noexcept { return _domain; }
    void setDomain(std::string domain) { _domain = std::move(domain); }
    uint32_t threshold() const noexcept { return _threshold; }
    void setThreshold(uint32_t threshold) noexcept { _threshold = threshold; }

    bool operator==(const ZRApplicationLogRule&) const = default;

private:
    bool _active = true;
    std::string _domain;
    uint32_t _threshold = 0;
};
