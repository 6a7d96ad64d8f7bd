#include "ToolError.h"

#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

namespace zr {

ZRErrorPtr toolError(std::string_view action, std::string_view reason)
{
    ZRDictionary userInfo;
    userInfo.emplace(ZRLocalizedDescriptionKey,
        ZRStringWithFormat(ZRLocalizedString("%@ failed because %@"), std::string(action), std::string(reason)));
    userInfo.emplace(ZRLocalizedFailureReasonErrorKey, std::string(reason));
    return ZRFileError::errorWithUserInfo(-1, std::move(userInfo));
}

std::string sentence(const ZRErrorPtr& error)
{
    if (!error)
        return "an unknown failure";
    return error->localizedDescription().value_or(error->domain() + " " + std::to_string(error->code()));
}

}
