#include <zrbase/app/ZRApplication.h>

#include <zrbase/core/ZRDataExtension.h>
#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

std::string commandURL(ZRDictionary command, std::string_view prefix = "studio://cmd/?")
{
    return std::string(prefix) + ZRExtension::encodeBase64(ZRKeyedArchiver::archivedDataWithRootObject(command));
}

struct VersionedApplication : ZRApplication {
    uint32_t majorVersion() const override { return 2; }
};

}

TEST(ZRApplication, takesNamesFromTheBundleAndFoldersFromTheName)
{
    ZRBundle::main().setInfoDictionary({ { "CFBundleName", "Studio" }, { "CFBundleSignature", "ABCD" } });
    const ZRApplication& application = ZRApplication::shared();
    EXPECT_EQ(application.name(), "Studio");
    EXPECT_EQ(application.code(), "CD");
    const std::string support = std::string(std::getenv("HOME")) + "/Library/Application Support/Velmora/Studio/";
    EXPECT_EQ(application.supportDirectory(), support);
    EXPECT_EQ(application.tempDirectory(), support + "Temp");
    EXPECT_EQ(application.majorVersion(), 0x7FFFFFFFu);
    EXPECT_EQ(application.minorVersion(), 0x7FFFFFFFu);
    EXPECT_FALSE(application.isBetaVersion());
}

TEST(ZRApplication, isSharedFromTheFirstConstructionUntilItsEnd)
{
    ZRApplication& fallback = ZRApplication::shared();
    {
        VersionedApplication application;
        VersionedApplication second;
        EXPECT_EQ(&ZRApplication::shared(), &application);
        EXPECT_EQ(ZRApplication::shared().majorVersion(), 2u);
        ZRApplication::setShared(&second);
        EXPECT_EQ(&ZRApplication::shared(), &second);
    }
    EXPECT_EQ(&ZRApplication::shared(), &fallback);
}

TEST(ZRApplication, stopsModalSessionsWithCodesAndErrors)
{
    ZRApplication application;
    int steps = 0;
    ZRModalSession* session = application.beginModalSession([&] {
        if (++steps == 3)
            application.stopModalWithCode(7);
    });
    EXPECT_EQ(application.runModalSession(session), ZRModalResponseContinue);
    EXPECT_EQ(application.runModal(session), 7);
    EXPECT_EQ(steps, 3);
    application.endModalSession(session);

    // A stop ends the innermost session only.
    ZRModalSession* outer = application.beginModalSession([&] { application.stopModal(); });
    ZRModalSession* inner = application.beginModalSession(
        [&] { application.stopModalWithError(ZRFileError::errorWithCode(2, "Opening a file")); });
    EXPECT_EQ(application.runModal(inner), ZRModalResponseError);
    ASSERT_NE(application.modalError(), nullptr);
    EXPECT_EQ(application.modalError()->code(), 2);
    application.endModalSession(inner);
    EXPECT_EQ(application.modalError(), nullptr);
    EXPECT_EQ(application.runModal(outer), ZRModalResponseStop);
    application.endModalSession(outer);
    EXPECT_EQ(application.runModal(application.beginModalSession()), ZRModalResponseAbort);
}

TEST(ZRApplication, runsOnlyRegisteredOperationsOfCommandURLsAfterLaunching)
{
    ZRApplication application;
    ZRResponder document;
    ZRResponder window;
    window.setNextResponder(&document);
    application.setFirstResponder(&window);
    std::vector<std::string> calls;
    document.registerAction("showStatistics:", [&](const ZRDictionary& command) {
        calls.push_back("document " + *ZRDictionaryObject(command, "take")->string());
    });
    application.registerAction("about:", [&](const ZRDictionary&) { calls.push_back("application"); });
    application.registerClassAction("ZRPreferences", "reset:", [&](const ZRDictionary&) { calls.push_back("class"); });

    const std::string statistics = commandURL({ { "selector", "showStatistics:" }, { "take", "3" } });
    application.openURL(statistics);
    EXPECT_TRUE(calls.empty());
    application.finishLaunching();
    application.openURL(statistics);
    application.openURL(commandURL({ { "selector", "about:" } }, "studio://user@cmd:80/path?"));
    application.openURL(commandURL({ { "selector", "reset:" }, { "class", "ZRPreferences" } }));
    // A class nobody registered leaves the search to the responder chain.
    application.openURL(commandURL({ { "selector", "about:" }, { "class", "NSTask" } }));
    EXPECT_EQ(calls, (std::vector<std::string> { "document 3", "application", "class", "application" }));

    // Percent escapes of the query are undone before the base64 text is read.
    std::string escaped = commandURL({ { "selector", "about:" } });
    for (size_t position = escaped.find('='); position != std::string::npos; position = escaped.find('='))
        escaped.replace(position, 1, "%3D");
    calls.clear();
    application.handleURL(escaped);
    EXPECT_EQ(calls, std::vector<std::string> { "application" });

    calls.clear();
    application.handleURL(commandURL({ { "selector", "showStatistics:" } }, "studio://other/?"));
    application.handleURL(commandURL({ { "selector", "terminate:" } }));
    application.handleURL(commandURL({ { "selector", "showStatistics:" }, { "class", "ZRPreferences" } }));
    application.handleURL(commandURL({ { "class", "ZRPreferences" } }));
    application.handleURL("studio://cmd/?" + ZRExtension::encodeBase64(ZRData { 1, 2, 3 }));
    application.handleURL("studio://cmd/?***");
    application.handleURL("cmd");
    application.handleURL("studio:cmd?selector");
    EXPECT_TRUE(calls.empty());
}
