#include "audio/ZRNativeAudioBuffer.h"

#include "host/foundation/ZRLocalizedString.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

// The hot loops work on four-float vectors, the width every x86-64 and ARM64 machine has, four at a time so that
// four independent operations are in flight. Lane-wise arithmetic gives the same float results as a plain loop;
// only the sums group their terms differently (see sum()).
using ZRFloat4 = float __attribute__((vector_size(16)));
using ZRInt4 = int32_t __attribute__((vector_size(16)));
constexpr size_t ZRLanes = 4;
constexpr size_t ZRStep = 4 * ZRLanes;

// AES17 reads a sine's RMS 3 dB up, so that a full-scale sine reads 0 dB.
const double ZRAES17Gain = std::pow(10.0, 0.15);

inline ZRFloat4 load(const float* samples) noexcept
{
    ZRFloat4 vector;
    std::memcpy(&vector, samples, sizeof vector);
    return vector;
}

inline void store(float* samples, ZRFloat4 vector) noexcept { std::memcpy(samples, &vector, sizeof vector); }

inline float absolute(float value) noexcept { return std::fabs(value); }
inline ZRFloat4 absolute(ZRFloat4 vector) noexcept { return (ZRFloat4)((ZRInt4)vector & 0x7FFFFFFF); }

inline bool anyLane(ZRInt4 mask) noexcept
{
    uint64_t halves[2];
    std::memcpy(halves, &mask, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

// x = operation(x) for every sample; the operation takes a float or a ZRFloat4.
template <typename Operation> void transform(std::span<float> samples, Operation operation) noexcept
{
    float* x = samples.data();
    const size_t count = samples.size();
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        const ZRFloat4 a = load(x + i), b = load(x + i + 4), c = load(x + i + 8), d = load(x + i + 12);
        store(x + i, operation(a));
        store(x + i + 4, operation(b));
        store(x + i + 8, operation(c));
        store(x + i + 12, operation(d));
    }
    for (; i + ZRLanes <= count; i += ZRLanes)
        store(x + i, operation(load(x + i)));
    for (; i < count; ++i)
        x[i] = operation(x[i]);
}

// x = operation(x, y) for every sample of x and the sample of y at the same frame; y has at least as many.
template <typename Operation> void transform(std::span<float> samples, const float* other, Operation operation) noexcept
{
    float* x = samples.data();
    const size_t count = samples.size();
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        const ZRFloat4 a = load(x + i), b = load(x + i + 4), c = load(x + i + 8), d = load(x + i + 12);
        store(x + i, operation(a, load(other + i)));
        store(x + i + 4, operation(b, load(other + i + 4)));
        store(x + i + 8, operation(c, load(other + i + 8)));
        store(x + i + 12, operation(d, load(other + i + 12)));
    }
    for (; i + ZRLanes <= count; i += ZRLanes)
        store(x + i, operation(load(x + i), load(other + i)));
    for (; i < count; ++i)
        x[i] = operation(x[i], other[i]);
}

// Multiplies frame i by start + float(i) × step, the ramp computed as it goes rather than kept in memory.
void ramp(std::span<float> samples, float start, float step) noexcept
{
    float* x = samples.data();
    const size_t count = samples.size();
    ZRInt4 frame = { 0, 1, 2, 3 };
    size_t i = 0;
    for (; i + ZRLanes <= count; i += ZRLanes) {
        store(x + i, load(x + i) * (start + __builtin_convertvector(frame, ZRFloat4) * step));
        frame += int32_t(ZRLanes);
    }
    for (; i < count; ++i)
        x[i] *= start + float(int32_t(i)) * step;
}

void reverseSamples(std::span<float> samples) noexcept
{
    float* low = samples.data();
    float* high = low + samples.size();
    while (high - low >= std::ptrdiff_t(2 * ZRLanes)) {
        high -= ZRLanes;
        const ZRFloat4 front = load(low), back = load(high);
        store(low, __builtin_shufflevector(back, back, 3, 2, 1, 0));
        store(high, __builtin_shufflevector(front, front, 3, 2, 1, 0));
        low += ZRLanes;
    }
    std::reverse(low, high);
}

