#include <zrbase/file/ZRFileManagerHandler.h>

#include <zrbase/core/ZRApplicationLog.h>
#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <system_error>

ZRFileManagerHandler::ZRFileManagerHandler(std::string action)
    : _action(std::move(action))
{
}

bool ZRFileManagerHandler::shouldProceedAfterError(const ZRDictionary& errorInfo)
{
    const ZRPropertyList* entry = ZRDictionaryObject(errorInfo, "Error");
    const std::string reason = entry && entry->string() ? *entry->string() : std::string();
    std::string message = ZRStringWithFormat(ZRLocalizedString("%@ failed because %@"), _action, reason);
    if (ZRApplicationLog* log = ZRApplicationLog::existingLog())
        log->log(ZRLogLevelError, nullptr, "%@", message);

    // Code -1 has no row in the file table: the error carries its own sentence and reason.
    ZRDictionary userInfo;
    userInfo.emplace(ZRLocalizedDescriptionKey, std::move(message));
    userInfo.emplace(ZRLocalizedFailureReasonErrorKey, reason);
    _error = ZRFileError::errorWithUserInfo(-1, std::move(userInfo));
    return false;
}

ZRDictionary ZRFileManagerHandler::errorInfoForCode(int code, std::string_view path)
{
    ZRDictionary errorInfo;
    errorInfo.emplace("Error", std::generic_category().message(code));
    errorInfo.emplace("Path", std::string(path));
    return errorInfo;
}
