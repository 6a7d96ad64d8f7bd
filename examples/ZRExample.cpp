// A small application on ZRBase: it names itself, switches its debug log on, writes and reads back a data file,
// measures a tone before and after A-weighting, estimates its pitch, and shows how a failure reads when it reaches
// the user.
#include <zrbase/app/ZRApplication.h>
#include <zrbase/audio/ZRFFTBuffer.h>
#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/core/ZRApplicationLog.h>
#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cmath>
#include <cstdio>
#include <numbers>

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

    // A second of a 220 Hz tone with three overtones in two channels, its level as AES17 reads it before and after
    // A-weighting, and the pitch the spectrum suggests.
    constexpr uint32_t rate = 48000;
    auto tone = ZRNativeAudioBuffer::bufferWithChannels(2, rate);
    for (uint32_t channel = 0; channel < 2; ++channel) {
        for (uint32_t frame = 0; frame < rate; ++frame) {
            const double phase = 2 * std::numbers::pi * 220.0 * frame / rate;
            tone->channel(channel)[frame] = float(0.4 * std::sin(phase) + 0.2 * std::sin(2 * phase)
                + 0.1 * std::sin(3 * phase) + 0.05 * std::sin(4 * phase));
        }
    }
    tone->fadeIn();
    auto spectrum = ZRFFTBuffer::bufferWithResolution(14, 3);
    spectrum->analyzeAudioBuffer(*tone);
    const float level = 20 * std::log10(tone->aes17());
    ZRAWeightedFilter weighting;
    weighting.setSampleRate(rate);
    weighting.setActive(true);
    weighting.filter(*tone);
    std::puts(ZRStringWithFormat("tone: %.1f dB AES17, %.1f dB A-weighted, pitch %.1f Hz", level,
        20 * std::log10(tone->aes17()), spectrum->pitchForRate(rate))
                  .c_str());

    // A failure as the user sees it; the sentence also went to the log at error level.
    const std::string missing = argc > 1 ? argv[1] : "/nonexistent/take.aif";
    if (!ZRFile::fileWithPath(missing, &error))
        std::puts(ZRStringWithFormat("%@: %@", error->className(), error->localizedDescription().value_or("")).c_str());

    const std::string logPath = ZRApplicationLog::sharedLog() ? ZRApplicationLog::sharedLog()->path().value_or("") : "";
    ZRApplicationLog::dispose();
    std::puts(ZRStringWithFormat("log: %@", logPath).c_str());
    return 0;
}