// The sum of term(x) over the samples. Four vector accumulators sum blocks of 4096 samples in float; the block
// totals add up in double. That keeps the accuracy of a pairwise sum at the speed of a float one, and the result
// depends on the count only, never on where the samples lie in memory.
template <typename Term> double sum(std::span<const float> samples, Term term) noexcept
{
    constexpr size_t block = 4096;
    const float* x = samples.data();
    const size_t count = samples.size();
    double total = 0;
    for (size_t i = 0; i < count;) {
        const size_t end = std::min(count, i + block);
        ZRFloat4 a {}, b {}, c {}, d {};
        for (; i + ZRStep <= end; i += ZRStep) {
            a += term(load(x + i));
            b += term(load(x + i + 4));
            c += term(load(x + i + 8));
            d += term(load(x + i + 12));
        }
        float rest = 0;
        for (; i < end; ++i)
            rest += term(x[i]);
        const ZRFloat4 lanes = (a + b) + (c + d);
        total += double((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) + double(rest);
    }
    return total;
}

// The sample that wins every comparison `pick(a, b)` (a when it wins), starting from `start`.
template <typename Term, typename Pick>
float extreme(std::span<const float> samples, float start, Term term, Pick pick) noexcept
{
    const float* x = samples.data();
    const size_t count = samples.size();
    const ZRFloat4 initial = start - ZRFloat4 {};
    ZRFloat4 a = initial, b = initial, c = initial, d = initial;
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        a = pick(term(load(x + i)), a);
        b = pick(term(load(x + i + 4)), b);
        c = pick(term(load(x + i + 8)), c);
        d = pick(term(load(x + i + 12)), d);
    }
    const ZRFloat4 lanes = pick(pick(a, b), pick(c, d));
    float result = pick(pick(lanes[0], lanes[1]), pick(lanes[2], lanes[3]));
    for (; i < count; ++i)
        result = pick(term(x[i]), result);
    return result;
}

const auto identity = [](auto x) noexcept { return x; };
const auto square = [](auto x) noexcept { return x * x; };
const auto magnitude = [](auto x) noexcept { return absolute(x); };
const auto larger = [](auto a, auto b) noexcept { return a > b ? a : b; };
const auto smaller = [](auto a, auto b) noexcept { return a < b ? a : b; };

bool hasTwoConsecutiveAtOrAbove(std::span<const float> samples, float level) noexcept
{
    const float* x = samples.data();
    const size_t count = samples.size();
    constexpr size_t block = 256;
    size_t i = 0;
    // Vectors compare frames i … i+15 with i+1 … i+16, so they stop where frame i+16 would leave the channel; a
    // block of them answers at once.
    while (i + ZRStep < count) {
        const size_t end = i + block;
        ZRInt4 found {};
        for (; i + ZRStep < count && i < end; i += ZRStep) {
            for (size_t lane = 0; lane < ZRStep; lane += ZRLanes)
                found |= (load(x + i + lane) >= level) & (load(x + i + lane + 1) >= level);
        }
        if (anyLane(found))
            return true;
    }
    for (; i + 1 < count; ++i) {
        if (x[i] >= level && x[i + 1] >= level)
            return true;
    }
    return false;
}

uint32_t firstAtOrAbove(std::span<const float> samples, float magnitude) noexcept
{
    const float* x = samples.data();
    const size_t count = samples.size();
    size_t i = 0;
    for (; i + ZRLanes <= count; i += ZRLanes) {
        if (anyLane(absolute(load(x + i)) >= magnitude))
            break;
    }
    for (; i < count; ++i) {
        if (absolute(x[i]) >= magnitude)
            return uint32_t(i);
    }
    return ZRNotFound;
}

