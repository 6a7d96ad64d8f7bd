#pragma once

#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <string>
#include <string_view>

// Turns a failure of a file-management operation (delete, copy, move) into a ZRFileError of code -1 whose
// sentence is "<action> failed because <reason>", the reason being the "Error" entry of the failure's
// information. The operations stop at the first failure.
class ZR_EXPORT ZRFileManagerHandler {
public:
    // The action is the localised sentence of the operation, e.g. "Deleting 'take.aif'".
    explicit ZRFileManagerHandler(std::string action);

    // Makes the error from errorInfo's "Error" entry, writes its sentence to the application log and answers
    // false: the operation does not go on.
    bool shouldProceedAfterError(const ZRDictionary& errorInfo);
    // The failure information of a C library error code: "Error" holds its description, "Path" the path.
    static ZRDictionary errorInfoForCode(int code, std::string_view path);

    const std::string& action() const noexcept { return _action; }
    // The error made at the first failure, or null.
    const ZRErrorPtr& error() const noexcept { return _error; }

private:
    std::string _action;
    ZRErrorPtr _error;
};
