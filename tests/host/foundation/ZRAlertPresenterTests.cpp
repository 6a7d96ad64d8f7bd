#include <zrbase/host/foundation/ZRAlertPresenter.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::string contents(std::FILE* file)
{
    std::rewind(file);
    std::string text;
    for (int character; (character = std::fgetc(file)) != EOF;)
        text.push_back(static_cast<char>(character));
    return text;
}

struct RecordingPresenter : ZRAlertPresenter {
    int runModal(const ZRAlert& alert) override
    {
        shown = alert.messageText;
        return ZRAlertFirstButtonReturn + 1;
    }
    std::string shown;
};

// The answer a console presenter reads from a terminal that was sent `typed`.
int answerFromTerminal(const char* typed)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_GE(master, 0);
    grantpt(master);
    unlockpt(master);
    std::FILE* terminal = std::fopen(ptsname(master), "r");
    EXPECT_NE(terminal, nullptr);
    EXPECT_EQ(write(master, typed, strlen(typed)), static_cast<ssize_t>(strlen(typed)));
    std::FILE* output = std::tmpfile();
    const int answer = ZRConsoleAlertPresenter(output, terminal).runModal({ "Title", "", { "OK", "Cancel", "Retry" } });
    std::fclose(output);
    std::fclose(terminal);
    close(master);
    return answer;
}

}

TEST(ZRAlertPresenter, consolePresenterPrintsTheAlertAndAnswersTheFirstButtonWithoutATerminal)
{
    std::FILE* output = std::tmpfile();
    std::FILE* input = std::tmpfile();
    std::fputs("2\n", input);
    std::rewind(input);
    ZRConsoleAlertPresenter presenter(output, input);
    EXPECT_EQ(presenter.runModal(
                  { "The file could not be saved.", "Writing failed because the disk is full.", { "OK", "Cancel" } }),
        ZRAlertFirstButtonReturn);
    EXPECT_EQ(
        contents(output), "The file could not be saved.\nWriting failed because the disk is full.\n1) OK\n2) Cancel\n");
    EXPECT_EQ(std::fgetc(input), '2'); // the answer was not read

    std::FILE* second = std::tmpfile();
    EXPECT_EQ(ZRConsoleAlertPresenter(second, input).runModal({ "Title", "", {} }), ZRAlertFirstButtonReturn);
    EXPECT_EQ(contents(second), "Title\n1) OK\n");
    std::fclose(second);
    std::fclose(input);
    std::fclose(output);
}

TEST(ZRAlertPresenter, consolePresenterReadsTheButtonNumberFromATerminal)
{
    EXPECT_EQ(answerFromTerminal("2\n"), ZRAlertFirstButtonReturn + 1);
    EXPECT_EQ(answerFromTerminal("3\n"), ZRAlertFirstButtonReturn + 2);
    EXPECT_EQ(answerFromTerminal("4\n"), ZRAlertFirstButtonReturn);
    EXPECT_EQ(answerFromTerminal("no\n"), ZRAlertFirstButtonReturn);
    EXPECT_EQ(answerFromTerminal("\x04"), ZRAlertFirstButtonReturn); // end of input
}

TEST(ZRAlertPresenter, installedPresenterShowsAlertsUntilItIsRemoved)
{
    const auto recorder = std::make_shared<RecordingPresenter>();
    const auto console = ZRAlertPresenter::setCurrent(recorder);
    EXPECT_NE(dynamic_cast<ZRConsoleAlertPresenter*>(console.get()), nullptr);
    EXPECT_EQ(ZRAlertPresenter::current().runModal({ "Shown", "", { "OK" } }), ZRAlertFirstButtonReturn + 1);
    EXPECT_EQ(recorder->shown, "Shown");
    EXPECT_EQ(ZRAlertPresenter::setCurrent(nullptr), recorder);
    EXPECT_NE(dynamic_cast<ZRConsoleAlertPresenter*>(&ZRAlertPresenter::current()), nullptr);
}
