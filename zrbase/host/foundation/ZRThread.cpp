#include <zrbase/host/foundation/ZRThread.h>

#include <pthread.h>

namespace {

pthread_t loadingThread;

// Runs while the program's main thread loads the library, before main().
__attribute__((constructor)) void recordLoadingThread() { loadingThread = pthread_self(); }

}

namespace ZRExtension {

bool isInMainThread() noexcept { return pthread_equal(pthread_self(), loadingThread) != 0; }

}
