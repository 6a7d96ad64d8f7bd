#include "Analyzer.h"
#include "AudioFileSink.h"
#include "BlockPrefetcher.h"
#include "Commands.h"
#include "FileAudioSource.h"
#include "FileJobs.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "SignalChain.h"
#include "ToolError.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/codec/ZRConverter.h>
#include <zrbase/codec/ZRMetadata.h>

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

    // The tags a conversion carries over: what a listener reads, not what the old file recorded about its
    // encoding.
    constexpr uint32_t copiedTagCategories = 1 | 2 | 4;

    // The input's tags that a conversion carries over, and those given.
    ZRDictionary outputTags(const AudioSource& source, const std::vector<std::string>& given)
    {
        ZRDictionary tags;
        std::unique_ptr<ZRCoreAudioFile> file;
        if (const auto* input = dynamic_cast<const FileAudioSource*>(&source))
            file = input->containerFile();
        if (const std::optional<ZRDictionary> properties = file ? file->properties() : std::nullopt)
            for (const auto& [rawKey, value] : *properties)
                if (const std::optional<std::string> key = ZRMetadata::keyForInfoDictionaryFormatKey(rawKey);
                    key && (ZRMetadata::categoryMaskForKey(*key) & copiedTagCategories))
                    tags[rawKey] = value;
        for (const std::string& tag : given) {
            const size_t equals = tag.find('=');
            tags[*tagInfoKey(tag.substr(0, equals))] = ZRPropertyList(tag.substr(equals + 1));
        }
        return tags;
    }

    // Blocks of the input through the signal chain, one at a time, for the rate converter that pulls them.
    struct ProcessedInput {
        BlockPrefetcher& blocks;
        SignalChain& chain;
        ProgressBar& progress;
        ZRErrorPtr error;

        // The next processed block; null at the end or on a failure (with the error).
        const ZRNativeAudioBuffer* next()
        {
            const ZRNativeAudioBuffer* block = blocks.next(&error);
            if (!block)
                return nullptr;
            progress.add(block->frames());
            return &chain.process(*block);
        }

        static OSStatus pull(
            AudioConverterRef, uint32_t* packets, AudioBufferList* list, AudioStreamPacketDescription**, void* userData)
        {
            auto& input = *static_cast<ProcessedInput*>(userData);
            const ZRNativeAudioBuffer* block = input.next();
            *packets = block ? block->frames() : 0;
            for (uint32_t c = 0; block && c < list->mNumberBuffers; ++c)
                list->mBuffers[c] = { 1, block->frames() * uint32_t(sizeof(float)), block->channel(c) };
            return input.error ? kAudioConverterErr_UnspecifiedError : noErr;
        }
    };

    // The whole input through the chain and the rate converter into the sink.
    bool resampleInto(
        ProcessedInput& input, ZRConverter& converter, uint32_t channels, AudioFileSink& sink, ZRErrorPtr* error)
    {
        std::unique_ptr<ZRNativeAudioBuffer> output
            = ZRNativeAudioBuffer::bufferWithChannels(channels, blockFrames, error);
        if (!output)
            return false;
        const uint32_t room = output->frames();
        converter.setCallback(ProcessedInput::pull, &input);
        for (;;) {
            output->setFrames(room);
            ZRErrorPtr failure;
            const uint32_t frames = converter.convertToNativeBufferUsingCallback(*output, &failure);
            // The reader's failure says more than the converter's that it caused.
            if (input.error || failure) {
                if (error)
                    *error = input.error ? input.error : failure;
                return false;
            }
            if (frames == 0)
                return true;
            output->setFrames(frames);
            if (!sink.write(*output, error))
                return false;
        }
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

        SinkFormat format;
        format.container = kind->second.container;
        format.format = formatID;
        format.rate = rate;
        format.channels = channels;
        format.bits = options.bits ? options.bits : 16;
        format.bitRate = options.bitRate * 1000;
        if (!options.common.format.isRaw())
            format.tags = outputTags(*source, options.tags);
        const std::string target = options.output == "-" ? "/tmp/zr-output" : options.output;
        const std::string temporary = temporaryPathFor(target);
        std::unique_ptr<AudioFileSink> sink = AudioFileSink::sinkWithPath(temporary, format, &outcome.error);
        std::unique_ptr<ZRConverter> converter;
        if (sink && rate != source->sampleRate())
            converter = ZRConverter::converterWithSourceFormat(ZRAudioStreamDescription(source->sampleRate(), channels),
                ZRAudioStreamDescription(rate, channels), &outcome.error);
        bool written = sink && (converter || rate == source->sampleRate());
        if (written && converter) {
            std::unique_ptr<BlockPrefetcher> blocks = BlockPrefetcher::prefetcherWithSource(*source, 1, &outcome.error);
            written = blocks != nullptr;
            if (written) {
                ProcessedInput input { *blocks, *chain, progress, nullptr };
                written = resampleInto(input, *converter, channels, *sink, &outcome.error);
            }
        } else if (written) {
            written = readAll(
                          *source, &progress,
                          [&](const ZRNativeAudioBuffer& block) {
                              if (!outcome.error)
                                  sink->write(chain->process(block), &outcome.error);
                          },
                          &outcome.error)
                && !outcome.error;
        }
        written = written && sink->close(&outcome.error);
        sink.reset();
        if (!written) {
            ::unlink(temporary.c_str());
            return outcome;
        }
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

std::optional<std::string> tagInfoKey(const std::string& name)
{
    std::optional<std::string> key = ZRMetadata::keyExists(name) ? name : ZRMetadata::keyForTitle(name);
    return key ? ZRMetadata::infoDictionaryFormatKeyForKey(*key) : std::nullopt;
}

std::vector<std::string> convertFormatNames() { return namesOf(formatNames()); }

std::vector<std::string> convertTypeNames() { return namesOf(outputKinds()); }

int convertCommand(const ConvertOptions& options)
{
    return runSingleFile(
        options.input, options.common.progress(), [&](ProgressBar& progress) { return runConvert(options, progress); });
}

}
