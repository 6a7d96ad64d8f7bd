#include "support/ZRRecordingAlertPresenter.h"
#include <zrbase/core/ZRAudioBufferError.h>
#include <zrbase/core/ZRAudioStreamDescriptionError.h>
#include <zrbase/core/ZRCircularAudioBufferError.h>
#include <zrbase/core/ZRConverterError.h>
#include <zrbase/core/ZRCoreAudioFileError.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/core/ZRFileError.h>
#include <zrbase/core/ZROSError.h>
#include <zrbase/core/ZRProgressError.h>
#include <zrbase/core/ZRSecurityError.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <stdexcept>

namespace {

template <typename Error> std::string reason(int32_t code)
{
    return Error::errorWithCode(code, "Testing")->localizedFailureReason().value_or("none");
}

// An application's own domain, with recovery options, remembering the button its alert answered.
class TakeError : public ZRErrorDomain<TakeError> {
public:
    static constexpr const char* className = "TakeError";
    static std::string errorDomain() { return "TakeErrorDomain"; }
    static std::optional<std::string> failureReasonForError(int32_t) { return "the take was too short."; }
    static std::string alertMessage() { return "A take error occurred"; }
    static std::optional<std::vector<std::string>> recoveryOptions()
    {
        return std::vector<std::string> { "Record Again", "Keep" };
    }
    void attemptRecoveryOption(uint32_t index) const override { chosenOption = index; }

    inline static uint32_t chosenOption = 99;

protected:
    using ZRErrorDomain::ZRErrorDomain;
    friend class ZRErrorDomain<TakeError>;
};

}

