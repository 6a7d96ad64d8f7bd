#include <zrbase/core/ZRApplicationLogRule.h>

namespace {

const char* const ZRRuleActiveKey = "active";
const char* const ZRRuleDomainKey = "domain";
const char* const ZRRuleThresholdKey = "threshold";

}

ZRApplicationLogRule::ZRApplicationLogRule(std::string domain, uint32_t threshold)
    : _domain(std::move(domain))
    , _threshold(threshold)
{
}

ZRApplicationLogRule::ZRApplicationLogRule(const ZRDictionary& state) { setState(state); }

ZRDictionary ZRApplicationLogRule::state() const
{
    return { { ZRRuleActiveKey, _active }, { ZRRuleDomainKey, _domain }, { ZRRuleThresholdKey, _threshold } };
}

void ZRApplicationLogRule::setState(const ZRDictionary& state)
{
    if (const ZRPropertyList* active = ZRDictionaryObject(state, ZRRuleActiveKey))
        _active = active->boolValue();
    if (const ZRPropertyList* domain = ZRDictionaryObject(state, ZRRuleDomainKey))
        _domain = domain->stringValue();
    if (const ZRPropertyList* threshold = ZRDictionaryObject(state, ZRRuleThresholdKey))
        _threshold = threshold->unsignedIntValue();
}
