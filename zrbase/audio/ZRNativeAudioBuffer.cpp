#include <zrbase/audio/ZRNativeAudioBuffer.h>

#include <zrbase/core/ZRError.h>
#include <zrbase/host/audio/ZRFloatVectorPrivate.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

// The loops' arithmetic matches a plain loop exactly, except that sums group their terms by lane (see sum()).

// AES17 reads a sine's RMS 3 dB up, so that a full-scale sine reads 0 dB.
const double ZRAES17Gain = std::pow(10.0, 0.15);

[[gnu::always_inline]] inline bool anyLane(const ZRInt8& mask) noexcept
{
    uint64_t quarters[4];
    std::memcpy(quarters, &mask, sizeof quarters);
    return (quarters[0] | quarters[1] | quarters[2] | quarters[3]) != 0;
}

// Every sample goes through operation(x), which changes a float or a ZRFloat8 in place.
template <typename Operation>
[[gnu::always_inline]] inline void transform(std::span<float> samples, Operation operation) noexcept
{
    float* at = samples.data();
    const size_t count = samples.size();
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        ZRForEachVector([&](size_t k) {
            ZRFloat8 vector;
            ZRLoad(vector, at + i + k * ZRLanes);
            operation(vector);
            ZRStore(at + i + k * ZRLanes, vector);
        });
    }
    for (; i < count; ++i)
        operation(at[i]);
}

// Every sample x goes through operation(x, y) with the other's sample y at the same frame; the other has at least
// as many.
template <typename Operation>
[[gnu::always_inline]] inline void transform(std::span<float> samples, const float* other, Operation operation) noexcept
{
    float* at = samples.data();
    const size_t count = samples.size();
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        ZRForEachVector([&](size_t k) {
            ZRFloat8 vector, otherVector;
            ZRLoad(vector, at + i + k * ZRLanes);
            ZRLoad(otherVector, other + i + k * ZRLanes);
            operation(vector, otherVector);
            ZRStore(at + i + k * ZRLanes, vector);
        });
    }
    for (; i < count; ++i)
        operation(at[i], other[i]);
}

// The sum of term(x) over the samples, term changing its argument in place. Four vector accumulators sum blocks
// of 4096 samples in float and the block totals add up in double: the accuracy of a pairwise sum at the speed of
// a float one, and a result that depends on the count only, never on where the samples lie in memory.
template <typename Term> [[gnu::always_inline]] inline double sum(std::span<const float> samples, Term term) noexcept
{
    constexpr size_t block = 4096;
    const float* at = samples.data();
    const size_t count = samples.size();
    double total = 0;
    for (size_t i = 0; i < count;) {
        const size_t end = std::min(count, i + block);
        ZRFloat8 sums[4] = {};
        for (; i + ZRStep <= end; i += ZRStep) {
            ZRForEachVector([&](size_t k) {
                ZRFloat8 vector;
                ZRLoad(vector, at + i + k * ZRLanes);
                term(vector);
                sums[k] += vector;
            });
        }
        float rest = 0;
        for (; i < end; ++i) {
            float value = at[i];
            term(value);
            rest += value;
        }
        const ZRFloat8 lanes = (sums[0] + sums[1]) + (sums[2] + sums[3]);
        const float vectors
            = ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) + ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
        total += double(vectors) + double(rest);
    }
    return total;
}

// The term(x) that wins every comparison of pick(winner, candidate), which keeps the winner or takes the
// candidate, starting from `start`.
template <typename Term, typename Pick>
[[gnu::always_inline]] inline float extreme(std::span<const float> samples, float start, Term term, Pick pick) noexcept
{
    const float* at = samples.data();
    const size_t count = samples.size();
    const ZRFloat8 initial = start - ZRFloat8 {};
    ZRFloat8 winners[4] = { initial, initial, initial, initial };
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        ZRForEachVector([&](size_t k) {
            ZRFloat8 vector;
            ZRLoad(vector, at + i + k * ZRLanes);
            term(vector);
            pick(winners[k], vector);
        });
    }
    pick(winners[0], winners[1]);
    pick(winners[2], winners[3]);
    pick(winners[0], winners[2]);
    float result = start;
    for (size_t lane = 0; lane < ZRLanes; ++lane)
        pick(result, winners[0][lane]);
    for (; i < count; ++i) {
        float value = at[i];
        term(value);
        pick(result, value);
    }
    return result;
}

