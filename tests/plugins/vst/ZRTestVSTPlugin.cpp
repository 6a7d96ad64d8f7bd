// A VST 2 plug-in of the tests' own, built once per behaviour (ZR_TEST_VST_<kind>): a well-behaved effect, an
// instrument found through the legacy entry point "main", an effect that cannot process in place, an entry point
// that returns no effect, an effect whose name call answers 2, and effects that crash, hang or end the process
// when opened.
#include <zrbase/plugins/ZRVSTInterface.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

intptr_t answerName(void* pointer, const char* text, intptr_t answer)
{
    std::strcpy(static_cast<char*>(pointer), text);
    return answer;
}

intptr_t dispatch(AEffect*, int32_t opcode, int32_t, intptr_t, void* pointer, float)
{
    switch (opcode) {
    case ZRVST::effOpen:
#if defined(ZR_TEST_VST_crashinopen)
        std::raise(SIGSEGV);
#elif defined(ZR_TEST_VST_hangs)
        for (;;)
            pause();
#elif defined(ZR_TEST_VST_exits)
        std::exit(0);
#endif
        // Chatter on standard output must not reach the host's description.
        std::printf("<plist>garbage</plist>\n");
        std::fflush(stdout);
        return 0;
    case ZRVST::effGetProductString:
        return answerName(pointer, "Test Product", 1);
    case ZRVST::effGetVendorString:
        return answerName(pointer, "Test Vendor", 1);
    case ZRVST::effGetEffectName:
#if defined(ZR_TEST_VST_nameanswers2)
        return answerName(pointer, "Not Taken", 2);
#else
        return answerName(pointer, "Test Effect", 1);
#endif
    default:
        return 0;
    }
}

AEffect makeEffect()
{
    AEffect effect {};
    effect.magic = ZRVST::effectMagic;
    effect.dispatcher = dispatch;
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.flags = ZRVST::effFlagsCanReplacing;
    effect.uniqueID = 0x5A724678; // 'ZrFx'
    effect.version = 1200;
#if defined(ZR_TEST_VST_instrument)
    effect.numInputs = 0;
    effect.flags |= ZRVST::effFlagsIsSynth;
    effect.uniqueID = 0x5A725379; // 'ZrSy'
#elif defined(ZR_TEST_VST_noreplacing)
    effect.flags = 0;
#endif
    return effect;
}

AEffect* entry(ZRVSTHostCallback host)
{
    // A plug-in asks its host for the version first.
    if (host(nullptr, ZRVST::audioMasterVersion, 0, 0, nullptr, 0.0f) != ZRVST::hostVersion)
        return nullptr;
    static AEffect effect = makeEffect();
#if defined(ZR_TEST_VST_nulleffect)
    // Declines to make its effect, as a plug-in missing its licence does.
    static_cast<void>(effect);
    return nullptr;
#else
    return &effect;
#endif
}

}

#if defined(ZR_TEST_VST_instrument)
extern "C" __attribute__((visibility("default"))) AEffect* legacyMain(ZRVSTHostCallback host) __asm__("main");
extern "C" AEffect* legacyMain(ZRVSTHostCallback host) { return entry(host); }
#else
extern "C" __attribute__((visibility("default"))) AEffect* VSTPluginMain(ZRVSTHostCallback host) { return entry(host); }
#endif
