#pragma once

#include <string>

// The path of the item a path names, without trailing slashes ("/" stays). For "…/link/" the kernel would follow the
// link to the folder it points to; the file operations act on the link itself instead, so that deleting, moving or
// copying an item never reaches through it to something else.
inline std::string ZRFileItemPath(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}