// Whether an operation's argument is one sample rather than a vector.
template <typename Argument> constexpr bool isScalar = std::is_same_v<std::remove_cvref_t<Argument>, float>;

const auto absolute = [](auto& x) noexcept {
    if constexpr (isScalar<decltype(x)>)
        x = std::fabs(x);
    else
        x = (ZRFloat8)((ZRInt8)x & 0x7FFFFFFF);
};
const auto square = [](auto& x) noexcept { x *= x; };
const auto keep = [](auto&) noexcept {};
const auto larger
    = [](auto& winner, const auto& candidate) noexcept { winner = candidate > winner ? candidate : winner; };
const auto smaller
    = [](auto& winner, const auto& candidate) noexcept { winner = candidate < winner ? candidate : winner; };

ZR_VECTOR_CLONES void scaleSamples(std::span<float> samples, float gain) noexcept
{
    transform(samples, [gain](auto& x) noexcept { x *= gain; });
}

ZR_VECTOR_CLONES void negateSamples(std::span<float> samples) noexcept
{
    transform(samples, [](auto& x) noexcept { x = -x; });
}

ZR_VECTOR_CLONES void fillSamples(std::span<float> samples, float value) noexcept
{
    // value − 0 is the value itself in every lane, −0.0 included; made once, as building it in the loop is slow.
    const ZRFloat8 values = value - ZRFloat8 {};
    transform(samples, [value, &values](auto& x) noexcept {
        if constexpr (isScalar<decltype(x)>)
            x = value;
        else
            x = values;
    });
}

ZR_VECTOR_CLONES void mixSamples(std::span<float> samples, const float* other, float level) noexcept
{
    transform(samples, other, [level](auto& x, const auto& y) noexcept { x = x + y * level; });
}

// Multiplies frame i by start + float(i) × step, the ramp computed as it goes rather than kept in memory.
ZR_VECTOR_CLONES void rampSamples(std::span<float> samples, float start, float step) noexcept
{
    float* x = samples.data();
    const size_t count = samples.size();
    ZRInt8 frame = { 0, 1, 2, 3, 4, 5, 6, 7 };
    size_t i = 0;
    for (; i + 2 * ZRLanes <= count; i += 2 * ZRLanes) {
        ZRFloat8 a, b;
        ZRLoad(a, x + i);
        ZRLoad(b, x + i + ZRLanes);
        a *= start + __builtin_convertvector(frame, ZRFloat8) * step;
        frame += int32_t(ZRLanes);
        b *= start + __builtin_convertvector(frame, ZRFloat8) * step;
        frame += int32_t(ZRLanes);
        ZRStore(x + i, a);
        ZRStore(x + i + ZRLanes, b);
    }
    for (; i < count; ++i)
        x[i] *= start + float(int32_t(i)) * step;
}

ZR_VECTOR_CLONES void reverseSamples(std::span<float> samples) noexcept
{
    float* low = samples.data();
    float* high = low + samples.size();
    while (high - low >= std::ptrdiff_t(2 * ZRLanes)) {
        high -= ZRLanes;
        ZRFloat8 front, back;
        ZRLoad(front, low);
        ZRLoad(back, high);
        ZRStore(low, __builtin_shufflevector(back, back, 7, 6, 5, 4, 3, 2, 1, 0));
        ZRStore(high, __builtin_shufflevector(front, front, 7, 6, 5, 4, 3, 2, 1, 0));
        low += ZRLanes;
    }
    std::reverse(low, high);
}

ZR_VECTOR_CLONES double sumOfSquares(std::span<const float> samples) noexcept { return sum(samples, square); }

