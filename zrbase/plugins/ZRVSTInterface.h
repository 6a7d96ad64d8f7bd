#pragma once

// The binary interface of VST 2 plug-ins, written from its published layout: the effect record a plug-in's entry
// point returns, the host callback it is given, and the opcodes and flags this library uses. Natural alignment of
// the platform, the C calling convention.

#include <cstdint>

struct AEffect;

using ZRVSTDispatcher
    = intptr_t (*)(AEffect* effect, int32_t opcode, int32_t index, intptr_t value, void* pointer, float option);
using ZRVSTHostCallback = ZRVSTDispatcher;
using ZRVSTProcess = void (*)(AEffect* effect, float** inputs, float** outputs, int32_t frames);
using ZRVSTProcessDouble = void (*)(AEffect* effect, double** inputs, double** outputs, int32_t frames);
// "VSTPluginMain", and "main" in older plug-ins.
using ZRVSTEntryPoint = AEffect* (*)(ZRVSTHostCallback host);

struct AEffect {
    int32_t magic; // 'VstP'
    ZRVSTDispatcher dispatcher;
    ZRVSTProcess process; // accumulating, no longer used
    void (*setParameter)(AEffect* effect, int32_t index, float value);
    float (*getParameter)(AEffect* effect, int32_t index);
    int32_t numPrograms;
    int32_t numParams;
    int32_t numInputs;
    int32_t numOutputs;
    int32_t flags;
    intptr_t reserved1;
    intptr_t reserved2;
    int32_t initialDelay;
    int32_t realQualities;
    int32_t offQualities;
    float ioRatio;
    void* object;
    void* user;
    int32_t uniqueID;
    int32_t version;
    ZRVSTProcess processReplacing;
    ZRVSTProcessDouble processDoubleReplacing;
    char future[56];
};

namespace ZRVST {

inline constexpr int32_t effectMagic = 0x56737450; // 'VstP'

// Flags of the effect record.
inline constexpr int32_t effFlagsHasEditor = 1 << 0;
inline constexpr int32_t effFlagsCanReplacing = 1 << 4;
inline constexpr int32_t effFlagsProgramChunks = 1 << 5;
inline constexpr int32_t effFlagsIsSynth = 1 << 8;

// Opcodes the host sends through the dispatcher.
inline constexpr int32_t effOpen = 0;
inline constexpr int32_t effClose = 1;
inline constexpr int32_t effGetEffectName = 45;
inline constexpr int32_t effGetVendorString = 47;
inline constexpr int32_t effGetProductString = 48;

// Opcodes the plug-in sends through the host callback.
inline constexpr int32_t audioMasterVersion = 1;
inline constexpr intptr_t hostVersion = 2400;

// The longest strings the three name calls may write, with their terminating zero.
inline constexpr int32_t maxEffectNameLength = 32;
inline constexpr int32_t maxVendorStringLength = 64;
inline constexpr int32_t maxProductStringLength = 64;

}

static_assert(sizeof(void*) != 8 || sizeof(AEffect) == 192, "the effect record has the published 64-bit layout");
