#include <zrbase/file/ZRFile.h>

#include <zrbase/core/ZRSecurityError.h>
#include <zrbase/file/ZRFilePrivate.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>
#include <zrbase/host/system/ZRPrivilegedTool.h>

#include <filesystem>

namespace {

// Builds the error of a privileged operation, its action filled with the file name without extension.
bool failWithStatus(ZRErrorPtr* error, int32_t status, std::string_view action, const std::string& path)
{
    if (error)
        *error = ZRSecurityError::errorWithCode(status, ZRStringWithFormat(action, ZRExtension::filename(path)));
    return false;
}

// A path as the privileged tools get it. pkexec starts its program in root's home folder, so a relative path is made
// absolute. A path that would still begin with "-" (when the working folder is gone) would be read by the tool as
// an option, "-rf" among them; "./" in front names the same file and is no option. A trailing slash goes, so that
// the tools act on a link and not on the folder it points to.
std::string toolArgument(const std::string& path)
{
    std::error_code code;
    std::string argument = path.empty() ? path : ZRFileItemPath(std::filesystem::absolute(path, code).string());
    if (code)
        argument = ZRFileItemPath(path);
    if (argument.starts_with('-'))
        argument.insert(0, "./");
    return argument;
}

// Runs a privileged tool with "-f" and the paths (the first one names the item in the sentences).
bool runPrivilegedTool(const char* tool, const std::vector<std::string>& paths, std::string_view creationAction,
    std::string_view runAction, ZRErrorPtr* error)
{
    if (const int32_t status = ZRPrivilegedTool::createAuthorization(); status != 0)
        return failWithStatus(error, status, creationAction, paths.front());
    std::vector<std::string> arguments { "-f" };
    for (const std::string& path : paths)
        arguments.push_back(toolArgument(path));
    if (const int32_t status = ZRPrivilegedTool::executeWithPrivileges(tool, arguments); status != 0)
        return failWithStatus(error, status, runAction, paths.front());
    return true;
}

}

bool ZRFile::deleteFileAtPathWithAuthentication(const std::string& path, ZRErrorPtr* error)
{
    return runPrivilegedTool("/bin/rm", { conformPath(path) },
        ZRLocalizedString("Creating the authorization to delete '%@'"), ZRLocalizedString("Removing '%@'"), error);
}

bool ZRFile::copyPathWithAuthentication(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    return runPrivilegedTool("/bin/cp", { conformPath(source), conformPath(destination) },
        ZRLocalizedString("Creating the authorization to copy '%@'"), ZRLocalizedString("Copying '%@'"), error);
}

bool ZRFile::movePathWithAuthentication(const std::string& source, const std::string& destination, ZRErrorPtr* error)
{
    // The creation sentence of the move is not localised, unlike its siblings.
    return runPrivilegedTool("/bin/mv", { conformPath(source), conformPath(destination) },
        "Creating the authorization to move '%@'", ZRLocalizedString("Moving '%@'"), error);
}
