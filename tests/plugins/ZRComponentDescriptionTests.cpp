#include <zrbase/plugins/ZRComponentDescription.h>

#include "support/ZRTestFiles.h"
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <unordered_set>

namespace {

constexpr uint32_t aumu = ZRFourCharCode("aumu"), aumf = ZRFourCharCode("aumf"), aufx = ZRFourCharCode("aufx"),
                   augn = ZRFourCharCode("augn");

void writeText(const std::string& path, const std::string& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
}

// An LV2 bundle described by its manifest alone: no binary is needed to be listed.
void writeLV2Bundle(
    const std::string& folder, const std::string& name, const std::string& classes, const std::string& project)
{
    writeText(folder + "/" + name + ".lv2/manifest.ttl",
        "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
        "<http://example.org/plugins/"
            + name + "> a lv2:Plugin" + classes + " ;\n    lv2:binary <" + name + ".so> ;\n    doap:name \"" + name
            + "\"" + (project.empty() ? "" : " ;\n    lv2:project <" + project + ">") + " .\n");
}

// Installs a few LV2 plug-ins and one component bundle, and points the process's registry at them.
void installComponents()
{
    const std::string folder = ZRTestScratchFolder("Components");
    const std::string lv2 = folder + "/lv2", components = folder + "/components";
    writeLV2Bundle(lv2, "synth", ", lv2:InstrumentPlugin", "http://example.org/suite");
    writeLV2Bundle(lv2, "oscillator", ", lv2:OscillatorPlugin", "http://example.org/suite");
    writeLV2Bundle(lv2, "arpeggiator", ", lv2:MIDIPlugin", "http://other.example.net/tools");
    writeLV2Bundle(lv2, "reverb", ", lv2:ReverbPlugin", "");
    ZRDictionary delay { { "type", "aufx" }, { "subtype", "dely" }, { "manufacturer", "Acme" },
        { "name", "Acme: Delay" } };
    ZRDictionary numeric { { "type", ZRFourCharCode("aumu") }, { "subtype", ZRFourCharCode("pian") },
        { "manufacturer", ZRFourCharCode("Acme") }, { "name", "Acme: Piano" } };
    std::filesystem::create_directories(components + "/Acme.component/Contents");
    ASSERT_TRUE(ZRPropertyList(ZRDictionary { { "CFBundleName", "Acme" },
                                   { "AudioComponents", ZRArray { delay, numeric, "not a dictionary" } } })
                    .writeToFile(components + "/Acme.component/Contents/Info.plist"));
    const std::vector<std::string> lv2Path { lv2 }, componentPath { components };
    ZRComponentRegistry::shared().reload(&lv2Path, &componentPath);
}

ZRComponentDescription descriptionOf(uint32_t type, const char (&subtype)[5], const char (&manufacturer)[5])
{
    return ZRComponentDescription({ type, ZRFourCharCode(subtype), ZRFourCharCode(manufacturer), 0, 0 });
}

bool isPrintableCode(uint32_t code, bool capitalFirst)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>(code >> shift);
        const bool capital = c >= 'A' && c <= 'Z';
        if (shift == 24 && capitalFirst != capital)
            return false;
        if (shift != 24 && !((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')))
            return false;
    }
    return true;
}

}

TEST(ZRComponentDescription, classificationEqualityHashAndState)
{
    const ZRComponentDescription dls = descriptionOf(aumu, "dls ", "appl");
    EXPECT_TRUE(dls.isInstrument());
    EXPECT_TRUE(dls.acceptsMIDIInput());
    EXPECT_TRUE(dls.isDLSSynth());
    EXPECT_FALSE(dls.isEffect());
    EXPECT_FALSE(descriptionOf(aumu, "dls ", "Acme").isDLSSynth());

    const ZRComponentDescription midi = descriptionOf(aumf, "arpg", "Acme");
    EXPECT_TRUE(midi.isEffect());
    EXPECT_TRUE(midi.acceptsMIDIInput());
    EXPECT_FALSE(midi.isInstrument());
    EXPECT_TRUE(descriptionOf(aufx, "dely", "Acme").isEffect());
    EXPECT_FALSE(descriptionOf(aufx, "dely", "Acme").acceptsMIDIInput());
    EXPECT_TRUE(descriptionOf(augn, "play", "Acme").isPlayer());

    ZRComponentDescription flagged = midi;
    flagged.description().componentFlags = 3;
    flagged.description().componentFlagsMask = 7;
    EXPECT_EQ(flagged, midi);
    EXPECT_EQ(flagged.hash(), midi.hash());
    EXPECT_EQ(midi.hash(), (ZRFourCharCode("arpg") & 0xFFFFu) + (aumf & 0xFFFF0000u));
    EXPECT_NE(midi, descriptionOf(aumf, "arpg", "Acmf"));
    const std::unordered_set<ZRComponentDescription> set { midi, flagged, dls };
    EXPECT_EQ(set.size(), 2u);

    // The state is the record's 20 bytes in the machine's order.
    const ZRData state = flagged.state();
    ASSERT_EQ(state.size(), 20u);
    uint32_t first;
    std::memcpy(&first, state.data(), 4);
    EXPECT_EQ(first, aumf);
    const ZRComponentDescription restored = ZRComponentDescription::descriptionWithState(state);
    EXPECT_EQ(restored, flagged);
    EXPECT_EQ(restored.description().componentFlagsMask, 7u);
    ZRComponentDescription untouched = midi;
    EXPECT_FALSE(untouched.setState(ZRData(19, 0xFF)));
    EXPECT_EQ(untouched.type(), aumf);
}

TEST(ZRComponentDescription, enumeratesLV2PlugInsAndComponentBundles)
{
    installComponents();
    const std::vector<ZRComponentRegistry::Component> components = ZRComponentRegistry::shared().components();
    std::vector<std::pair<std::string, uint32_t>> listed;
    for (const auto& component : components)
        listed.emplace_back(component.name, component.description.componentType);
    // LV2 plug-ins in the order of their URIs, then the bundle's components in the order of its array.
    EXPECT_EQ(listed,
        (std::vector<std::pair<std::string, uint32_t>> { { "arpeggiator", aumf }, { "oscillator", augn },
            { "reverb", aufx }, { "synth", aumu }, { "Acme: Delay", aufx }, { "Acme: Piano", aumu } }));

    // Codes derived from URI and project: printable, the same project gives the same manufacturer, and a plug-in
    // without project takes its URI's authority.
    const auto& arpeggiator = components[0].description;
    const auto& oscillator = components[1].description;
    const auto& reverb = components[2].description;
    const auto& synth = components[3].description;
    for (const auto& component : components) {
        EXPECT_TRUE(isPrintableCode(component.description.componentManufacturer, true)) << component.name;
        EXPECT_TRUE(isPrintableCode(component.description.componentSubType, false)) << component.name;
    }
    EXPECT_EQ(synth.componentManufacturer, oscillator.componentManufacturer);
    EXPECT_EQ(synth.componentManufacturer, ZRComponentRegistry::manufacturerCode("http://example.org/suite"));
    EXPECT_NE(arpeggiator.componentManufacturer, synth.componentManufacturer);
    EXPECT_EQ(reverb.componentManufacturer, ZRComponentRegistry::manufacturerCode("http://example.org"));
    EXPECT_EQ(synth.componentSubType, ZRComponentRegistry::subtypeCode("http://example.org/plugins/synth"));
    EXPECT_NE(synth.componentSubType, oscillator.componentSubType);
    EXPECT_EQ(components[4].description.componentSubType, ZRFourCharCode("dely"));
    EXPECT_EQ(components[5].description.componentManufacturer, ZRFourCharCode("Acme"));

    const std::vector<ZRComponentDescription> effects = ZRComponentDescription::componentDescriptionsOfType(aufx);
    ASSERT_EQ(effects.size(), 2u);
    EXPECT_EQ(effects[0], ZRComponentDescription(reverb));
    EXPECT_EQ(effects[1], descriptionOf(aufx, "dely", "Acme"));
    EXPECT_EQ(ZRComponentDescription::componentDescriptionsOfType(aumu).size(), 2u);
    EXPECT_TRUE(ZRComponentDescription::componentDescriptionsOfType(ZRFourCharCode("auou")).empty());
}

TEST(ZRComponentDescription, findsTheComponentAlsoFromTheOtherByteOrder)
{
    installComponents();
    ZRComponentDescription delay = descriptionOf(aufx, "dely", "Acme");
    const ZRComponentRegistry::Component* found = delay.component();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->name, "Acme: Delay");

    // A record saved on a machine of the other byte order reads with every member swapped.
    ZRComponentDescription swapped({ __builtin_bswap32(aufx), __builtin_bswap32(ZRFourCharCode("dely")),
        __builtin_bswap32(ZRFourCharCode("Acme")), 0, 0 });
    found = swapped.component();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->name, "Acme: Delay");
    EXPECT_EQ(swapped.type(), aufx);

    // A record found in neither order stays swapped.
    ZRComponentDescription missing = descriptionOf(aufx, "none", "Acme");
    EXPECT_EQ(missing.component(), nullptr);
    EXPECT_EQ(missing.type(), __builtin_bswap32(aufx));
    EXPECT_EQ(missing.subtype(), __builtin_bswap32(ZRFourCharCode("none")));
}
