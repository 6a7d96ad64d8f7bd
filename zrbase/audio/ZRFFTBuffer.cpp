#include <zrbase/audio/ZRFFTBuffer.h>

#include <zrbase/audio/ZRNativeAudioBuffer.h>
#include <zrbase/host/audio/ZRFloatVectorPrivate.h>
#include <zrbase/host/audio/ZRRealFFT.h>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace {

// Square roots through the four-float instruction that the x86-64 baseline and AVX2 builds both have: the compiler
// keeps sqrtf scalar while it must be able to set errno. Other targets take the roots lane by lane; each way is
// correctly rounded and gives the same floats.
[[gnu::always_inline]] inline void squareRoot(ZRFloat8& x) noexcept
{
#if defined(__x86_64__)
    __m128 halves[2];
    std::memcpy(halves, &x, sizeof halves);
    halves[0] = _mm_sqrt_ps(halves[0]);
    halves[1] = _mm_sqrt_ps(halves[1]);
    std::memcpy(&x, halves, sizeof halves);
#else
    for (size_t lane = 0; lane < ZRLanes; ++lane)
        x[lane] = std::sqrt(x[lane]);
#endif
}

// atan(t) = t × P(t²) for t in [0, 1]: a Chebyshev fit of degree 7 in t², within 6.4e-8 of the arctangent;
// with the rounding of float arithmetic the angles come within 3.5e-7 of atan2.
constexpr float arctangentCoefficients[] = { -0.004559791986f, 0.0237805186f, -0.05882975314f, 0.09868865458f,
    -0.1400329018f, 0.1996696183f, -0.3333181266f, 0.999999882f };

// atan2(y, x) lane by lane, written into y. The smaller absolute value over the larger gives t in [0, 1]; the
// octant comes back from which was larger and from the signs, signed zeros and infinities included.
[[gnu::always_inline]] inline void arctangent(ZRFloat8& y, const ZRFloat8& x) noexcept
{
    constexpr float pi = 3.14159265358979323846f;
    const ZRInt8 xBits = (ZRInt8)x;
    const ZRInt8 yBits = (ZRInt8)y;
    const ZRFloat8 xMagnitude = (ZRFloat8)(xBits & INT_MAX);
    const ZRFloat8 yMagnitude = (ZRFloat8)(yBits & INT_MAX);
    const ZRInt8 steep = yMagnitude > xMagnitude;
    const ZRFloat8 smaller = steep ? xMagnitude : yMagnitude;
    const ZRFloat8 larger = steep ? yMagnitude : xMagnitude;
    ZRFloat8 t = smaller / larger;
    // Two zeros or two infinities: 0/0 and ∞/∞ stand for the angles 0 and 45°.
    t = smaller == 0.0f ? ZRFloat8 {} : t;
    t = smaller == std::numeric_limits<float>::infinity() ? 1.0f - ZRFloat8 {} : t;
    const ZRFloat8 z = t * t;
    ZRFloat8 polynomial = arctangentCoefficients[0] - ZRFloat8 {};
    for (size_t i = 1; i < std::size(arctangentCoefficients); ++i)
        polynomial = polynomial * z + arctangentCoefficients[i];
    ZRFloat8 angle = t * polynomial;
    angle = steep ? pi / 2 - angle : angle;
    angle = xBits < 0 ? pi - angle : angle;
    angle = (ZRFloat8)((ZRInt8)angle | (yBits & INT_MIN));
    // The guards above can turn a NaN into an angle; a NaN in gives a NaN out.
    const ZRInt8 ordered = (x == x) & (y == y);
    y = ordered ? angle : x + y;
}

// Runs one vector through operation(vector pointers …) when fewer than eight values remain, padded with zeros, so
// that the last values get the same arithmetic as the others.
template <size_t Inputs, size_t Outputs, typename Operation>
[[gnu::always_inline]] inline void padded(const float* const (&inputs)[Inputs], float* const (&outputs)[Outputs],
    size_t count, size_t width, Operation operation) noexcept
{
    float inputLanes[Inputs][2 * ZRLanes] = {};
    float outputLanes[Outputs][ZRLanes] = {};
    for (size_t i = 0; i < Inputs; ++i)
        std::memcpy(inputLanes[i], inputs[i], count * width * sizeof(float));
    for (size_t i = 0; i < Outputs; ++i)
        std::memcpy(outputLanes[i], outputs[i], count * sizeof(float));
    operation(inputLanes, outputLanes);
    for (size_t i = 0; i < Outputs; ++i)
        std::memcpy(outputs[i], outputLanes[i], count * sizeof(float));
}

