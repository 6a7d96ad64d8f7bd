#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <string_view>

// Stack traces for reports of what went wrong.
namespace ZRExtension {

// The return addresses of the calling thread's stack, the caller's first, in hexadecimal and separated by two
// blanks: the form in which an exception's "NSStackTraceKey" entry records where it was raised.
ZR_EXPORT std::string stackTraceAddresses();
// The calling thread's stack, symbolised as stackTrace(addresses) does.
ZR_EXPORT std::string stackTrace();
// Recorded return addresses (hexadecimal, separated by blanks) symbolised, one frame a line: "function (in module)
// (file:line)" where addr2line finds the module's debug information (without the line where it has none),
// "function (in module) + offset" where only the module's exported symbols know the address, "address (in module)"
// or the address alone otherwise; words that are no address stay as they are. Text that holds nothing gives "No
// stack trace was available." in the user's language.
ZR_EXPORT std::string stackTrace(std::string_view addresses);

}
