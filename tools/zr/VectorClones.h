#pragma once

// Marks a loop to be built for AVX2 and for the baseline, the build picked at load time. target_clones exists for
// x86 only, and a ThreadSanitizer build cannot run the resolver that picks the build.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define ZR_TOOL_VECTOR_CLONES [[gnu::target_clones("avx2", "default")]]
#else
#define ZR_TOOL_VECTOR_CLONES
#endif
