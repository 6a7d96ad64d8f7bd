#include "host/audio/ZRAudioUnit.h"

ZRAudioUnit::~ZRAudioUnit() = default;
