#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// The vectors the library's hot float loops are written in: eight floats, processed four at a time so that four
// independent operations are in flight. On x86-64 each entry point is compiled twice (ZR_VECTOR_CLONES): for AVX2,
// which holds a vector in one register, and for the baseline, which holds it in two; both do the same lane-wise
// arithmetic and so give the same float results. Vectors never pass by value between functions that are not
// inlined, which would make the two builds' calling conventions differ. Elsewhere (aarch64 and others) the
// compiler's generic vector code is built once for the target, NEON included.
using ZRFloat8 = float __attribute__((vector_size(32)));
using ZRInt8 = int32_t __attribute__((vector_size(32)));
inline constexpr size_t ZRLanes = 8;
inline constexpr size_t ZRStep = 4 * ZRLanes;

// An entry point built this way needs a name no other file of the library uses, even inside an anonymous
// namespace: clang gives the resolver that picks the build an external symbol named after the function.
// target_clones exists for x86 only; other targets get the one build. So does a ThreadSanitizer build: the
// loader runs the resolvers that pick a build before the sanitizer's runtime is ready, and its instrumentation
// of them crashes the program at start.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define ZR_VECTOR_CLONES [[gnu::target_clones("avx2", "default")]]
#else
#define ZR_VECTOR_CLONES
#endif

[[gnu::always_inline]] inline void ZRLoad(ZRFloat8& vector, const float* samples) noexcept
{
    std::memcpy(&vector, samples, sizeof vector);
}

[[gnu::always_inline]] inline void ZRStore(float* samples, const ZRFloat8& vector) noexcept
{
    std::memcpy(samples, &vector, sizeof vector);
}

// Runs body(0) … body(3), one call for each vector of a step, written out so that the four stay independent.
template <typename Body> [[gnu::always_inline]] inline void ZRForEachVector(Body body) noexcept
{
    body(0);
    body(1);
    body(2);
    body(3);
}
