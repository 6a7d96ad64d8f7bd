#include <zrbase/plugins/ZRVSTDescription.h>

#include "support/ZRTestFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

namespace {

std::string plugin(const char* kind) { return std::string(ZR_TEST_VST_DIR) + "/" + kind + ".so"; }

}

TEST(ZRVSTDescription, stateNameAndTheFieldsAFreshDescriptionWrites)
{
    ZRVSTDescription description;
    ZRDictionary state = description.state();
    std::vector<std::string> keys;
    for (const auto& [key, value] : state)
        keys.push_back(key);
    EXPECT_EQ(keys,
        (std::vector<std::string> { "ignore", "inputChannels", "isSynth", "outputChannels", "uniqueID", "version" }));

    description.setPath("/plugins/Reverb Deluxe.so");
    EXPECT_EQ(description.name(), "Reverb Deluxe");
    description.setProductName("");
    description.setEffectName("");
    EXPECT_EQ(description.name(), "Reverb Deluxe");
    description.setProductName("Product");
    EXPECT_EQ(description.name(), "Product");
    description.setEffectName("Effect");
    EXPECT_EQ(description.name(), "Effect");

    description.setIdentifier("id-1");
    description.setComputerCode("host");
    description.setModificationDate(ZRDate(std::chrono::seconds(1700000000)));
    description.setVendorName("Vendor");
    description.setUniqueID(0xFFFFFFF0);
    description.setVersion(2400);
    description.setInstrument(true);
    description.setInputChannels(1);
    description.setOutputChannels(6);
    description.setIgnore(true);
    state = description.state();
    EXPECT_EQ(state.at("isSynth"), ZRPropertyList(true));
    EXPECT_EQ(state.at("uniqueID").unsignedIntValue(), 0xFFFFFFF0u);
    EXPECT_EQ(ZRVSTDescription::descriptionWithState(state), description);

    // Keys that are absent leave their fields alone.
    ZRVSTDescription partial = description;
    partial.setState({ { "version", 7 }, { "ignore", false } });
    EXPECT_EQ(partial.version(), 7u);
    EXPECT_FALSE(partial.ignore());
    EXPECT_EQ(partial.effectName(), "Effect");
}

TEST(ZRVSTDescription, loadProbesInProcess)
{
    ZRVSTDescription effect = ZRVSTDescription::descriptionWithPath(plugin("effect"));
    ASSERT_TRUE(effect.modificationDate());
    effect.load();
    EXPECT_FALSE(effect.ignore());
    EXPECT_EQ(effect.uniqueID(), 0x5A724678u);
    EXPECT_EQ(effect.version(), 1200u);
    EXPECT_EQ(effect.inputChannels(), 2u);
    EXPECT_EQ(effect.outputChannels(), 2u);
    EXPECT_FALSE(effect.isInstrument());
    EXPECT_EQ(effect.productName(), "Test Product");
    EXPECT_EQ(effect.vendorName(), "Test Vendor");
    EXPECT_EQ(effect.effectName(), "Test Effect");

    // Found through the legacy entry point.
    ZRVSTDescription instrument = ZRVSTDescription::descriptionWithPath(plugin("instrument"));
    instrument.load();
    EXPECT_FALSE(instrument.ignore());
    EXPECT_TRUE(instrument.isInstrument());
    EXPECT_EQ(instrument.inputChannels(), 0u);
    EXPECT_EQ(instrument.uniqueID(), 0x5A725379u);

    ZRVSTDescription unnamed = ZRVSTDescription::descriptionWithPath(plugin("nameanswers2"));
    unnamed.load();
    EXPECT_FALSE(unnamed.ignore());
    EXPECT_EQ(unnamed.effectName(), std::nullopt);
    EXPECT_EQ(unnamed.name(), "Test Product");

    // Unusable plug-ins are ignored and keep their other fields.
    for (const char* kind : { "noreplacing", "nulleffect" }) {
        ZRVSTDescription description = ZRVSTDescription::descriptionWithPath(plugin(kind));
        description.setVersion(99);
        description.load();
        EXPECT_TRUE(description.ignore()) << kind;
        EXPECT_EQ(description.version(), 99u) << kind;
    }
    ZRVSTDescription missing = ZRVSTDescription::descriptionWithPath("/nonexistent/plugin.so");
    missing.load();
    EXPECT_TRUE(missing.ignore());

    ZRVSTDescription empty;
    empty.setPath("");
    empty.load();
    EXPECT_FALSE(empty.ignore());

    // A bundle folder holding the shared object.
    const std::string bundle = ZRTestScratchFolder("VSTBundle") + "/Effect.vst";
    std::filesystem::create_directories(bundle + "/Contents/x86_64-linux");
    std::filesystem::copy_file(plugin("effect"), bundle + "/Contents/x86_64-linux/Effect.so");
    ZRVSTDescription bundled = ZRVSTDescription::descriptionWithPath(bundle);
    bundled.load();
    EXPECT_FALSE(bundled.ignore());
    EXPECT_EQ(bundled.effectName(), "Test Effect");
}