ZR_VECTOR_CLONES double sumOfMagnitudes(std::span<const float> samples) noexcept { return sum(samples, absolute); }

ZR_VECTOR_CLONES float largestSample(std::span<const float> samples) noexcept
{
    return extreme(samples, -std::numeric_limits<float>::infinity(), keep, larger);
}

ZR_VECTOR_CLONES float smallestSample(std::span<const float> samples) noexcept
{
    return extreme(samples, std::numeric_limits<float>::infinity(), keep, smaller);
}

ZR_VECTOR_CLONES float largestMagnitude(std::span<const float> samples) noexcept
{
    return extreme(samples, 0.0f, absolute, larger);
}

// Blocks without a sample at the level are passed over at the speed of a read; a block with one is searched for a
// pair, which may end in the next block.
ZR_VECTOR_CLONES bool hasTwoConsecutiveAtOrAbove(std::span<const float> samples, float level) noexcept
{
    constexpr size_t block = 1024;
    const float* at = samples.data();
    const size_t count = samples.size();
    for (size_t start = 0; start < count; start += block) {
        const size_t end = std::min(count, start + block);
        ZRInt8 found[4] = {};
        size_t i = start;
        for (; i + ZRStep <= end; i += ZRStep) {
            ZRForEachVector([&](size_t k) {
                ZRFloat8 vector;
                ZRLoad(vector, at + i + k * ZRLanes);
                found[k] |= vector >= level;
            });
        }
        bool candidate = anyLane((found[0] | found[1]) | (found[2] | found[3]));
        for (; i < end && !candidate; ++i)
            candidate = at[i] >= level;
        for (i = start; candidate && i < end && i + 1 < count; ++i) {
            if (at[i] >= level && at[i + 1] >= level)
                return true;
        }
    }
    return false;
}

uint32_t firstAtOrAbove(std::span<const float> samples, float magnitude) noexcept
{
    for (size_t i = 0; i < samples.size(); ++i) {
        if (std::fabs(samples[i]) >= magnitude)
            return uint32_t(i);
    }
    return ZRNotFound;
}

uint32_t lastAtOrAbove(std::span<const float> samples, float magnitude) noexcept
{
    for (size_t i = samples.size(); i > 0; --i) {
        if (std::fabs(samples[i - 1]) >= magnitude)
            return uint32_t(i - 1);
    }
    return ZRNotFound;
}

const auto add = [](float& total, float value) noexcept { total += value; };

// Folds a per-channel measurement of channels 0 … count − 1 into `start` with combine(result, value).
template <typename Measure, typename Combine>
float overChannels(uint32_t count, float start, Measure measure, Combine combine) noexcept
{
    float result = start;
    for (uint32_t channel = 0; channel < count; ++channel)
        combine(result, measure(channel));
    return result;
}

// The mean of a per-channel measurement of channels 0 … count − 1; 0 without channels.
template <typename Measure> float meanOverChannels(uint32_t count, Measure measure) noexcept
{
    return count == 0 ? 0.0f : overChannels(count, 0.0f, measure, add) / float(count);
}

// A new buffer set up by initialise(buffer), or null when that fails.
template <typename Initialise> std::unique_ptr<ZRNativeAudioBuffer> made(Initialise initialise)
{
    auto buffer = std::make_unique<ZRNativeAudioBuffer>();
    if (!initialise(*buffer))
        return nullptr;
    return buffer;
}

constexpr uint32_t bytes(uint32_t frames) noexcept { return frames * uint32_t(sizeof(float)); }
constexpr ZRIndexRange bytes(ZRIndexRange frames) noexcept { return { bytes(frames.location), bytes(frames.length) }; }

}

ZRNativeAudioBuffer::ZRNativeAudioBuffer() noexcept = default;

ZRNativeAudioBuffer::ZRNativeAudioBuffer(AudioBufferList* list) noexcept
    : ZRAudioBuffer(list)
{
}

