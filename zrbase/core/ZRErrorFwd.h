#pragma once

#include <memory>

// The error slot alone, for headers whose operations only pass errors on: `ZRErrorPtr* error = nullptr`. Code
// that builds, reads or shows an error includes ZRError.h.
class ZRError;
using ZRErrorPtr = std::shared_ptr<const ZRError>;
