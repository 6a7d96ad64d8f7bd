#include "Analyzer.h"
#include "Commands.h"
#include "FileAudioSource.h"
#include "FileJobs.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "SignalChain.h"
#include "ToolError.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/host/audio/ZRAudioConverterService.h>
#include <zrbase/host/audio/ZRAudioFileService.h>
#include <zrbase/host/audio/ZRAudioFormatService.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <unistd.h>

namespace zr {

namespace {

    struct OutputKind {
        AudioFileTypeID container;
        // The data format the container gets unless --format says otherwise.
        AudioFormatID format;
    };

    const std::map<std::string, OutputKind>& outputKinds()
    {
        static const std::map<std::string, OutputKind> kinds {
            { "wav", { kAudioFileWAVEType, kAudioFormatLinearPCM } },
            { "aif", { kAudioFileAIFFType, kAudioFormatLinearPCM } },
            { "aiff", { kAudioFileAIFFType, kAudioFormatLinearPCM } },
            { "aifc", { kAudioFileAIFCType, kAudioFormatLinearPCM } },
            { "caf", { kAudioFileCAFType, kAudioFormatLinearPCM } },
            { "m4a", { kAudioFileM4AType, kAudioFormatMPEG4AAC } },
            { "mp4", { kAudioFileMPEG4Type, kAudioFormatMPEG4AAC } },
            { "mp3", { kAudioFileMP3Type, kAudioFormatMPEGLayer3 } },
            { "ac3", { kAudioFileAC3Type, kAudioFormatAC3 } },
        };
        return kinds;
    }

    const std::map<std::string, AudioFormatID>& formatNames()
    {
        static const std::map<std::string, AudioFormatID> names {
            { "pcm", kAudioFormatLinearPCM },
            { "aac", kAudioFormatMPEG4AAC },
            { "alac", kAudioFormatAppleLossless },
            { "mp3", kAudioFormatMPEGLayer3 },
            { "ac3", kAudioFormatAC3 },
        };
        return names;
    }

    // The tags a conversion carries over: what a listener reads, not what the old container recorded about
    // itself.
    bool isCopiedTag(const std::string& key)
    {
        static const char* const keys[] = { "title", "artist", "album", "genre", "year", "comments", "composer",
            "copyright", "track number", "lyricist", "tempo", "key signature", "time signature", "ISRC" };
        return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
    }

    AudioStreamBasicDescription fileFormatFor(
        AudioFileTypeID container, AudioFormatID formatID, double rate, uint32_t channels, uint32_t bits)
    {
        AudioStreamBasicDescription format {};
        format.mFormatID = formatID;
        format.mChannelsPerFrame = channels;
        format.mSampleRate = rate;
        if (formatID == kAudioFormatLinearPCM) {
            const bool bigEndian = container == kAudioFileAIFFType || container == kAudioFileAIFCType;
            // WAVE keeps 8-bit samples unsigned; 32 bits are float.
            format.mFormatFlags
                = (bits == 32                                            ? kAudioFormatFlagIsFloat
                          : bits == 8 && container == kAudioFileWAVEType ? 0
                                                                         : kAudioFormatFlagIsSignedInteger)
                | (bigEndian && bits > 8 ? kAudioFormatFlagIsBigEndian : 0);
            format.mBitsPerChannel = bits;
        } else if (formatID == kAudioFormatAppleLossless) {
            // The source depth the lossless encoder keeps: 16, 20, 24 or 32 bits.
            format.mFormatFlags = bits == 20 ? 2 : bits == 24 ? 3 : bits == 32 ? 4 : 1;
        }
        ZRAudioFormatService::complete(format);
        return format;
    }