ZRNativeAudioBuffer::~ZRNativeAudioBuffer() = default;

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithChannels(
    uint32_t channels, uint32_t frames, ZRErrorPtr* error)
{
    return bufferWithNumberOfBuffers(channels, bytes(frames), error);
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithNumberOfBuffers(
    uint32_t count, uint32_t length, ZRErrorPtr* error)
{
    return made([&](ZRNativeAudioBuffer& buffer) { return buffer.createWithNumberOfBuffers(count, length, error); });
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithAudioBuffer(
    const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    return made([&](ZRNativeAudioBuffer& buffer) { return buffer._initWithAudioBuffer(source, error); });
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithAudioBuffer(
    const ZRAudioBuffer& source, const ZRIndexSet& channels, bool copy, ZRErrorPtr* error)
{
    return made(
        [&](ZRNativeAudioBuffer& buffer) { return buffer._initWithAudioBuffer(source, channels, copy, error); });
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::copy() const
{
    // _emptyInstance makes at least a ZRNativeAudioBuffer, so the base's copy has this class or a subclass.
    return std::unique_ptr<ZRNativeAudioBuffer>(static_cast<ZRNativeAudioBuffer*>(ZRAudioBuffer::copy().release()));
}

std::unique_ptr<ZRAudioBuffer> ZRNativeAudioBuffer::_emptyInstance() const
{
    return std::make_unique<ZRNativeAudioBuffer>();
}

std::span<float> ZRNativeAudioBuffer::_samples(uint32_t channel) const noexcept
{
    float* samples = this->channel(channel);
    if (!samples)
        return {};
    // A wrapped list may hold entries shorter than buffer 0; never read past the entry's own bytes.
    const AudioBuffer& entry = *(list()->mBuffers + channel);
    return { samples, std::min(frames(), entry.mDataByteSize / uint32_t(sizeof(float))) };
}

bool ZRNativeAudioBuffer::setFrames(uint32_t frames, ZRErrorPtr* error) { return setLength(bytes(frames), error); }

void ZRNativeAudioBuffer::setFrames(uint32_t frames) { setLength(bytes(frames)); }

bool ZRNativeAudioBuffer::setChannels(uint32_t channels, ZRErrorPtr* error)
{
    if (!setCount(channels, error))
        return false;
    // The span is fixed on purpose: enabled indexes further out survive a change of the channel count.
    _enabledChannelIndexes.removeIndexesInRange({ channels, 1024 });
    if (_enabledChannelIndexes.isEmpty())
        _enabledChannelIndexes.addIndex(0);
    return true;
}

void ZRNativeAudioBuffer::setChannels(uint32_t channels)
{
    ZRErrorPtr error;
    if (!setChannels(channels, &error) && error)
        error->alert();
}

bool ZRNativeAudioBuffer::copyFrames(ZRIndexRange frames, uint32_t sourceChannel, const ZRAudioBuffer& source,
    uint32_t position, uint32_t destinationChannel, ZRErrorPtr* error)
{
    return copyRange(bytes(frames), sourceChannel, source, bytes(position), destinationChannel, error);
}

bool ZRNativeAudioBuffer::copyFrames(
    ZRIndexRange frames, const ZRAudioBuffer& source, uint32_t position, ZRErrorPtr* error)
{
    return copyRange(bytes(frames), source, bytes(position), error);
}

bool ZRNativeAudioBuffer::copyChannel(
    uint32_t sourceChannel, const ZRAudioBuffer& source, uint32_t destinationChannel, ZRErrorPtr* error)
{
    return copyBufferAtIndex(sourceChannel, source, destinationChannel, error);
}

bool ZRNativeAudioBuffer::appendFrames(ZRIndexRange frames, const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    return appendRange(bytes(frames), source, error);
}

int64_t ZRNativeAudioBuffer::readFromFilesFrames(std::span<ZRFile* const> files, int64_t frames, ZRErrorPtr* error)
{
    // A count beyond the buffer reads the whole buffer anyway; capping it first keeps the product in range.
    const int64_t byteCount = frames > this->frames() ? int64_t(length()) : int64_t(uint64_t(frames) * sizeof(float));
    return readFromFiles(files, byteCount, error) / int64_t(sizeof(float));
}

void ZRNativeAudioBuffer::enableAllChannels() { _enabledChannelIndexes.addIndexesInRange({ 0, channels() }); }

void ZRNativeAudioBuffer::setEnabled(bool enabled, uint32_t channel)
{
    if (channel >= channels())
        return;
    if (enabled)
        _enabledChannelIndexes.addIndex(channel);
    else
        _enabledChannelIndexes.removeIndex(channel);
}

float ZRNativeAudioBuffer::sampleValueAtIndex(uint32_t index, uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return index < samples.size() ? samples[index] : 0.0f;
}

void ZRNativeAudioBuffer::setSampleValue(float value, uint32_t index, uint32_t channel) noexcept
{
    const std::span<float> samples = _samples(channel);
    if (index < samples.size())
        samples[index] = value;
}

void ZRNativeAudioBuffer::scaleSampleBy(float factor, uint32_t index, uint32_t channel) noexcept
{
    const std::span<float> samples = _samples(channel);
    if (index < samples.size())
        samples[index] *= factor;
}

void ZRNativeAudioBuffer::setSampleValues(const float* values, uint32_t count, uint32_t channel) noexcept
{
    const std::span<float> samples = _samples(channel);
    const size_t copied = std::min<size_t>(count, samples.size());
    if (copied > 0)
        std::memcpy(samples.data(), values, copied * sizeof(float));
}

void ZRNativeAudioBuffer::fadeIn() noexcept
{
    if (frames() == 0)
        return;
    const float step = float(1.0 / frames());
    for (uint32_t channel = 0; channel < channels(); ++channel)
        rampSamples(_samples(channel), 0.0f, step);
}

void ZRNativeAudioBuffer::fadeOut() noexcept
{
    if (frames() == 0)
        return;
    const float step = float(-1.0 / frames());
    for (uint32_t channel = 0; channel < channels(); ++channel)
        rampSamples(_samples(channel), 1.0f, step);
}

void ZRNativeAudioBuffer::reverse() noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel)
        reverseSamples(_samples(channel));
}

void ZRNativeAudioBuffer::invert() noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel)
        invertChannel(channel);
}

