#pragma once

#include <zrbase/host/foundation/ZRExport.h>

namespace ZRExtension {

// Whether the caller runs on the main thread: the thread that loaded the library, which is the one that runs
// the program's main function.
ZR_EXPORT bool isInMainThread() noexcept;

}
