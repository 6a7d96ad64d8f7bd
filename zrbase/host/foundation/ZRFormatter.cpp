#include <zrbase/host/foundation/ZRFormatter.h>

ZRFormatter::~ZRFormatter() = default;

bool ZRFormatter::isPartialStringValid(std::string_view, std::string*, std::string*) const { return true; }
