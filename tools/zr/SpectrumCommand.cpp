#include "Commands.h"
#include "FileJobs.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "Spectrogram.h"
#include "SpectrumAccumulator.h"
#include "SpectrumWriter.h"
#include "ToolError.h"

#include <zrbase/audio/ZRFFTBuffer.h>

#include <map>

namespace zr {

// The window names the command takes, and their codes in the FFT buffer.
static const std::map<std::string, uint32_t>& windowCodes()
{
    static const std::map<std::string, uint32_t> codes {
        { "rectangular", ZRFFTBuffer::WindowRectangular },
        { "blackman", ZRFFTBuffer::WindowBlackman },
        { "hamming", ZRFFTBuffer::WindowHamming },
        { "hann", ZRFFTBuffer::WindowHann },
        { "gaussian", ZRFFTBuffer::WindowGaussian },
        { "triangular", ZRFFTBuffer::WindowTriangular },
        { "bartlett-hann", ZRFFTBuffer::WindowBartlettHann },
        { "nuttall", ZRFFTBuffer::WindowNuttall },
        { "blackman-harris", ZRFFTBuffer::WindowBlackmanHarris },
        { "blackman-nuttall", ZRFFTBuffer::WindowBlackmanNuttall },
        { "flat-top", ZRFFTBuffer::WindowFlatTop },
        { "bohman", ZRFFTBuffer::WindowBohman },
    };
    return codes;
}

std::vector<std::string> spectrumWindowNames() { return namesOf(windowCodes()); }

static FileOutcome runSpectrum(const SpectrumOptions& options, ProgressBar& progress)
{
    FileOutcome outcome;
    const std::string type = outputType(options.output, options.type);
    if (type != "png" && (type != "csv" || options.spectrogram)) {
        outcome.error = toolError("Writing the output file",
            "the type of \"" + options.output + "\" is not known (give a .png"
                + (options.spectrogram ? std::string() : " or .csv") + " name, or --type)");
        return outcome;
    }
    const uint32_t window = windowCodes().at(options.window);
    std::unique_ptr<AudioSource> source = AudioSource::open(options.input, options.common.format, &outcome.error);
    if (!source)
        return outcome;
    if (source->frames())
        progress.addTotal(*source->frames());

    std::optional<std::string> bytes;
    if (options.spectrogram) {
        if (!source->frames()) {
            outcome.error
                = toolError("Drawing the spectrogram", "the input's length is not known beforehand (give a file)");
            return outcome;
        }
        std::unique_ptr<Spectrogram> spectrogram = Spectrogram::spectrogramWithResolution(options.resolution, window,
            source->sampleRate(), *source->frames(), options.width ? options.width : 1200,
            options.height ? options.height : 400, &outcome.error);
        if (!spectrogram
            || !readAll(
                *source, &progress, [&](const ZRNativeAudioBuffer& block) { spectrogram->process(block); },
                &outcome.error))
            return outcome;
        spectrogram->finish();
        bytes = spectrogramPng(*spectrogram, options.floorDb, &outcome.error);
    } else {
        std::unique_ptr<SpectrumAccumulator> spectrum = SpectrumAccumulator::accumulatorWithResolution(
            options.resolution, window, source->sampleRate(), &outcome.error);
        if (!spectrum
            || !readAll(
                *source, &progress, [&](const ZRNativeAudioBuffer& block) { spectrum->process(block); },
                &outcome.error))
            return outcome;
        spectrum->finish();
        const std::vector<double> magnitude = spectrum->averageMagnitude();
        if (type == "csv")
            bytes = spectrumCsv(magnitude, spectrum->binWidth());
        else
            bytes = spectrumPng(magnitude, spectrum->binWidth(), options.width ? options.width : 800,
                options.height ? options.height : 400, options.floorDb, &outcome.error);
    }
    if (bytes)
        writeOutputFile(options.output, *bytes, &outcome.error);
    return outcome;
}

int spectrumCommand(const SpectrumOptions& options)
{
    return runSingleFile(options.input, options.common.progress(),
        [&](ProgressBar& progress) { return runSpectrum(options, progress); });
}

}