void ZRNativeAudioBuffer::invertChannel(uint32_t channel) noexcept { negateSamples(_samples(channel)); }

void ZRNativeAudioBuffer::invertChannels(const ZRIndexSet& channels) noexcept
{
    for (uint32_t channel : channels)
        invertChannel(channel);
}

void ZRNativeAudioBuffer::scale(float gain) noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel)
        scale(gain, channel);
}

void ZRNativeAudioBuffer::scale(float gain, uint32_t channel) noexcept { scaleSamples(_samples(channel), gain); }

void ZRNativeAudioBuffer::scaleChannels(float gain, const ZRIndexSet& channels) noexcept
{
    for (uint32_t channel : channels)
        scale(gain, channel);
}

void ZRNativeAudioBuffer::scale(float gain, uint32_t channel, ZRIndexRange frames) noexcept
{
    const std::span<float> samples = _samples(channel);
    // In 64 bits, so that a range whose end wraps in 32 bits still ends where it says.
    const uint64_t end = std::min<uint64_t>(uint64_t(frames.location) + frames.length, samples.size());
    if (frames.location < end)
        scaleSamples(samples.subspan(frames.location, size_t(end - frames.location)), gain);
}

void ZRNativeAudioBuffer::clearWithValue(float value) noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel)
        clearChannel(channel, value);
}

void ZRNativeAudioBuffer::clearChannel(uint32_t channel, float value) noexcept
{
    fillSamples(_samples(channel), value);
}

