#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

TEST(ZRLocalizedString, translatesThroughTheApplicationsTextDomainThenTheLibrarys)
{
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Opening a file"); // no domain named yet

    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    setenv("LANGUAGE", "de", 1);
    ZRBundle::main().setTextDomain("zrtest");
    ZRBundle::main().setLocalePath(ZR_TEST_BINARY_DIR "/../resources/locale");
    EXPECT_EQ(ZRLocalizedString("%@ failed because %@"), "%@ ist fehlgeschlagen, weil %@");
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Das Öffnen einer Datei");
    EXPECT_EQ(ZRLocalizedString("Closing a file"), "Closing a file"); // in neither catalogue
    EXPECT_EQ(ZRLocalizedString("Mixing buffers"), "Das Mischen von Puffern"); // the library's
    EXPECT_EQ(ZRLocalizedString(""), "");

    ZRBundle::main().setTextDomain("");
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Das Öffnen einer Datei"); // the library's own
    unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(ZRLocalizedString("Opening a file"), "Opening a file");
}
