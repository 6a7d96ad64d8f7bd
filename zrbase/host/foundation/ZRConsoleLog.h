#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <string_view>

// Writes one line to standard error: "2009-03-14 09:26:53.589 studio[4242:4243] text", the local time with
// milliseconds, the process name, the process and thread ids, the text and a newline. Lines of several threads
// never interleave.
ZR_EXPORT void ZRConsoleLogLine(std::string_view text);

template <typename... Arguments>
void ZRConsoleLog(std::string_view format, const Arguments&... arguments)
{
    ZRConsoleLogLine(ZRStringWithFormat(format, arguments...));
}
