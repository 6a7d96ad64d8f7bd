#include <zrbase/app/ZRResponder.h>

ZRResponder::~ZRResponder() = default;

void ZRResponder::registerAction(std::string selector, Action action)
{
    if (action)
        _actions.insert_or_assign(std::move(selector), std::move(action));
    else
        _actions.erase(selector);
}

bool ZRResponder::respondsToSelector(std::string_view selector) const
{
    return _actions.find(selector) != _actions.end();
}

bool ZRResponder::performAction(std::string_view selector, const ZRDictionary& argument) const
{
    const auto found = _actions.find(selector);
    if (found == _actions.end())
        return false;
    found->second(argument);
    return true;
}