uint32_t lastAtOrAbove(std::span<const float> samples, float magnitude) noexcept
{
    const float* x = samples.data();
    size_t i = samples.size();
    for (; i >= ZRLanes; i -= ZRLanes) {
        if (anyLane(absolute(load(x + i - ZRLanes)) >= magnitude))
            break;
    }
    for (; i > 0; --i) {
        if (absolute(x[i - 1]) >= magnitude)
            return uint32_t(i - 1);
    }
    return ZRNotFound;
}

bool fail(ZRErrorPtr* error, int32_t code, const char* action)
{
    if (error)
        *error = ZRError::errorWithCode(code, ZRLocalizedString(action));
    return false;
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
    auto buffer = std::make_unique<ZRNativeAudioBuffer>();
    if (!buffer->createWithNumberOfBuffers(count, length, error))
        return nullptr;
    return buffer;
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithAudioBuffer(
    const ZRAudioBuffer& source, ZRErrorPtr* error)
{
    auto buffer = std::make_unique<ZRNativeAudioBuffer>();
    if (!buffer->_initWithAudioBuffer(source, error))
        return nullptr;
    return buffer;
}

std::unique_ptr<ZRNativeAudioBuffer> ZRNativeAudioBuffer::bufferWithAudioBuffer(
    const ZRAudioBuffer& source, const ZRIndexSet& channels, bool copy, ZRErrorPtr* error)
{
    auto buffer = std::make_unique<ZRNativeAudioBuffer>();
    if (!buffer->_initWithAudioBuffer(source, channels, copy, error))
        return nullptr;
    return buffer;
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
        ramp(_samples(channel), 0.0f, step);
}

void ZRNativeAudioBuffer::fadeOut() noexcept
{
    if (frames() == 0)
        return;
    const float step = float(-1.0 / frames());
    for (uint32_t channel = 0; channel < channels(); ++channel)
        ramp(_samples(channel), 1.0f, step);
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

void ZRNativeAudioBuffer::invertChannel(uint32_t channel) noexcept
{
    transform(_samples(channel), [](auto x) noexcept { return -x; });
}

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

void ZRNativeAudioBuffer::scale(float gain, uint32_t channel) noexcept
{
    transform(_samples(channel), [gain](auto x) noexcept { return x * gain; });
}

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
        transform(samples.subspan(frames.location, size_t(end - frames.location)),
            [gain](auto x) noexcept { return x * gain; });
}

void ZRNativeAudioBuffer::clearWithValue(float value) noexcept
{
    for (uint32_t channel = 0; channel < channels(); ++channel)
        clearChannel(channel, value);
}

void ZRNativeAudioBuffer::clearChannel(uint32_t channel, float value) noexcept
{
    // value − 0 is the value itself, −0.0 included, as a float or in every lane of a vector.
    transform(_samples(channel), [value](auto x) noexcept { return value - decltype(x) {}; });
}

bool ZRNativeAudioBuffer::copyAudioBuffer(const ZRNativeAudioBuffer& source, uint32_t position, ZRErrorPtr* error)
{
    if (source.channels() != channels())
        return fail(error, 7, "Copying a buffer range");
    // The position enters this test in bytes while the frame counts are frames; the copy below still refuses
    // anything that would leave the buffer.
    if (source.frames() + bytes(position) > frames())
        return fail(error, 4, "Copying a buffer channel");
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
        return fail(error, 4, action);
    if (frames() == 0)
        return true;
    if (destinationChannel >= channels())
        return fail(error, 2, action);
    if (sourceChannel >= source.channels())
        return fail(error, 3, action);
    const std::span<float> destination = _samples(destinationChannel);
    const std::span<const float> from = source._samples(sourceChannel);
    transform(destination.first(std::min(destination.size(), from.size())), from.data(),
        [level](auto x, auto y) noexcept { return x + y * level; });
    return true;
}

bool ZRNativeAudioBuffer::mixAudioBuffer(const ZRNativeAudioBuffer& source, float level, ZRErrorPtr* error)
{
    if (source.channels() != channels())
        return fail(error, 7, "Mixing buffers");
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
            transform(result, samples.data(), [](auto x, auto y) noexcept { return x - y; });
        else
            transform(result, samples.data(), [](auto x, auto y) noexcept { return x + y; });
    }
    if (walked > 1 && (method == CombineAverage || method == CombineAveragedDifference)) {
        const float divisor = float(walked);
        transform(result, [divisor](auto x) noexcept { return x / divisor; });
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
        return extreme(_samples(channel), 0.0f, magnitude, larger);
    // Channel `interleaved` itself is accepted as it always was; its last stride may leave the buffer and is cut.
    if (channel > interleaved)
        return 0.0f;
    const std::span<const float> samples = _samples(0);
    const size_t count = samples.size() / interleaved;
    float peak = 0.0f;
    for (size_t frame = 0, index = channel; frame < count && index < samples.size(); ++frame, index += interleaved)
        peak = larger(absolute(samples[index]), peak);
    return peak;
}

float ZRNativeAudioBuffer::maximumOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : extreme(samples, -std::numeric_limits<float>::infinity(), identity, larger);
}

