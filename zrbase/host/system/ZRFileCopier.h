#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <string>
#include <system_error>

// Copies what a file manager copies: a regular file with its holes, a folder with everything in it, a symbolic
// link as a link. Permissions, modification and access times and the user extended attributes (Finder
// information among them) go along where the destination's file system keeps them. The data moves inside the
// kernel (copy_file_range) or through one fixed buffer, so memory stays bounded whatever the size.
class ZR_EXPORT ZRFileCopier {
public:
    // Copies the item at source to destination, where nothing may exist yet (file_exists otherwise). A folder is
    // never copied into itself (invalid_argument); devices, pipes and sockets are not copied (not_supported). On
    // failure whatever was made at the destination is removed again, and the first failure's code answered.
    static std::error_code copyItem(const std::string& source, const std::string& destination);
};
