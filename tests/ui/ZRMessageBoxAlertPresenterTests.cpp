#include <zrbase-ui/ZRMessageBoxAlertPresenter.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

TEST(ZRMessageBoxAlertPresenter, showsTheAlertAndAnswersTheButtonClicked)
{
    ZRMessageBoxAlertPresenter::install();
    QString text, informative;
    QStringList buttons;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        text = box->text();
        informative = box->informativeText();
        for (QAbstractButton* button : box->buttons())
            buttons << button->text();
        EXPECT_EQ(box->defaultButton()->text(), "Save");
        for (QAbstractButton* button : box->buttons())
            if (button->text() == "Cancel")
                button->click();
    });
    const int answer = ZRAlertPresenter::current().runModal(
        { "The file could not be saved.", "Saving the file failed because the disk is full.", { "Save", "Cancel" } });
    ZRAlertPresenter::setCurrent(nullptr);
    EXPECT_EQ(text, "The file could not be saved.");
    EXPECT_EQ(informative, "Saving the file failed because the disk is full.");
    EXPECT_TRUE(buttons.contains("Save") && buttons.contains("Cancel"));
    EXPECT_EQ(answer, ZRAlertFirstButtonReturn + 1);
}