// The frame is the samples times the window, followed by zeros up to its length.
ZR_VECTOR_CLONES void windowFrame(
    float* frame, size_t length, const float* samples, size_t count, const float* window) noexcept
{
    size_t i = 0;
    for (; i + ZRStep <= count; i += ZRStep) {
        ZRForEachVector([&](size_t k) {
            ZRFloat8 sample, weight;
            ZRLoad(sample, samples + i + k * ZRLanes);
            ZRLoad(weight, window + i + k * ZRLanes);
            ZRStore(frame + i + k * ZRLanes, sample * weight);
        });
    }
    for (; i < count; ++i)
        frame[i] = samples[i] * window[i];
    std::memset(frame + count, 0, (length - count) * sizeof(float));
}

// Adds the magnitudes and phases of eight bins, read as interleaved real and imaginary parts and doubled into the
// packed scale, to the spectra.
[[gnu::always_inline]] inline void accumulateVector(const float* bins, float* magnitudes, float* phases) noexcept
{
    ZRFloat8 low, high;
    ZRLoad(low, bins);
    ZRLoad(high, bins + ZRLanes);
    // Adding +0 makes a zero part +0: the transform's arithmetic leaves zeros of either sign, and silence should
    // have the phase 0 rather than ±π.
    const ZRFloat8 real = __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14) * 2.0f + 0.0f;
    ZRFloat8 imaginary = __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15) * 2.0f + 0.0f;
    ZRFloat8 magnitude = real * real + imaginary * imaginary;
    squareRoot(magnitude);
    arctangent(imaginary, real);
    ZRFloat8 sum;
    ZRLoad(sum, magnitudes);
    ZRStore(magnitudes, sum + magnitude);
    ZRLoad(sum, phases);
    ZRStore(phases, sum + imaginary);
}

ZR_VECTOR_CLONES void accumulateBins(const float* bins, float* magnitudes, float* phases, size_t count) noexcept
{
    size_t k = 0;
    for (; k + ZRLanes <= count; k += ZRLanes)
        accumulateVector(bins + 2 * k, magnitudes + k, phases + k);
    if (k < count) {
        padded<1, 2>({ bins + 2 * k }, { magnitudes + k, phases + k }, count - k, 2,
            [](auto& in, auto& out) { accumulateVector(in[0], out[0], out[1]); });
    }
}

[[gnu::always_inline]] inline void phaseVector(const float* real, const float* imaginary, float* result) noexcept
{
    ZRFloat8 x, y;
    ZRLoad(x, real);
    ZRLoad(y, imaginary);
    arctangent(y, x);
    ZRStore(result, y);
}

ZR_VECTOR_CLONES void phasesOf(const float* real, const float* imaginary, float* result, size_t count) noexcept
{
    size_t k = 0;
    for (; k + ZRLanes <= count; k += ZRLanes)
        phaseVector(real + k, imaginary + k, result + k);
    if (k < count) {
        padded<2, 1>({ real + k, imaginary + k }, { result + k }, count - k, 1,
            [](auto& in, auto& out) { phaseVector(in[0], in[1], out[0]); });
    }
}

}

ZRFFTBuffer::ZRFFTBuffer(uint32_t resolution, std::unique_ptr<ZRRealFFT> fft)
    : _resolution(resolution)
    , _fft(std::move(fft))
    , _windowFunction(_fft->length())
{
}

ZRFFTBuffer::~ZRFFTBuffer() = default;

std::unique_ptr<ZRFFTBuffer> ZRFFTBuffer::bufferWithResolution(uint32_t resolution, uint32_t windowType)
{
    auto fft = ZRRealFFT::transformWithLog2Length(resolution);
    if (!fft)
        return nullptr;
    std::unique_ptr<ZRFFTBuffer> buffer(new ZRFFTBuffer(resolution, std::move(fft)));
    buffer->setWindowType(windowType);
    buffer->reset();
    return buffer;
}

bool ZRFFTBuffer::setResolution(uint32_t resolution)
{
    if (resolution == _resolution)
        return true;
    auto fft = ZRRealFFT::transformWithLog2Length(resolution);
    if (!fft)
        return false;
    _fft = std::move(fft);
    _resolution = resolution;
    _windowFunction.assign(_fft->length(), 0.0f);
    _buildWindowFunction();
    return true;
}