bool ZRNativeAudioBuffer::copyAudioBuffer(const ZRNativeAudioBuffer& source, uint32_t position, ZRErrorPtr* error)
{
    if (source.channels() != channels())
        return ZRError::fail(error, 7, "Copying a buffer range");
    // The position enters this test in bytes while the frame counts are frames; the copy below still refuses
    // anything that would leave the buffer.
    if (source.frames() + bytes(position) > frames())
        return ZRError::fail(error, 4, "Copying a buffer channel");
    for (uint32_t channel = 0; channel < channels(); ++channel) {
        if (!copyRange({ 0, source.length() }, channel, source, bytes(position), channel, error))
            return false;
    }
    return true;
}

bool ZRNativeAudioBuffer::mixChannel(uint32_t sourceChannel, const ZRNativeAudioBuffer& source,
    uint32_t destinationChannel, float level, ZRErrorPtr* error)
{
    constexpr const char* action = "Mixing buffers";
    if (source.frames() != frames())
        return ZRError::fail(error, 4, action);
    if (frames() == 0)
        return true;
    if (destinationChannel >= channels())
        return ZRError::fail(error, 2, action);
    if (sourceChannel >= source.channels())
        return ZRError::fail(error, 3, action);
    const std::span<float> destination = _samples(destinationChannel);
    const std::span<const float> from = source._samples(sourceChannel);
    mixSamples(destination.first(std::min(destination.size(), from.size())), from.data(), level);
    return true;
}

bool ZRNativeAudioBuffer::mixAudioBuffer(const ZRNativeAudioBuffer& source, float level, ZRErrorPtr* error)
{
    if (source.channels() != channels())
        return ZRError::fail(error, 7, "Mixing buffers");
    for (uint32_t channel = 0; channel < channels(); ++channel) {
        if (!mixChannel(channel, source, channel, level, error))
            return false;
    }
    return true;
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::combinedChannelsAtIndexes(
    const ZRIndexSet& channels, uint32_t method, ZRErrorPtr* error) const
{
    std::unique_ptr<ZRNativeAudioBuffer> combined = bufferWithChannels(1, frames(), error);
    if (!combined)
        return nullptr;
    const std::span<float> result = combined->_samples(0);
    uint32_t walked = 0;
    for (uint32_t channel : channels) {
        if (channel >= this->channels())
            break;
        ++walked;
        const std::span<const float> samples = _samples(channel);
        if (method > CombineAveragedDifference || samples.size() < result.size())
            continue;
        if (method >= CombineDifference && channel % 2 != 0)
            transform(result, samples.data(), [](auto& x, const auto& y) noexcept { x -= y; });
        else
            transform(result, samples.data(), [](auto& x, const auto& y) noexcept { x += y; });
    }
    if (walked > 1 && (method == CombineAverage || method == CombineAveragedDifference)) {
        const float divisor = float(walked);
        transform(result, [divisor](auto& x) noexcept { x /= divisor; });
    }
    return combined;
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::combinedChannelsWithMethod(
    uint32_t method, ZRErrorPtr* error) const
{
    return combinedChannelsAtIndexes(ZRIndexSet(ZRIndexRange { 0, channels() }), method, error);
}

float ZRNativeAudioBuffer::peakOfChannel(uint32_t channel) const noexcept
{
    const uint32_t interleaved = channelsPerBuffer();
    if (interleaved < 2)
        return largestMagnitude(_samples(channel));
    // Channel `interleaved` itself is accepted as it always was; its last stride may leave the buffer and is cut.
    if (channel > interleaved)
        return 0.0f;
    const std::span<const float> samples = _samples(0);
    const size_t count = samples.size() / interleaved;
    float peak = 0.0f;
    for (size_t frame = 0, index = channel; frame < count && index < samples.size(); ++frame, index += interleaved)
        larger(peak, std::fabs(samples[index]));
    return peak;
}

float ZRNativeAudioBuffer::maximumOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : largestSample(samples);
}

float ZRNativeAudioBuffer::minimumOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : smallestSample(samples);
}

float ZRNativeAudioBuffer::rmsOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : float(std::sqrt(sumOfSquares(samples) / double(samples.size())));
}

float ZRNativeAudioBuffer::aes17OfChannel(uint32_t channel) const noexcept
{
    return float(double(rmsOfChannel(channel)) * ZRAES17Gain);
}

