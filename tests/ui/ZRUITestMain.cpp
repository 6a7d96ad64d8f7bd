#include <gtest/gtest.h>

#include <QApplication>

// Widgets need the application object; the tests run on the offscreen platform unless told otherwise.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication application(argc, argv);
    QApplication::setOrganizationName("ZRBase");
    QApplication::setApplicationName("zrbase-ui-tests");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
