#include "WaveformWriter.h"

#include "JsonWriter.h"
#include "PngEncoder.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zr {

static int32_t quantize(float value, uint32_t bits)
{
    const float scale = bits == 8 ? 128.0f : 32768.0f;
    const float rounded = std::round(value * scale);
    return int32_t(std::clamp(rounded, -scale, scale - 1.0f));
}

static void appendLittleEndian(std::string& bytes, uint32_t value, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        bytes += char((value >> (8 * i)) & 0xff);
}

std::string waveformDat(const WaveformLevel& level, uint32_t sampleRate, uint32_t bits)
{
    const size_t pointSize = bits == 8 ? 1 : 2;
    std::string bytes;
    bytes.reserve(24 + size_t(level.length) * level.channels * 2 * pointSize);
    appendLittleEndian(bytes, 2, 4);
    appendLittleEndian(bytes, bits == 8 ? 1 : 0, 4);
    appendLittleEndian(bytes, sampleRate, 4);
    appendLittleEndian(bytes, uint32_t(level.resolution.numerator), 4);
    appendLittleEndian(bytes, level.length, 4);
    appendLittleEndian(bytes, level.channels, 4);
    for (uint32_t i = 0; i < level.length; ++i)
        for (uint32_t c = 0; c < level.channels; ++c) {
            appendLittleEndian(bytes, uint32_t(quantize(level.minimum(i, c), bits)), pointSize);
            appendLittleEndian(bytes, uint32_t(quantize(level.maximum(i, c), bits)), pointSize);
        }
    return bytes;
}

std::string waveformDataJson(const WaveformLevel& level, uint32_t sampleRate, uint32_t bits)
{
    JsonWriter json;
    json.beginObject();
    json.member("version", 2);
    json.member("channels", level.channels);
    json.member("sample_rate", sampleRate);
    json.member("samples_per_pixel", uint64_t(level.resolution.numerator));
    json.member("bits", bits);
    json.member("length", level.length);
    json.key("data");
    json.beginArray();
    for (uint32_t i = 0; i < level.length; ++i)
        for (uint32_t c = 0; c < level.channels; ++c) {
            json.value(int64_t(quantize(level.minimum(i, c), bits)));
            json.value(int64_t(quantize(level.maximum(i, c), bits)));
        }
    json.endArray();
    json.endObject();
    return json.take() + '\n';
}

std::string waveformFloatJson(std::span<const WaveformLevel> levels, double sampleRate, uint64_t frames)
{
    JsonWriter json;
    json.beginObject();
    json.member("sample_rate", sampleRate);
    json.member("channels", levels.empty() ? 0u : levels[0].channels);
    json.member("frames", frames);
    json.member("duration_seconds", sampleRate > 0 ? double(frames) / sampleRate : 0.0);
    json.key("levels");
    json.beginArray();
    for (const WaveformLevel& level : levels) {
        json.beginObject();
        json.member("samples_per_pixel", double(level.resolution.numerator) / double(level.resolution.denominator));
        json.member("length", level.length);
        json.key("channel_data");
        json.beginArray();
        for (uint32_t c = 0; c < level.channels; ++c) {
            json.beginObject();
            const auto series = [&](const char* name, auto valueAt) {
                json.key(name);
                json.beginArray();
                for (uint32_t i = 0; i < level.length; ++i)
                    json.value(valueAt(i));
                json.endArray();
            };
            series("min", [&](uint32_t i) { return level.minimum(i, c); });
            series("max", [&](uint32_t i) { return level.maximum(i, c); });
            series("rms", [&](uint32_t i) { return level.rmsAt(i, c); });
            json.endObject();
        }
        json.endArray();
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take() + '\n';
}

std::optional<std::string> waveformPng(const WaveformLevel& level, const WaveformPicture& picture, ZRErrorPtr* error)
{
    const QColor wave(QString::fromStdString(picture.waveColor));
    const QColor rms(QString::fromStdString(picture.rmsColor));
    const QColor background(QString::fromStdString(picture.backgroundColor));
    QImage image(
        int(std::max<uint32_t>(level.length, 1)), int(std::max<uint32_t>(picture.height, 1)), QImage::Format_ARGB32);
    if (image.isNull())
        return pngFailure("the picture is too large", error);
    image.fill(background);

    // A combined lane draws the mean of the channels' values, as the wave buffer folds them.
    std::unique_ptr<ZRWaveBuffer> folded;
    const ZRWaveBuffer* peaks = level.peaks.get();
    uint32_t lanes = level.channels;
    if (picture.combined && level.channels > 1) {
        folded = ZRWaveBuffer::bufferWithChannels(level.channels, level.length);
        for (uint32_t c = 0; c < level.channels; ++c)
            for (uint32_t i = 0; i < level.length; ++i) {
                folded->setPositiveValue(level.maximum(i, c), i, c);
                folded->setNegativeValue(level.minimum(i, c), i, c);
            }
        folded->average();
        peaks = folded.get();
        lanes = 1;
    }

    QPainter painter(&image);
    const double laneHeight = double(image.height()) / lanes;
    for (uint32_t lane = 0; lane < lanes; ++lane) {
        const double middle = laneHeight * (lane + 0.5);
        const double half = laneHeight / 2.0;
        const auto y = [&](float value) { return middle - std::clamp(double(value), -1.0, 1.0) * half; };
        for (uint32_t i = 0; i < level.length; ++i) {
            const float top = peaks->positiveValueAtIndex(i, lane);
            const float bottom = peaks->negativeValueAtIndex(i, lane);
            painter.setPen(wave);
            painter.drawLine(QPointF(i + 0.5, y(top)), QPointF(i + 0.5, y(bottom)));
            float value = 0.0f;
            if (lanes == 1 && level.channels > 1) {
                for (uint32_t c = 0; c < level.channels; ++c)
                    value += level.rmsAt(i, c);
                value /= float(level.channels);
            } else {
                value = level.rmsAt(i, lane);
            }
            painter.setPen(rms);
            painter.drawLine(QPointF(i + 0.5, y(std::min(value, top))), QPointF(i + 0.5, y(std::max(-value, bottom))));
        }
    }
    painter.end();
    return encodePng(image, error);
}

}
