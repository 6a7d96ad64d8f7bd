#include <zrbase/host/audio/ZRAudioUnit.h>

ZRAudioUnit::~ZRAudioUnit() = default;
