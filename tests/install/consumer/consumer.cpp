// A program outside the project that uses the installed library.
#include <zrbase/codec/ZRMetadata.h>
#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cstdio>

int main()
{
    auto error = ZRFileError::errorWithCode(2, "Opening a file");
    const std::string expected = "Opening a file failed because the file or directory was not found. (ENOENT)";
    if (error->localizedDescription() != expected) {
        std::fprintf(stderr, "unexpected description\n");
        return 1;
    }
    // The metadata catalogue is found in the installed prefix.
    if (ZRMetadata::titleForKey("title") != "Title") {
        std::fprintf(stderr, "the metadata catalogue is missing\n");
        return 1;
    }
    std::puts(ZRStringWithFormat("%@ (%d)", error->domain(), error->code()).c_str());
    return 0;
}
