#include "Analyzer.h"

#include "LoudnessMeter.h"
#include "SampleRun.h"
#include "SpectrumAccumulator.h"
#include "ToolError.h"
#include "TruePeakMeter.h"

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/dsp/ZRAWeightedFilter.h>
#include <zrbase/dsp/ZRBWeightedFilter.h>
#include <zrbase/dsp/ZRCWeightedFilter.h>

#include <zrbase/audio/ZRFFTBuffer.h>

#include <algorithm>
#include <cmath>

namespace zr {

double LevelStatistics::aes17Rms() const noexcept { return rms * std::sqrt(2.0); }

double LevelStatistics::crestFactor() const noexcept { return rms > 0.0 ? peak / rms : 0.0; }

std::unique_ptr<Analyzer> Analyzer::analyzerWithFormat(
    double sampleRate, uint32_t channels, bool basic, ZRErrorPtr* error)
{
    if (channels == 0 || !(sampleRate >= 1.0)) {
        if (error)
            *error = toolError("Analysing audio", "the audio has no channels or no sample rate");
        return nullptr;
    }
    std::unique_ptr<Analyzer> analyzer(new Analyzer(sampleRate, channels, basic));
    if (basic)
        return analyzer;

    analyzer->_loudness = LoudnessMeter::meterWithFormat(sampleRate, channels);
    analyzer->_spectrum
        = SpectrumAccumulator::accumulatorWithResolution(spectrumResolution, ZRFFTBuffer::WindowHann, sampleRate);
    analyzer->_weighted = ZRNativeAudioBuffer::bufferWithChannels(channels, 1, error);
    analyzer->_backgroundBlock = ZRNativeAudioBuffer::bufferWithChannels(channels, 1, error);
    analyzer->_truePeak = std::make_unique<TruePeakMeter>(channels);
    if (!analyzer->_loudness || !analyzer->_spectrum || !analyzer->_weighted || !analyzer->_backgroundBlock) {
        if (error && !*error)
            *error = toolError("Analysing audio", "the loudness meter or the spectrum could not be set up");
        return nullptr;
    }
    analyzer->_weightings[0] = std::make_unique<ZRAWeightedFilter>();
    analyzer->_weightings[1] = std::make_unique<ZRBWeightedFilter>();
    analyzer->_weightings[2] = std::make_unique<ZRCWeightedFilter>();
    for (auto& filter : analyzer->_weightings) {
        filter->setSampleRate(sampleRate);
        filter->setActive(true);
        filter->reserveChannels(channels);
    }
    return analyzer;
}

Analyzer::Analyzer(double sampleRate, uint32_t channels, bool basic)
    : _sampleRate(sampleRate)
    , _channels(channels)
    , _basic(basic)
    , _sums(channels)
{
}

Analyzer::~Analyzer()
{
    if (_background.valid())
        _background.wait();
}

void Analyzer::process(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    for (uint32_t c = 0; c < _channels; ++c) {
        SampleRun run;
        run.add(block.channel(c), frames);
        Sums& sums = _sums[c];
        sums.sum += run.sum;
        sums.squares += run.squares;
        sums.minimum = std::min(sums.minimum, run.minimum);
        sums.maximum = std::max(sums.maximum, run.maximum);
        if (frames > 0)
            sums.peak = std::max({ sums.peak, run.maximum, -run.minimum });
        sums.clipped += run.clipped;
    }
    _frames += frames;
    if (_basic)
        return;
    _startBackground(block);
    _processWeighting(block);
}

void Analyzer::_processWeighting(const ZRNativeAudioBuffer& block)
{
    const uint32_t frames = block.frames();
    if (_weighted->frames() != frames)
        _weighted->setFrames(frames);
    for (size_t w = 0; w < 3; ++w) {
        for (uint32_t c = 0; c < _channels; ++c)
            std::copy_n(block.channel(c), frames, _weighted->channel(c));
        _weightings[w]->filter(*_weighted);
        for (uint32_t c = 0; c < _channels; ++c) {
            SampleRun run;
            run.add(_weighted->channel(c), frames);
            _sums[c].weightedSquares[w] += run.squares;
        }
    }
}

void Analyzer::_startBackground(const ZRNativeAudioBuffer& block)
{
    // The background's copy of the block is free once its work on the previous block is done.
    if (_background.valid())
        _background.wait();
    const uint32_t frames = block.frames();
    if (_backgroundBlock->frames() != frames)
        _backgroundBlock->setFrames(frames);
    for (uint32_t c = 0; c < _channels; ++c)
        std::copy_n(block.channel(c), frames, _backgroundBlock->channel(c));
    _background = std::async(std::launch::async, [this, frames] {
        const ZRNativeAudioBuffer& copy = *_backgroundBlock;
        _interleaved.resize(size_t(frames) * _channels);
        for (uint32_t c = 0; c < _channels; ++c) {
            const float* samples = copy.channel(c);
            for (uint32_t i = 0; i < frames; ++i)
                _interleaved[size_t(i) * _channels + c] = samples[i];
        }
        _loudness->add(_interleaved.data(), frames);
        _truePeak->process(copy);
        _spectrum->process(copy);
    });
}

AnalysisResult Analyzer::finish()
{
    AnalysisResult result;
    result.sampleRate = _sampleRate;
    result.channels = _channels;
    result.frames = _frames;
    result.basic = _basic;
    if (!_basic) {
        if (_background.valid())
            _background.wait();
        _loudness->finish();
        result.integratedLufs = _loudness->integratedLufs();
        result.loudnessRangeLu = _loudness->loudnessRangeLu();
        result.maxMomentaryLufs = _loudness->maxMomentaryLufs();
        result.maxShortTermLufs = _loudness->maxShortTermLufs();
        _spectrum->finish();
        result.spectralCentroidHz = _spectrum->centroid();
        result.spectralRolloffHz = _spectrum->rolloff(rolloffFraction);
        result.pitchHz = _spectrum->pitch();
    }

    const double count = double(std::max<uint64_t>(_frames, 1));
    Sums total;
    total.minimum = _sums[0].minimum;
    total.maximum = _sums[0].maximum;
    for (uint32_t c = 0; c < _channels; ++c) {
        const Sums& sums = _sums[c];
        LevelStatistics statistics;
        statistics.peak = sums.peak;
        statistics.rms = std::sqrt(sums.squares / count);
        statistics.dcOffset = sums.sum / count;
        statistics.minimum = sums.minimum;
        statistics.maximum = sums.maximum;
        statistics.clippedSamples = sums.clipped;
        if (!_basic) {
            statistics.truePeak = double(std::max(_truePeak->truePeak(c), sums.peak));
            statistics.aWeightedRms = std::sqrt(sums.weightedSquares[0] / count);
            statistics.bWeightedRms = std::sqrt(sums.weightedSquares[1] / count);
            statistics.cWeightedRms = std::sqrt(sums.weightedSquares[2] / count);
        }
        result.perChannel.push_back(statistics);

        total.sum += sums.sum;
        total.squares += sums.squares;
        for (size_t w = 0; w < 3; ++w)
            total.weightedSquares[w] += sums.weightedSquares[w];
        total.minimum = std::min(total.minimum, sums.minimum);
        total.maximum = std::max(total.maximum, sums.maximum);
        total.clipped += sums.clipped;
        result.overall.truePeak = std::max(result.overall.truePeak, statistics.truePeak);
    }
    const double samples = count * _channels;
    LevelStatistics& overall = result.overall;
    overall.peak = std::max(double(total.maximum), -double(total.minimum));
    if (_frames == 0) {
        total.minimum = total.maximum = 0.0f;
        overall.peak = 0.0;
        for (LevelStatistics& statistics : result.perChannel)
            statistics.minimum = statistics.maximum = 0.0;
    }
    overall.rms = std::sqrt(total.squares / samples);
    overall.dcOffset = total.sum / samples;
    overall.minimum = total.minimum;
    overall.maximum = total.maximum;
    overall.clippedSamples = total.clipped;
    overall.aWeightedRms = std::sqrt(total.weightedSquares[0] / samples);
    overall.bWeightedRms = std::sqrt(total.weightedSquares[1] / samples);
    overall.cWeightedRms = std::sqrt(total.weightedSquares[2] / samples);
    return result;
}

}
