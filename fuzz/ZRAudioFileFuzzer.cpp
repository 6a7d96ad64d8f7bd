#include "ZRFuzzAudioFile.h"

#include <cstdio>
#include <unistd.h>

// Outside bytes as an audio file.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "/tmp/ZRAudioFileFuzzer-" + std::to_string(getpid());
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    ZRFuzzReadAudioFile(path, size);
    return 0;
}