TEST(ZRVSTDescription, probingOutOfProcessSurvivesWhatThePlugInDoes)
{
    for (const char* kind : { "effect", "instrument", "nameanswers2" }) {
        ZRVSTDescription outside = ZRVSTDescription::descriptionWithPath(plugin(kind));
        outside.setIdentifier("kept");
        ZRVSTDescription inside = outside;
        outside.probe();
        inside.load();
        EXPECT_EQ(outside, inside) << kind;
        EXPECT_FALSE(outside.ignore()) << kind;
    }
    const auto start = std::chrono::steady_clock::now();
    for (const char* kind : { "noreplacing", "nulleffect", "crashinopen", "hangs", "exits" }) {
        ZRVSTDescription description = ZRVSTDescription::descriptionWithPath(plugin(kind));
        description.probe(std::chrono::milliseconds(1500));
        EXPECT_TRUE(description.ignore()) << kind;
        EXPECT_EQ(description.uniqueID(), 0u) << kind;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));

    // A helper that answers garbage, or none at all.
    const std::string tool = ZRVSTDescription::probeToolPath();
    for (const char* stranger : { "/bin/echo", "/nonexistent/zr-plugin-probe" }) {
        ZRVSTDescription::setProbeToolPath(stranger);
        ZRVSTDescription description = ZRVSTDescription::descriptionWithPath(plugin("effect"));
        description.probe();
        EXPECT_TRUE(description.ignore()) << stranger;
    }
    ZRVSTDescription::setProbeToolPath(tool);
}

TEST(ZRVSTDescription, scanningAFolderProbesOnlyWhatChanged)
{
    const std::string folder = ZRTestScratchFolder("VSTScan");
    const std::vector<std::string> kinds { "effect", "instrument", "noreplacing", "crashinopen", "exits" };
    for (const std::string& kind : kinds)
        std::filesystem::copy_file(plugin(kind.c_str()), folder + "/" + kind + ".so");
    std::filesystem::create_directories(folder + "/notes");

    size_t probed = 0;
    std::vector<ZRVSTDescription> scan = ZRVSTDescription::scanFolder(folder, {}, 3, std::chrono::seconds(5), &probed);
    EXPECT_EQ(probed, kinds.size());
    ASSERT_EQ(scan.size(), kinds.size());
    std::vector<std::pair<std::string, bool>> ignored;
    for (const ZRVSTDescription& description : scan)
        ignored.emplace_back(description.name(), description.ignore());
    EXPECT_EQ(ignored,
        (std::vector<std::pair<std::string, bool>> { { "crashinopen", true }, { "Test Effect", false },
            { "exits", true }, { "Test Effect", false }, { "noreplacing", true } }));

    std::vector<ZRVSTDescription> again
        = ZRVSTDescription::scanFolder(folder, scan, 3, std::chrono::seconds(5), &probed);
    EXPECT_EQ(probed, 0u);
    EXPECT_EQ(again, scan);

    // A plug-in replaced with a newer one is probed again, and only that one.
    std::filesystem::remove(folder + "/noreplacing.so");
    std::filesystem::copy_file(plugin("effect"), folder + "/noreplacing.so");
    std::filesystem::last_write_time(
        folder + "/noreplacing.so", std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
    again = ZRVSTDescription::scanFolder(folder, scan, 3, std::chrono::seconds(5), &probed);
    EXPECT_EQ(probed, 1u);
    EXPECT_FALSE(again[4].ignore());
}
