#include <zrbase/host/foundation/ZRAlertPresenter.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace {

std::mutex presenterMutex;

std::shared_ptr<ZRAlertPresenter>& installedPresenter()
{
    static std::shared_ptr<ZRAlertPresenter> presenter = std::make_shared<ZRConsoleAlertPresenter>();
    return presenter;
}

}

ZRAlertPresenter& ZRAlertPresenter::current()
{
    const std::lock_guard lock(presenterMutex);
    return *installedPresenter();
}

std::shared_ptr<ZRAlertPresenter> ZRAlertPresenter::setCurrent(std::shared_ptr<ZRAlertPresenter> presenter)
{
    if (!presenter)
        presenter = std::make_shared<ZRConsoleAlertPresenter>();
    const std::lock_guard lock(presenterMutex);
    installedPresenter().swap(presenter);
    return presenter;
}

ZRConsoleAlertPresenter::ZRConsoleAlertPresenter(std::FILE* output, std::FILE* input)
    : _output(output)
    , _input(input)
{
}

int ZRConsoleAlertPresenter::runModal(const ZRAlert& alert)
{
    // An alert without buttons still has one to close it.
    std::vector<std::string> buttons = alert.buttons;
    if (buttons.empty())
        buttons.push_back(ZRLocalizedString("OK"));

    std::string text = alert.messageText + "\n";
    if (!alert.informativeText.empty())
        text += alert.informativeText + "\n";
    for (size_t index = 0; index < buttons.size(); ++index)
        text += ZRStringWithFormat("%zu) %@\n", index + 1, buttons[index]);
    std::fputs(text.c_str(), _output);
    std::fflush(_output);

    if (!_input || !isatty(fileno(_input)))
        return ZRAlertFirstButtonReturn;
    std::fputs(ZRStringWithFormat("[1-%zu]: ", buttons.size()).c_str(), _output);
    std::fflush(_output);
    char answer[32];
    if (!std::fgets(answer, sizeof answer, _input))
        return ZRAlertFirstButtonReturn;
    char* end = nullptr;
    const long choice = std::strtol(answer, &end, 10);
    if (end == answer || choice < 1 || static_cast<size_t>(choice) > buttons.size())
        return ZRAlertFirstButtonReturn;
    return ZRAlertFirstButtonReturn + static_cast<int>(choice - 1);
}
