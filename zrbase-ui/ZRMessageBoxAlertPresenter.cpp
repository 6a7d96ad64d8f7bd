#include <zrbase-ui/ZRMessageBoxAlertPresenter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <QMessageBox>
#include <QPushButton>

#include <memory>
#include <vector>

int ZRMessageBoxAlertPresenter::runModal(const ZRAlert& alert)
{
    QMessageBox box;
    box.setIcon(QMessageBox::Warning);
    box.setText(QString::fromStdString(alert.messageText));
    box.setInformativeText(QString::fromStdString(alert.informativeText));
    std::vector<std::string> titles = alert.buttons;
    if (titles.empty())
        titles.push_back(ZRLocalizedString("OK"));
    std::vector<QAbstractButton*> buttons;
    for (const std::string& title : titles)
        buttons.push_back(box.addButton(QString::fromStdString(title), QMessageBox::AcceptRole));
    box.setDefaultButton(static_cast<QPushButton*>(buttons.front()));
    box.exec();
    for (size_t i = 0; i < buttons.size(); ++i)
        if (box.clickedButton() == buttons[i])
            return ZRAlertFirstButtonReturn + static_cast<int>(i);
    return ZRAlertFirstButtonReturn;
}

void ZRMessageBoxAlertPresenter::install()
{
    ZRAlertPresenter::setCurrent(std::make_shared<ZRMessageBoxAlertPresenter>());
}