TEST(ZRError, everyDomainComposesItsSentenceFromItsOwnTable)
{
    // The library's buffers report with the audio-buffer codes on the base class, which knows none of them.
    ZRErrorPtr error = ZRError::errorWithCode(6, "Copying a buffer range");
    EXPECT_EQ(error->domain(), "ZRErrorDomain");
    EXPECT_EQ(error->code(), 6);
    EXPECT_EQ(error->localizedDescription(), "Copying a buffer range failed because an undefined error occurred: 6");
    EXPECT_EQ(error->className(), std::string("ZRError"));

    auto fileError = ZRFileError::errorWithCode(9, "Reading from a file");
    EXPECT_EQ(fileError->domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(fileError->errorClass().name, std::string("ZRFileError"));
    EXPECT_EQ(fileError->localizedDescription(),
        "Reading from a file failed because a bad file descriptor was given. (EBADF)");
    EXPECT_EQ(
        *fileError->userInfo().at("NSLocalizedFailureReason").string(), "a bad file descriptor was given. (EBADF)");
    EXPECT_EQ(reason<ZRFileError>(5), "an undefined error occurred. (5)");
    EXPECT_EQ(reason<ZRFileError>(2), "the file or directory was not found. (ENOENT)");
    EXPECT_EQ(reason<ZRError>(5), "an undefined error occurred: 5");

    EXPECT_EQ(reason<ZRCoreAudioFileError>(-39), "an attempt was made to read past the end of a file.");
    EXPECT_EQ(reason<ZRCoreAudioFileError>(-43), "the audio file was not found.");
    EXPECT_EQ(reason<ZRCoreAudioFileError>(0x6F66663F), "the file does not allow a 64-bit data size.");
    EXPECT_EQ(reason<ZRCoreAudioFileError>(-50), "an undefined error occurred: -50");
    EXPECT_EQ(reason<ZROSError>(-2048), "no valid movie was found.");
    EXPECT_EQ(reason<ZRSecurityError>(-60007), "the authorization was denied since no user interaction was possible.");
    EXPECT_EQ(reason<ZRSecurityError>(-60008), "an authorization for this operation was not able to be obtained.");
    EXPECT_EQ(reason<ZRSecurityError>(-60012), "an undefined error occurred: -60012");
    EXPECT_EQ(reason<ZRConverterError>(0x666D743F), "the format is not supported.");
    EXPECT_EQ(reason<ZRConverterError>(0x6F703F3F), "the operation is not supported.");
    EXPECT_EQ(reason<ZRAudioStreamDescriptionError>(0x21646174), "the format is not supported.");
    EXPECT_EQ(reason<ZRAudioStreamDescriptionError>(0x666D743F), "an undefined error occurred: 1718449215");
    EXPECT_EQ(reason<ZRAudioBufferError>(8), "the buffer list was not built.");
    EXPECT_EQ(reason<ZRCircularAudioBufferError>(7),
        "the sample range requested hasn't been added to the circular buffer yet.");
    EXPECT_EQ(reason<ZRCircularAudioBufferError>(99), "an unknown error occurred.");
    EXPECT_EQ(reason<ZRProgressError>(-1001), "the progress was aborted.");

    const std::pair<std::string, std::string> domains[] = {
        { ZROSError::errorDomain(), "NSOSStatusErrorDomain" },
        { ZRSecurityError::errorDomain(), "NSSecurityErrorDomain" },
        { ZRAudioBufferError::errorDomain(), "ZRAudioBufferErrorDomain" },
        { ZRAudioStreamDescriptionError::errorDomain(), "ZRAudioStreamDescriptionErrorDomain" },
        { ZRConverterError::errorDomain(), "ZRConverterErrorDomain" },
        { ZRCoreAudioFileError::errorDomain(), "ZRCoreAudioFileErrorDomain" },
        { ZRProgressError::errorDomain(), "ZRProgressErrorDomain" },
    };
    for (const auto& [domain, expected] : domains)
        EXPECT_EQ(domain, expected);
    EXPECT_EQ(ZRCircularAudioBufferError::alertMessage(), ZRAudioBufferError::alertMessage());
}

TEST(ZRError, aCodeWithoutReasonRaisesInvalidArgument)
{
    EXPECT_THROW(ZRFileError::errorWithCode(-1, "Synchronizing a file"), std::invalid_argument);
    EXPECT_THROW(ZRAudioBufferError::errorWithCode(9, "Mixing buffers"), std::invalid_argument);
    EXPECT_THROW(ZRProgressError::errorWithCode(-1002, "Exporting"), std::invalid_argument);

    // Code -1 of the file domain is for errors that bring their own reason.
    auto handlerError = ZRFileError::errorWithUserInfo(-1, { { "NSLocalizedDescription", "Moving failed." } });
    EXPECT_EQ(handlerError->domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(handlerError->localizedDescription(), "Moving failed.");
}

TEST(ZRError, alertsShowTheClassTitleTheSentenceAndTheRecoveryOptions)
{
    ZRRecordingAlertPresenter presenter(ZRAlertFirstButtonReturn + 1);
    ZRFileError::errorWithCode(28, "Writing to a file")->alert();
    ZRProgressError::errorWithCode(-1000, "Exporting")->alert();
    ZRProgressError::errorWithCode(-1001, "Exporting")->alert();
    ZRFileError::errorWithUserInfo(5, {})->alertWithMessage("Saving failed");
    auto takeError = TakeError::errorWithCode(1, "Recording");
    takeError->alert();

    ASSERT_EQ(presenter.alerts().size(), 3u);
    EXPECT_EQ(presenter.alerts()[0].messageText, "A file error occurred");
    EXPECT_EQ(presenter.alerts()[0].informativeText,
        "Writing to a file failed because there is no space left on the device. (ENOSPC)");
    EXPECT_EQ(presenter.alerts()[0].buttons, std::vector<std::string> { "OK" });
    EXPECT_EQ(presenter.alerts()[1].messageText, "Saving failed");
    EXPECT_EQ(presenter.alerts()[1].informativeText,
        "This error does not have a detailed description: (NSPOSIXErrorDomain error code 5)");

    // The application's own domain gets its own table and title through the inherited constructor.
    EXPECT_EQ(takeError->domain(), "TakeErrorDomain");
    EXPECT_EQ(takeError->localizedDescription(), "Recording failed because the take was too short.");
    EXPECT_EQ(takeError->localizedRecoveryOptions(), (std::vector<std::string> { "Record Again", "Keep" }));
    EXPECT_EQ(presenter.alerts()[2].messageText, "A take error occurred");
    EXPECT_EQ(presenter.alerts()[2].buttons, (std::vector<std::string> { "Record Again", "Keep" }));
    EXPECT_EQ(TakeError::chosenOption, 1u);
}

TEST(ZRError, logWritesTheClassAndSentenceToTheConsole)
{
    testing::internal::CaptureStderr();
    ZRFileError::errorWithCode(2, "Opening a file")->log();
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(output.ends_with(
        "] ZRFileError: Opening a file failed because the file or directory was not found. (ENOENT)\n"))
        << output;
}

TEST(ZRError, theSentenceIsTranslated)
{
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    setenv("LANGUAGE", "de", 1);
    ZRBundle::main().setTextDomain("zrtest");
    ZRBundle::main().setLocalePath(ZR_TEST_BINARY_DIR "/../resources/locale");
    EXPECT_EQ(ZRFileError::errorWithCode(9, ZRLocalizedString("Opening a file"))->localizedDescription(),
        "Das Öffnen einer Datei ist fehlgeschlagen, weil ein ungültiger Dateideskriptor übergeben wurde. (EBADF)");
    std::setlocale(LC_ALL, "C");
}
