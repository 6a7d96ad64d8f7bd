#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

TEST(ZRLocalizedString, translatesThroughTheMainBundlesTextDomain)
{
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Opening a file"); // no domain named yet

    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    setenv("LANGUAGE", "de", 1);
    ZRBundle::main().setTextDomain("zrtest");
    ZRBundle::main().setLocalePath(ZR_TEST_BINARY_DIR "/../resources/locale");
    EXPECT_EQ(ZRLocalizedString("%@ failed because %@"), "%@ ist fehlgeschlagen, weil %@");
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Das Öffnen einer Datei");
    EXPECT_EQ(ZRLocalizedString("Closing a file"), "Closing a file");
    EXPECT_EQ(ZRLocalizedString(""), "");

    ZRBundle::main().setTextDomain("");
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Opening a file");
    std::setlocale(LC_ALL, "C");
}
