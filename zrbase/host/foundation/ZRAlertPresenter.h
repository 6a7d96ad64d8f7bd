#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// What a modal alert shows: a bold title, an informative text and its buttons, the first one the default.
struct ZRAlert {
    std::string messageText;
    std::string informativeText;
    std::vector<std::string> buttons;
};

// Responses of a modal alert: the first button answers 1000, the second 1001, and so on.
inline constexpr int ZRAlertFirstButtonReturn = 1000;

// Puts alerts in front of the user. The library shows every alert through the current presenter; applications
// with a window system install their own (zrbase-ui has one over QMessageBox), tests install recording ones.
class ZR_EXPORT ZRAlertPresenter {
public:
    virtual ~ZRAlertPresenter() = default;
    // Shows the alert modally and answers the button chosen (ZRAlertFirstButtonReturn + index).
    virtual int runModal(const ZRAlert& alert) = 0;

    // The presenter in use: the console presenter until another is installed.
    static ZRAlertPresenter& current();
    // Installs a presenter; null restores the console presenter. Answers the one it replaces.
    static std::shared_ptr<ZRAlertPresenter> setCurrent(std::shared_ptr<ZRAlertPresenter> presenter);
};

// Prints the title, the text and the numbered buttons; when its input is a terminal it reads the number of the
// button chosen, otherwise it answers the first button at once.
class ZR_EXPORT ZRConsoleAlertPresenter : public ZRAlertPresenter {
public:
    ZRConsoleAlertPresenter(std::FILE* output = stderr, std::FILE* input = stdin);
    int runModal(const ZRAlert& alert) override;

private:
    std::FILE* _output;
    std::FILE* _input;
};