    // A name beside the target, not yet taken, for the output under way.
    std::string temporaryPathFor(const std::string& path)
    {
        static std::atomic<unsigned> counter { 0 };
        const size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
        const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
        return folder + "." + name + ".zr-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    }

    // Copies a finished file to standard output.
    bool copyToStandardOutput(const std::string& path, ZRErrorPtr* error)
    {
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        std::string bytes;
        char chunk[65536];
        ssize_t count = 0;
        while (descriptor >= 0 && (count = ::read(descriptor, chunk, sizeof chunk)) > 0)
            bytes.append(chunk, size_t(count));
        if (descriptor >= 0)
            ::close(descriptor);
        if (descriptor < 0 || count < 0) {
            if (error)
                *error = fileError(errno, "Writing the output file");
            return false;
        }
        return writeOutputFile("-", bytes, error);
    }

    // The gain that brings the processed signal to the normalisation target: a first pass over the input.
    std::optional<double> normalizationGain(
        const ConvertOptions& options, const ChainSettings& settings, ProgressBar& progress, ZRErrorPtr* error)
    {
        std::unique_ptr<AudioSource> source = AudioSource::open(options.input, options.common.format, error);
        if (!source)
            return std::nullopt;
        std::unique_ptr<SignalChain> chain = SignalChain::chainWithSettings(
            settings, source->sampleRate(), source->channels(), source->frames(), error);
        const bool loudness = options.normalize.rfind("loudness", 0) == 0;
        std::unique_ptr<Analyzer> analyzer = chain
            ? Analyzer::analyzerWithFormat(source->sampleRate(),
                settings.outputChannels ? settings.outputChannels : source->channels(), !loudness, error)
            : nullptr;
        if (!analyzer
            || !readAll(
                *source, &progress, [&](const ZRNativeAudioBuffer& block) { analyzer->process(chain->process(block)); },
                error))
            return std::nullopt;
        const AnalysisResult result = analyzer->finish();
        const double measured
            = loudness ? result.integratedLufs : 20.0 * std::log10(std::max(result.overall.peak, 1e-12));
        if (!std::isfinite(measured)) {
            if (error)
                *error = toolError("Normalising the audio", "the input is silent");
            return std::nullopt;
        }
        return options.normalizeTarget - measured;
    }

    FileOutcome runConvert(const ConvertOptions& options, ProgressBar& progress)
    {
        FileOutcome outcome;
        const char* writeAction = "Writing the output file";
        const std::string type = outputType(options.output, options.type);
        const auto kind = outputKinds().find(type);
        if (kind == outputKinds().end()) {
            outcome.error = toolError(writeAction,
                "the type of \"" + options.output
                    + "\" is not known (give a .wav, .aif, .aifc, .caf, .m4a, .mp4, .mp3 or .ac3 name, or --type)");
            return outcome;
        }
        const AudioFormatID formatID = options.format.empty() ? kind->second.format : formatNames().at(options.format);

        std::unique_ptr<AudioSource> source = AudioSource::open(options.input, options.common.format, &outcome.error);
        if (!source)
            return outcome;
        const uint32_t channels = options.channels ? options.channels : source->channels();
        const double rate = options.rate ? double(options.rate) : source->sampleRate();
        ChainSettings settings;
        settings.outputChannels = channels;
        settings.filter = options.filter;
        settings.gainDb = options.gainDb;
        settings.fadeInSeconds = options.fadeInSeconds;
        settings.fadeOutSeconds = options.fadeOutSeconds;
        if (!options.normalize.empty()) {
            if (source->frames())
                progress.addTotal(*source->frames());
            const std::optional<double> gain = normalizationGain(options, settings, progress, &outcome.error);
            if (!gain)
                return outcome;
            settings.gainDb = *gain;
        }
        std::unique_ptr<SignalChain> chain = SignalChain::chainWithSettings(
            settings, source->sampleRate(), source->channels(), source->frames(), &outcome.error);
        if (!chain)
            return outcome;
        if (source->frames())
            progress.addTotal(*source->frames());

        // The tags of the input, where it has any, and those given.
        ZRDictionary tags;
        if (!options.common.format.isRaw()) {
            AudioFileID input = nullptr;
            if (const std::optional<std::string> readable = readablePath(options.input);
                readable && ZRAudioFileService::open(*readable, input) == noErr) {
                ZRDictionary inputTags;
                ZRAudioFileService::infoDictionary(input, inputTags);
                ZRAudioFileService::close(input);
                for (auto& [key, value] : inputTags)
                    if (isCopiedTag(key))
                        tags[key] = value;
            }
        }
        for (const std::string& tag : options.tags) {
            const size_t equals = tag.find('=');
            tags[tag.substr(0, equals)] = ZRPropertyList(tag.substr(equals + 1));
        }

        const uint32_t bits = options.bits ? options.bits : 16;
        const AudioStreamBasicDescription fileFormat
            = fileFormatFor(kind->second.container, formatID, rate, channels, bits);
        const std::string target = options.output == "-" ? "/tmp/zr-output" : options.output;
        const std::string temporary = temporaryPathFor(target);
        ExtAudioFileRef file = nullptr;
        OSStatus status = ZRExtAudioFileService::create(temporary, kind->second.container, fileFormat, file);
        if (status == noErr)
            status
                = ZRExtAudioFileService::setClientDataFormat(file, nativeFloatFormat(source->sampleRate(), channels));
        if (status == noErr && options.bitRate) {
            AudioConverterRef converter = nullptr;
            if (ZRExtAudioFileService::audioConverter(file, converter) == noErr)
                status = ZRAudioConverterService::setBitRate(converter, options.bitRate * 1000);
        }
        if (status == noErr && !tags.empty()) {
            AudioFileID audioFile = nullptr;
            if (ZRExtAudioFileService::audioFile(file, audioFile) == noErr)
                status = ZRAudioFileService::setInfoDictionary(audioFile, tags);
        }
        const auto fail = [&](OSStatus failure) {
            if (file)
                ZRExtAudioFileService::dispose(file);
            ::unlink(temporary.c_str());
            if (!outcome.error)
                outcome.error = failure == noErr ? toolError(writeAction, "the output could not be finished")
                                                 : audioFileError(failure, writeAction);
            return outcome;
        };
        if (status != noErr)
            return fail(status);

        OSStatus writeStatus = noErr;
        if (!readAll(
                *source, &progress,
                [&](const ZRNativeAudioBuffer& block) {
                    if (writeStatus != noErr)
                        return;
                    const ZRNativeAudioBuffer& processed = chain->process(block);
                    writeStatus = ZRExtAudioFileService::write(file, processed.frames(), processed.list());
                },
                &outcome.error))
            return fail(noErr);
        if (writeStatus != noErr)
            return fail(writeStatus);
        status = ZRExtAudioFileService::dispose(file);
        file = nullptr;
        if (status != noErr)
            return fail(status);
        if (options.output == "-") {
            copyToStandardOutput(temporary, &outcome.error);
            ::unlink(temporary.c_str());
            return outcome;
        }
        if (::rename(temporary.c_str(), options.output.c_str()) != 0) {
            outcome.error = fileError(errno, writeAction);
            ::unlink(temporary.c_str());
        }
        return outcome;
    }

}

std::vector<std::string> convertFormatNames() { return namesOf(formatNames()); }

std::vector<std::string> convertTypeNames() { return namesOf(outputKinds()); }

int convertCommand(const ConvertOptions& options)
{
    return runSingleFile(
        options.input, options.common.progress(), [&](ProgressBar& progress) { return runConvert(options, progress); });
}

}
