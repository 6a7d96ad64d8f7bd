#pragma once

#include <zrbase/automation/ZRValueMap.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRGeometry.h>

#include <QImage>

namespace ZRExtension {

// A picture of the curve: white, the curve stroked in dark grey through one point per whole x from 0 to the width
// (truncated), the area under it filled in translucent green, and a grey frame inset by half a pixel. The input
// runs left to right and the output bottom to top. Needs no display.
ZR_EXPORT QImage imageWithSize(const ZRValueMap& map, ZRSize size);

}