void ZRFFTBuffer::setWindowType(uint32_t windowType)
{
    if (windowType == _windowType)
        return;
    _windowType = windowType;
    _buildWindowFunction();
}

// Every window is periodic (cosines over n / N) and none is normalised. Each formula keeps its own order of
// operations and mix of float and double, and the value is rounded to float when stored.
void ZRFFTBuffer::_buildWindowFunction()
{
    const uint32_t length = _fft->length();
    const double N = length;
    const float half = float(length / 2);
    std::fill(_windowFunction.begin(), _windowFunction.end(), 0.0f);
    const auto fill = [&](auto value) {
        for (uint32_t n = 0; n < length; ++n)
            _windowFunction[n] = float(value(n));
    };
    // cos(k × 2π × n / N) for k = 1 … 4, with the multiples of 2π as written.
    const auto cosine = [N](int k, uint32_t n) {
        constexpr double multiples[] = { 6.283185307179586, 12.566370614359172, 18.84955592153876, 25.132741228718345 };
        return std::cos(multiples[k - 1] * double(n) / N);
    };
    constexpr double pi = 3.141592653589793;

    switch (_windowType) {
    case WindowRectangular:
        fill([](uint32_t) { return 1.0; });
        break;
    case WindowBlackman:
        fill([&](uint32_t n) { return cosine(1, n) * -0.5 + 0.42 + cosine(2, n) * 0.08; });
        break;
    case WindowHamming:
        fill([&](uint32_t n) { return cosine(1, n) * -0.46164 + 0.53836; });
        break;
    case WindowHann:
        fill([&](uint32_t n) { return (1.0 - cosine(1, n)) * 0.5; });
        break;
    case WindowGaussian:
        // t spans -2.5 up to just below 2.5, all in float.
        fill([&](uint32_t n) {
            const float t = (float(n) - half) / half * 2.5f;
            return std::pow(2.7182817f, t * (-0.5f * t));
        });
        break;
    case WindowTriangular: {
        const float last = float(length - 1);
        fill([&](uint32_t n) {
            const float rise = last * 0.5f - std::fabs(float(n) + last * -0.5f);
            return double(rise) * (2.0 / last);
        });
        break;
    }
    case WindowLinearRamp: {
        const uint32_t middle = (length - 1) / 2;
        fill([&](uint32_t n) {
            const float distance = float(uint32_t(n - middle));
            return double(half - distance) * (2.0 / N);
        });
        break;
    }
    case WindowBartlettHann:
        fill([&](uint32_t n) {
            return std::fabs(float(n) / float(length) - 0.5f) * -0.48 + 0.62 + cosine(1, n) * -0.38;
        });
        break;
    case WindowNuttall:
        fill([&](uint32_t n) {
            return cosine(1, n) * -0.487396 + 0.355768 + cosine(2, n) * 0.144232 + cosine(3, n) * -0.012604;
        });
        break;
    case WindowBlackmanHarris:
        fill([&](uint32_t n) {
            return cosine(1, n) * -0.48829 + 0.35875 + cosine(2, n) * 0.14128 + cosine(3, n) * -0.011168;
        });
        break;
    case WindowBlackmanNuttall:
        fill([&](uint32_t n) {
            return cosine(1, n) * -0.4891775 + 0.3635819 + cosine(2, n) * 0.1365995 + cosine(3, n) * -0.0106411;
        });
        break;
    case WindowFlatTop:
        fill([&](uint32_t n) {
            return cosine(4, n) * 0.0322
                + (cosine(3, n) * -0.388 + (cosine(2, n) * 1.29 + (1.0 + -1.93 * cosine(1, n))));
        });
        break;
    case WindowBohman:
        fill([&](uint32_t n) {
            const float x = std::fabs(float(n) - half) / half;
            return (1.0 - x) * std::cos(pi * x) + std::sin(pi * x) / pi;
        });
        break;
    default:
        break;
    }
}

void ZRFFTBuffer::reset()
{
    _analysisCount = 0;
    // A failed allocation leaves spectra that every analysis refuses.
    _spectra.createWithNumberOfBuffers(2, _fft->length() / 2 * uint32_t(sizeof(float)), nullptr);
}