float ZRNativeAudioBuffer::minimumOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : extreme(samples, std::numeric_limits<float>::infinity(), identity, smaller);
}

float ZRNativeAudioBuffer::rmsOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : float(std::sqrt(sum(samples, square) / double(samples.size())));
}

float ZRNativeAudioBuffer::aes17OfChannel(uint32_t channel) const noexcept
{
    return float(double(rmsOfChannel(channel)) * ZRAES17Gain);
}

float ZRNativeAudioBuffer::averageOfChannel(uint32_t channel) const noexcept
{
    const std::span<const float> samples = _samples(channel);
    return samples.empty() ? 0.0f : float(sum(samples, magnitude) / double(samples.size()));
}

float ZRNativeAudioBuffer::energyOfChannel(uint32_t channel) const noexcept
{
    return float(sum(_samples(channel), square));
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
    float peak = 0.0f;
    for (uint32_t channel = 0; channel < channels(); ++channel)
        peak = larger(peakOfChannel(channel), peak);
    return peak;
}

float ZRNativeAudioBuffer::maximum() const noexcept
{
    float maximum = 0.0f;
    for (uint32_t channel = 0; channel < channels(); ++channel)
        maximum = larger(maximumOfChannel(channel), maximum);
    return maximum;
}

float ZRNativeAudioBuffer::minimum() const noexcept
{
    if (channels() == 0)
        return 0.0f;
    float minimum = std::numeric_limits<float>::max();
    for (uint32_t channel = 0; channel < channels(); ++channel)
        minimum = smaller(minimumOfChannel(channel), minimum);
    return minimum;
}

float ZRNativeAudioBuffer::rms() const noexcept
{
    if (channels() == 0)
        return 0.0f;
    float squares = 0.0f;
    for (uint32_t channel = 0; channel < channels(); ++channel) {
        const float rms = rmsOfChannel(channel);
        squares += rms * rms;
    }
    return std::sqrt(squares / float(channels()));
}

float ZRNativeAudioBuffer::aes17() const noexcept { return float(double(rms()) * ZRAES17Gain); }

float ZRNativeAudioBuffer::average() const noexcept
{
    if (channels() == 0)
        return 0.0f;
    float total = 0.0f;
    for (uint32_t channel = 0; channel < channels(); ++channel)
        total += averageOfChannel(channel);
    return total / float(channels());
}

float ZRNativeAudioBuffer::energy() const noexcept
{
    if (channels() == 0)
        return 0.0f;
    float total = 0.0f;
    for (uint32_t channel = 0; channel < channels(); ++channel)
        total += energyOfChannel(channel);
    return total / float(channels());
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
        total += absolute(sampleValueAtIndex(index, channel));
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
