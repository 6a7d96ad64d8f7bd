#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>

// An object of the responder chain: it performs the actions (selectors) registered with it and hands the search
// for any other action on to its next responder.
class ZR_EXPORT ZRResponder {
public:
    // An action takes one dictionary argument, as command URLs deliver it.
    using Action = std::function<void(const ZRDictionary&)>;

    ZRResponder() = default;
    virtual ~ZRResponder();
    ZRResponder(const ZRResponder&) = delete;
    ZRResponder& operator=(const ZRResponder&) = delete;

    // The responder asked next; not owned, null at the end of the chain.
    ZRResponder* nextResponder() const noexcept { return _nextResponder; }
    void setNextResponder(ZRResponder* responder) noexcept { _nextResponder = responder; }

    // Makes this responder perform the selector (the name as it stands, e.g. "showStatistics:"); an empty action
    // removes it.
    void registerAction(std::string selector, Action action);
    bool respondsToSelector(std::string_view selector) const;
    // Performs a registered selector with the argument; false when this responder has none of that name.
    bool performAction(std::string_view selector, const ZRDictionary& argument) const;

private:
    ZRResponder* _nextResponder = nullptr;
    std::map<std::string, Action, std::less<>> _actions;
};