std::span<float> ZRFFTBuffer::_spectrum(uint32_t index) const noexcept
{
    auto* data = static_cast<float*>(_spectra.bufferAtIndex(index));
    if (!data)
        return {};
    return { data, (_spectra.list()->mBuffers + index)->mDataByteSize / sizeof(float) };
}

bool ZRFFTBuffer::analyzeAudioBuffer(const ZRNativeAudioBuffer& buffer)
{
    const uint32_t channels = buffer.channels();
    _spectra.setCount(2 * channels);
    for (uint32_t channel = 0; channel < channels; ++channel) {
        // A channel's own entry may be shorter than the buffer's frame count, or have no data at all.
        const float* samples = buffer.channel(channel);
        const uint32_t available = samples ? (buffer.list()->mBuffers + channel)->mDataByteSize / sizeof(float) : 0;
        if (!analyzeAudioBuffer(samples, std::min(buffer.frames(), available), channel))
            return false;
    }
    return true;
}

bool ZRFFTBuffer::analyzeAudioBuffer(const float* samples, uint32_t count, uint32_t channel) noexcept
{
    if (channel >= numberOfChannels() || (!samples && count > 0))
        return false;
    const size_t length = _fft->length();
    const size_t bins = length / 2;
    const std::span<float> magnitudes = _spectrum(2 * channel);
    const std::span<float> phases = _spectrum(2 * channel + 1);
    // After a larger resolution without a reset the spectra are too short for a frame.
    if (magnitudes.size() < bins || phases.size() < bins)
        return false;
    const std::span<float> frame = _fft->input();
    const std::span<float> output = _fft->output();
    size_t position = 0;
    do {
        const size_t taken = std::min<size_t>(count - position, length);
        windowFrame(frame.data(), length, samples + position, taken, _windowFunction.data());
        _fft->transform();
        // The packed layout keeps the Nyquist term, which is real like the DC term, as bin 0's imaginary part.
        output[1] = output[length];
        accumulateBins(output.data(), magnitudes.data(), phases.data(), bins);
        position += length;
    } while (position < count);
    ++_analysisCount;
    return true;
}

std::span<const float> ZRFFTBuffer::magnitudeForChannel(uint32_t channel) const noexcept
{
    return channel < numberOfChannels() ? _spectrum(2 * channel) : std::span<const float> {};
}

std::span<const float> ZRFFTBuffer::phaseForChannel(uint32_t channel) const noexcept
{
    return channel < numberOfChannels() ? _spectrum(2 * channel + 1) : std::span<const float> {};
}

float ZRFFTBuffer::pitchForRate(uint32_t rate, uint32_t channel) const
{
    constexpr size_t firstCandidate = 5;
    const std::span<const float> magnitudes = magnitudeForChannel(channel);
    const size_t bins = magnitudes.size();
    if (bins <= firstCandidate)
        return 0.0f;
    // The spectrum times its copies compressed by 2 and by 3; past the compressed copies' ends they count as 1.
    std::vector<float> product(bins);
    for (size_t k = 0; k < bins; ++k) {
        const float halved = k < bins / 2 ? (magnitudes[2 * k] + magnitudes[2 * k + 1]) * 0.5f : 1.0f;
        const float thirded
            = k < bins / 3 ? (magnitudes[3 * k] + magnitudes[3 * k + 1] + magnitudes[3 * k + 2]) / 3.0f : 1.0f;
        product[k] = magnitudes[k] * halved * thirded;
    }
    // The first of the largest values, as the bins below 5 never are candidates.
    const auto largest = [&product] {
        size_t index = firstCandidate;
        for (size_t k = firstCandidate + 1; k < product.size(); ++k) {
            if (product[k] > product[index])
                index = k;
        }
        return index;
    };
    const size_t first = largest();
    const float firstValue = product[first];
    product[first] = 0.0f;
    const size_t second = largest();
    const float secondValue = product[second];
    const bool octaveBelow = double(second) > double(first) * 0.4 && double(first) * 0.6 > double(second)
        && secondValue / firstValue > 0.1;
    const size_t index = octaveBelow ? second : first;
    return float(double(rate) / double(2 * bins) * double(index));
}

void ZRFFTBuffer::phases(
    std::span<const float> real, std::span<const float> imaginary, std::span<float> result) noexcept
{
    phasesOf(real.data(), imaginary.data(), result.data(), std::min({ real.size(), imaginary.size(), result.size() }));
}
