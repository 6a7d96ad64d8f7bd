#pragma once

#include <zrbase/host/audio/ZRFloatVectorPrivate.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The recursion of a filter is serial within a channel, but channels are independent: up to eight channels run
// side by side, one in each lane of a vector of eight floats, in the same loops the float buffer uses (compiler
// vector extensions; on x86-64 entry points built for AVX2 and for the baseline, see ZR_VECTOR_CLONES). Every lane
// does the operations of the one-channel loop in the same order, and the project is built without contraction into
// fused multiply-adds, so a channel comes out bit for bit the same whichever way it is filtered.
//
// Vectors are passed by reference only, so that the two builds of an entry point agree on how they are passed.

using ZRDouble8 = double __attribute__((vector_size(64)));

constexpr uint32_t ZRFilterLaneCount = ZRLanes;

// Up to eight channels of one buffer, each with its samples and its history, filtered together.
struct ZRFilterLanes {
    float* samples[ZRFilterLaneCount];
    float* history[ZRFilterLaneCount];
    uint32_t used; // lanes 0 … used-1 hold a channel
    uint32_t frames;
};

namespace ZRFilterLoop {

// Rows of eight frames of eight channels become columns of eight channels at one frame, and back: the transpose
// is its own inverse.
[[gnu::always_inline]] inline void transpose(ZRFloat8 (&m)[8]) noexcept
{
    ZRFloat8 t[8], u[8];
#pragma GCC unroll 8
    for (int i = 0; i < 8; i += 2) {
        t[i] = __builtin_shufflevector(m[i], m[i + 1], 0, 8, 1, 9, 4, 12, 5, 13);
        t[i + 1] = __builtin_shufflevector(m[i], m[i + 1], 2, 10, 3, 11, 6, 14, 7, 15);
    }
#pragma GCC unroll 8
    for (int i = 0; i < 8; i += 4) {
        u[i] = __builtin_shufflevector(t[i], t[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
        u[i + 1] = __builtin_shufflevector(t[i], t[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
        u[i + 2] = __builtin_shufflevector(t[i + 1], t[i + 3], 0, 1, 8, 9, 4, 5, 12, 13);
        u[i + 3] = __builtin_shufflevector(t[i + 1], t[i + 3], 2, 3, 10, 11, 6, 7, 14, 15);
    }
#pragma GCC unroll 8
    for (int i = 0; i < 4; ++i) {
        m[i] = __builtin_shufflevector(u[i], u[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        m[i + 4] = __builtin_shufflevector(u[i], u[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
    }
}

// Runs step(state, sample) over every frame of the lanes; the state is `Slots` values per channel, kept in its
// history between calls. Lanes without a channel filter silence into a scratch block, so that their state stays
// where silence leaves it and can never slow the others down with denormal numbers.
template <size_t Slots, typename Step>
[[gnu::always_inline]] inline void runLanes(const ZRFilterLanes& lanes, Step step) noexcept
{
    static constexpr float silence[ZRFilterLaneCount] = {};
    float scratch[ZRFilterLaneCount];
    float scratchHistory[Slots] = {};
    const float* from[ZRFilterLaneCount];
    float* to[ZRFilterLaneCount];
    size_t advance[ZRFilterLaneCount];
    ZRFloat8 state[Slots];
#pragma GCC unroll 8
    for (uint32_t lane = 0; lane < ZRFilterLaneCount; ++lane) {
        const bool used = lane < lanes.used;
        from[lane] = used ? lanes.samples[lane] : silence;
        to[lane] = used ? lanes.samples[lane] : scratch;
        advance[lane] = used ? ZRFilterLaneCount : 0;
        const float* history = used ? lanes.history[lane] : scratchHistory;
        for (size_t slot = 0; slot < Slots; ++slot)
            state[slot][lane] = history[slot];
    }

    const uint32_t frames = lanes.frames;
    uint32_t frame = 0;
    for (; frames - frame >= ZRFilterLaneCount; frame += ZRFilterLaneCount) {
        ZRFloat8 block[8];
#pragma GCC unroll 8
        for (uint32_t lane = 0; lane < ZRFilterLaneCount; ++lane) {
            ZRLoad(block[lane], from[lane]);
            from[lane] += advance[lane];
        }
        transpose(block);
#pragma GCC unroll 8
        for (auto& samples : block)
            step(state, samples);
        transpose(block);
#pragma GCC unroll 8
        for (uint32_t lane = 0; lane < ZRFilterLaneCount; ++lane) {
            ZRStore(to[lane], block[lane]);
            to[lane] += advance[lane];
        }
    }
    for (uint32_t tail = 0; frame + tail < frames; ++tail) {
        ZRFloat8 samples;
#pragma GCC unroll 8
        for (uint32_t lane = 0; lane < ZRFilterLaneCount; ++lane)
            samples[lane] = from[lane][advance[lane] ? tail : 0];
        step(state, samples);
#pragma GCC unroll 8
        for (uint32_t lane = 0; lane < ZRFilterLaneCount; ++lane)
            to[lane][advance[lane] ? tail : 0] = samples[lane];
    }

    for (uint32_t lane = 0; lane < lanes.used; ++lane) {
        for (size_t slot = 0; slot < Slots; ++slot)
            lanes.history[lane][slot] = state[slot][lane];
    }
}

// A lone channel goes sample by sample: in a vector it would take as long, with seven lanes idle. More channels go
// to `vectorised`, a function built with ZR_VECTOR_CLONES around runLanes.
template <size_t Slots, typename Step>
inline void run(const ZRFilterLanes& lanes, const Step& step,
    void (*vectorised)(const ZRFilterLanes&, const Step&) noexcept) noexcept
{
    if (lanes.used != 1) {
        vectorised(lanes, step);
        return;
    }
    float state[Slots];
    std::copy_n(lanes.history[0], Slots, state);
    for (uint32_t frame = 0; frame < lanes.frames; ++frame)
        step(state, lanes.samples[0][frame]);
    std::copy_n(state, Slots, lanes.history[0]);
}

}
