// A small application on ZRBase: it names itself, switches its debug log on, writes and reads back a data file,
// and shows how a failure reads when it reaches the user.
#include "app/ZRApplication.h"
#include "core/ZRApplicationLog.h"
#include "file/ZRFile.h"
#include "host/foundation/ZRBundle.h"
#include "host/foundation/ZRStringWithFormat.h"

#include <cstdio>

int main(int argc, char** argv)
{
    ZRBundle::main().setInfoDictionary({ { "CFBundleName", "Example" }, { "CFBundleShortVersionString", "1.0" },
        { "CFBundleVersion", "100" }, { "CFBundleSignature", "ZREX" } });
    ZRApplication application;
    application.finishLaunching();
    ZRApplicationLog::create();
    ZRApplicationLog::setActive(true);
    ZRApplicationLog::setThreshold(ZRLogLevelInfo, "Example");

    std::puts(ZRStringWithFormat(
        "%@ (code %@), support folder %@", application.name(), application.code(), application.supportDirectory())
                  .c_str());

    // A data file of the application: a header word and a take number, read back by position.
    ZRErrorPtr error;
    const std::string folder = application.tempDirectory();
    const std::string path = folder + "/takes.dat";
    if (!ZRFile::createDirectoryAtPath(folder, &error) || !ZRFile::createFileAtPath(path, &error)) {
        error->alert();
        return 1;
    }
    auto file = ZRFile::fileWithPath(path, &error);
    if (!file) {
        error->alert();
        return 1;
    }
    file->deleteOnDestruction();
    file->writeIntValue(0x54414B45);
    file->writeLongLongValue(42);
    file->synchronize();
    std::puts(ZRStringWithFormat("%@: %qi bytes, take %qi", path, file->length(), file->readLongLongValueAtPosition(4))
                  .c_str());
    ZRApplicationLog::info(ZR_LOG_CONTEXT("Example", &application), "wrote take %d to %@", 42, path);

    // A failure as the user sees it; the sentence also went to the log at error level.
    const std::string missing = argc > 1 ? argv[1] : "/nonexistent/take.aif";
    if (!ZRFile::fileWithPath(missing, &error))
        std::puts(ZRStringWithFormat("%@: %@", error->className(), error->localizedDescription().value_or("")).c_str());

    const std::string logPath = ZRApplicationLog::sharedLog() ? ZRApplicationLog::sharedLog()->path().value_or("") : "";
    ZRApplicationLog::dispose();
    std::puts(ZRStringWithFormat("log: %@", logPath).c_str());
    return 0;
}