float ZRNativeAudioBuffer::averageOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : float(sumOfMagnitudes(samples) / double(samples.size()));
}

float ZRNativeAudioBuffer::energyOfChannel(uint32_t channel) const noexcept
{
    return float(sumOfSquares(_samples(channel)));
}

float ZRNativeAudioBuffer::formFactorOfChannel(uint32_t channel) const noexcept
{
    const float average = averageOfChannel(channel);
    return average == 0.0f ? 0.0f : rmsOfChannel(channel) / average;
}

float ZRNativeAudioBuffer::crestFactorOfChannel(uint32_t channel) const noexcept
{
    const float rms = rmsOfChannel(channel);
    return rms == 0.0f ? 0.0f : peakOfChannel(channel) / rms;
}

bool ZRNativeAudioBuffer::clippedChannel(uint32_t channel) const noexcept
{
    return hasTwoConsecutiveAtOrAbove(_samples(channel), 1.0f);
}

float ZRNativeAudioBuffer::peak() const noexcept
{
    return overChannels(
        channels(), 0.0f, [this](uint32_t channel) { return peakOfChannel(channel); }, larger);
}

float ZRNativeAudioBuffer::maximum() const noexcept
{
    return overChannels(
        channels(), 0.0f, [this](uint32_t channel) { return maximumOfChannel(channel); }, larger);
}

float ZRNativeAudioBuffer::minimum() const noexcept
{
    if (channels() == 0)
        return 0.0f;
    return overChannels(
        channels(), std::numeric_limits<float>::max(), [this](uint32_t channel) { return minimumOfChannel(channel); },
        smaller);
}

float ZRNativeAudioBuffer::rms() const noexcept
{
    return std::sqrt(meanOverChannels(channels(), [this](uint32_t channel) {
        const float rms = rmsOfChannel(channel);
        return rms * rms;
    }));
}

float ZRNativeAudioBuffer::aes17() const noexcept { return float(double(rms()) * ZRAES17Gain); }

float ZRNativeAudioBuffer::average() const noexcept
{
    return meanOverChannels(channels(), [this](uint32_t channel) { return averageOfChannel(channel); });
}

float ZRNativeAudioBuffer::energy() const noexcept
{
    return meanOverChannels(channels(), [this](uint32_t channel) { return energyOfChannel(channel); });
}

float ZRNativeAudioBuffer::formFactor() const noexcept
{
    const float average = this->average();
    return average == 0.0f ? 0.0f : rms() / average;
}

float ZRNativeAudioBuffer::crestFactor() const noexcept
{
    const float rms = this->rms();
    return rms == 0.0f ? 0.0f : peak() / rms;
}

bool ZRNativeAudioBuffer::clipped() const noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel) {
        if (clippedChannel(channel))
            return true;
    }
    return false;
}

float ZRNativeAudioBuffer::averageOfChannels(const ZRIndexSet& channels, uint32_t index) const noexcept
{
    if (channels.isEmpty())
        return 0.0f;
    float total = 0.0f;
    for (uint32_t channel : channels)
        total += std::fabs(sampleValueAtIndex(index, channel));
    return total / float(channels.count());
}

uint32_t ZRNativeAudioBuffer::positionOfSampleGreaterThanOrEqualToMagnitude(
    float magnitude, uint32_t channel, bool backwards) const noexcept
{
    if (!list() || magnitude > peakOfChannel(channel))
        return ZRNotFound;
    const std::span<const float> samples = _samples(channel);
    return backwards ? lastAtOrAbove(samples, magnitude) : firstAtOrAbove(samples, magnitude);
}

uint32_t ZRNativeAudioBuffer::positionOfSampleGreaterThanOrEqualToMagnitude(
    float magnitude, bool backwards) const noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel) {
        const uint32_t position = positionOfSampleGreaterThanOrEqualToMagnitude(magnitude, channel, backwards);
        if (position != ZRNotFound)
            return position;
    }
    return ZRNotFound;
}
