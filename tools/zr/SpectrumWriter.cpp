#include "SpectrumWriter.h"

#include "PngEncoder.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zr {

static double decibels(double magnitude) { return 20.0 * std::log10(magnitude); }

std::string spectrumCsv(const std::vector<double>& magnitude, double binWidth)
{
    std::string csv = "frequency_hz,magnitude_dbfs\n";
    char number[32];
    for (size_t k = 1; k < magnitude.size(); ++k) {
        csv.append(number, std::to_chars(number, number + sizeof number, double(k) * binWidth).ptr);
        csv += ',';
        const double level = decibels(magnitude[k]);
        if (std::isfinite(level))
            csv.append(number, std::to_chars(number, number + sizeof number, level).ptr);
        csv += '\n';
    }
    return csv;
}

std::optional<std::string> spectrumPng(const std::vector<double>& magnitude, double binWidth, uint32_t width,
    uint32_t height, double floorDb, ZRErrorPtr* error)
{
    QImage image(int(width), int(height), QImage::Format_ARGB32);
    if (image.isNull() || width < 100 || height < 60 || magnitude.size() < 2)
        return pngFailure("the picture must be at least 100 × 60 pixels", error);
    image.fill(Qt::white);

    const QRectF plot(48.0, 18.0, width - 56.0, height - 42.0);
    FrequencyAxis axis;
    axis.highest = binWidth * double(magnitude.size());
    axis.lowest = std::min(20.0, axis.highest / 10.0);
    axis.rows = uint32_t(plot.width()) + 1;
    // The frequency axis runs left to right: the axis' "row" counts from the right edge.
    const auto x = [&](double frequency) { return plot.right() - axis.rowOfFrequency(frequency); };
    const auto y = [&](double level) { return plot.top() + std::clamp(level / floorDb, 0.0, 1.0) * plot.height(); };

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(10);
    painter.setFont(font);
    painter.setPen(QColor(220, 220, 220));
    for (double frequency = 10.0; frequency <= axis.highest; frequency *= 10.0)
        for (int step = 1; step < 10; ++step) {
            const double f = frequency * step;
            if (f >= axis.lowest && f <= axis.highest)
                painter.drawLine(QPointF(x(f), plot.top()), QPointF(x(f), plot.bottom()));
        }
    for (double level = 0.0; level >= floorDb; level -= 20.0)
        painter.drawLine(QPointF(plot.left(), y(level)), QPointF(plot.right(), y(level)));

    painter.setPen(Qt::black);
    painter.drawRect(plot);
    for (double frequency = 100.0; frequency <= axis.highest; frequency *= 10.0) {
        const QString label
            = frequency >= 1000.0 ? QString::number(frequency / 1000.0) + "k" : QString::number(frequency);
        painter.drawText(QRectF(x(frequency) - 20, plot.bottom() + 2, 40, 14), Qt::AlignCenter, label);
    }
    painter.drawText(QRectF(plot.right() - 40, plot.bottom() + 12, 40, 14), Qt::AlignRight, "Hz");
    for (double level = 0.0; level >= floorDb; level -= 20.0)
        painter.drawText(
            QRectF(0, y(level) - 7, plot.left() - 4, 14), Qt::AlignRight | Qt::AlignVCenter, QString::number(level));
    painter.drawText(QRectF(0, 0, plot.left() - 4, 14), Qt::AlignRight, "dBFS");

    // One point per pixel column: the strongest bin that falls into it.
    QPainterPath path;
    bool started = false;
    double column = -1.0, strongest = 0.0;
    const auto flush = [&] {
        const QPointF point(column, y(decibels(strongest)));
        started ? path.lineTo(point) : path.moveTo(point);
        started = true;
    };
    for (size_t k = 1; k < magnitude.size(); ++k) {
        const double frequency = double(k) * binWidth;
        if (frequency < axis.lowest)
            continue;
        const double here = std::round(x(frequency));
        if (here != column && column >= 0.0)
            flush();
        if (here != column)
            strongest = 0.0;
        column = here;
        strongest = std::max(strongest, magnitude[k]);
    }
    if (column >= 0.0)
        flush();
    painter.setClipRect(plot);
    painter.setPen(QPen(QColor(40, 90, 160), 1.2));
    painter.drawPath(path);
    painter.end();
    return encodePng(image, error);
}

static QRgb heat(double fraction)
{
    // Black, blue, red, yellow, white.
    static const double stops[][3] = { { 0, 0, 0 }, { 0, 0, 160 }, { 200, 0, 0 }, { 255, 220, 0 }, { 255, 255, 255 } };
    fraction = std::clamp(fraction, 0.0, 1.0) * 4.0;
    const int index = std::min(int(fraction), 3);
    const double t = fraction - index;
    const auto mix = [&](int channel) { return int(stops[index][channel] * (1 - t) + stops[index + 1][channel] * t); };
    return qRgb(mix(0), mix(1), mix(2));
}

std::optional<std::string> spectrogramPng(const Spectrogram& spectrogram, double floorDb, ZRErrorPtr* error)
{
    const uint32_t columns = spectrogram.columns(), rows = spectrogram.axis().rows;
    QImage image(int(columns), int(rows), QImage::Format_RGB32);
    if (image.isNull())
        return pngFailure("the picture is too large", error);
    for (uint32_t row = 0; row < rows; ++row) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(int(row)));
        for (uint32_t column = 0; column < columns; ++column)
            line[column] = heat(1.0 - spectrogram.level(column, row) / floorDb);
    }
    return encodePng(image, error);
}

}
