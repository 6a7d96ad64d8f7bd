#include <zrbase-ui/ZRGradient.h>

#include <QBrush>
#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

QColor gray(double level, double alpha = 1) { return QColor::fromRgbF(level, level, level, alpha); }

ZRGradient gradientWithStops(std::initializer_list<ZRGradientStop> stops)
{
    ZRGradient gradient;
    for (const ZRGradientStop& stop : stops)
        gradient.addStop(stop);
    return gradient;
}

// The samples a fill takes per device pixel along the axis, and the most it takes in all.
constexpr int samplesPerPixel = 4;
constexpr double longestLookup = 65536;

}

ZRGradient::ZRGradient(const QColor& startingColor, const QColor& endingColor)
{
    addStop({ startingColor, 0 });
    addStop({ endingColor, 1 });
}

ZRGradient ZRGradient::clearGlossyGradient()
{
    return gradientWithStops({ { gray(0.0, 0.5), 0, 0.95f }, { gray(0.25, 0.5), 0.5f }, { gray(0.75, 0.5), 1 } });
}

ZRGradient ZRGradient::audioLevelGradient()
{
    return gradientWithStops(
        { { QColor::fromRgbF(0, 1, 0), 0, 0.7f }, { QColor::fromRgbF(1, 1, 0), 0.7f, 0.7f }, { Qt::red, 1 } });
}

ZRGradient ZRGradient::footerGradient()
{
    ZRGradientStop first(gray(0.902), 0, 1);
    first.setBlend(false);
    return gradientWithStops({ first, { gray(0.953), 0.5f }, { gray(0.99), 1 } });
}

ZRGradient ZRGradient::mediumGrayBackgroundGradient() { return { gray(0.82), gray(0.93) }; }

ZRGradient ZRGradient::lightGrayBackgroundGradient() { return { gray(0.875), gray(0.957) }; }

void ZRGradient::addStop(const ZRGradientStop& stop)
{
    _stops.push_back(stop);
    std::stable_sort(_stops.begin(), _stops.end(),
        [](const ZRGradientStop& left, const ZRGradientStop& right) { return left.position() < right.position(); });
}

ZRGradientStop* ZRGradient::stopAtIndex(uint32_t index) noexcept
{
    return index < _stops.size() ? &_stops[index] : nullptr;
}

const ZRGradientStop* ZRGradient::stopAtIndex(uint32_t index) const noexcept
{
    return index < _stops.size() ? &_stops[index] : nullptr;
}

const ZRGradientStop* ZRGradient::stopAbovePosition(float position) const noexcept
{
    if (_stops.empty())
        return nullptr;
    if (position >= 1)
        return &_stops.back();
    const ZRGradientStop* nearest = nullptr;
    for (const ZRGradientStop& stop : _stops)
        if (stop.position() > position && (!nearest || stop.position() - position < nearest->position() - position))
            nearest = &stop;
    return nearest;
}

const ZRGradientStop* ZRGradient::stopBelowPosition(float position) const noexcept
{
    if (_stops.empty())
        return nullptr;
    if (position <= 0)
        return &_stops.front();
    const ZRGradientStop* nearest = nullptr;
    for (const ZRGradientStop& stop : _stops)
        if (stop.position() <= position && (!nearest || position - stop.position() < position - nearest->position()))
            nearest = &stop;
    return nearest;
}

std::array<float, 4> ZRGradient::componentsForPosition(float position) const noexcept
{
    const ZRGradientStop* low = stopBelowPosition(position);
    const ZRGradientStop* high = stopAbovePosition(position);
    if (!low && !high)
        return { 0, 0, 0, 0 };
    // Beyond the last stop below 1, or before the first above 0, the one stop there is holds.
    if (!low)
        low = high;
    if (!high)
        high = low;
    const auto components = [](const QColor& color) {
        return std::array<float, 4> { static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
            static_cast<float>(color.blueF()), static_cast<float>(color.alphaF()) };
    };
    const std::array<float, 4> lower = components(low->color()), upper = components(high->color());
    const float b = low->position(), a = high->position();
    // Where both stops coincide the blend has no length: the upper colour is reached.
    if (a == b)
        return upper;
    const float middle = (a - b) * low->midpoint() + b;
    if (!low->blend())
        return middle > position ? lower : upper;
    const float fraction
        = middle > position ? (position - b) / (middle - b) * 0.5f : 0.5f + (position - middle) / (a - middle) * 0.5f;
    std::array<float, 4> result;
    for (size_t i = 0; i < 4; ++i)
        result[i] = std::clamp(lower[i] + (upper[i] - lower[i]) * fraction, 0.0f, 1.0f);
    return result;
}

QColor ZRGradient::colorForPosition(float position) const
{
    const auto [red, green, blue, alpha] = componentsForPosition(position);
    return QColor::fromRgbF(red, green, blue, alpha);
}

void ZRGradient::drawInRect(QPainter& painter, const QRectF& rect, float angle) const
{
    _fill(painter, rect, nullptr, angle);
}

void ZRGradient::drawInPath(QPainter& painter, const QPainterPath& path, float angle) const
{
    if (path.elementCount() == 0)
        return;
    _fill(painter, path.boundingRect(), &path, angle);
}

void ZRGradient::_fill(QPainter& painter, const QRectF& bounds, const QPainterPath* path, float angle) const
{
    // The axis: the points (-1, 0) and (1, 0) rotated by the angle, scaled by half the bounds and moved to their
    // centre. The screen's y grows downwards, so the rotation turns the other way to make 90 degrees run upwards.
    const double radians = angle * std::numbers::pi / 180;
    const QPointF centre = bounds.center();
    const QPointF half(bounds.width() / 2 * std::cos(radians), -bounds.height() / 2 * std::sin(radians));
    const QPointF start = centre - half, axis = 2 * half;
    const double axisSquared = QPointF::dotProduct(axis, axis);
    const QTransform device = painter.deviceTransform();
    const double devicePixelsPerUnit = QLineF(device.map(start), device.map(start + axis)).length();

    painter.save();
    if (path)
        painter.setClipPath(*path, Qt::IntersectClip);
    else
        painter.setClipRect(bounds, Qt::IntersectClip);
    // A shape without width or height along the axis, or without finite bounds, takes the first colour.
    if (!(axisSquared > 0 && std::isfinite(axisSquared)) || !(devicePixelsPerUnit > 0)
        || !std::isfinite(devicePixelsPerUnit)) {
        painter.fillRect(bounds, colorForPosition(0));
        painter.restore();
        return;
    }

    // The positions the bounds cover (beyond 0 and 1 the end colours extend) and two pixels more at each end,
    // sampled four times per device pixel along the axis. Sample i stands for the lookup coordinates i … i + 1
    // and is taken at their middle, so that on an axis along the pixel grid every pixel centre takes the colour of
    // its own place exactly.
    double low = 1, high = 0;
    for (const QPointF& corner : { bounds.topLeft(), bounds.topRight(), bounds.bottomLeft(), bounds.bottomRight() }) {
        const double position = QPointF::dotProduct(corner - start, axis) / axisSquared;
        low = std::min(low, position);
        high = std::max(high, position);
    }
    low -= 2 / devicePixelsPerUnit;
    high += 2 / devicePixelsPerUnit;
    const double step = 1 / (devicePixelsPerUnit * samplesPerPixel);
    const int count = static_cast<int>(std::min(std::ceil((high - low) / step) + 1, longestLookup));
    const double sampleStep = std::max(step, (high - low) / (count - 1));
    QImage lookup(count, 1, QImage::Format_ARGB32_Premultiplied);
    auto* samples = reinterpret_cast<QRgb*>(lookup.scanLine(0));
    bool opaque = true;
    for (int i = 0; i < count; ++i) {
        const double position = std::clamp(low + i * sampleStep, 0.0, 1.0);
        const auto [red, green, blue, alpha] = componentsForPosition(static_cast<float>(position));
        samples[i]
            = qPremultiply(qRgba(qRound(red * 255), qRound(green * 255), qRound(blue * 255), qRound(alpha * 255)));
        opaque = opaque && qAlpha(samples[i]) == 255;
    }

    const QTransform world = painter.worldTransform();
    if (world.type() <= QTransform::TxTranslate && painter.device()->devicePixelRatio() == 1) {
        // Pixels straight from the lookup: the coordinate of each pixel centre steps by a constant along a row and
        // down a column, so a row costs one add and one load per pixel. The rows are then copied in unscaled.
        const QRect area = world.mapRect(bounds).toAlignedRect().intersected(
            QRect(0, 0, painter.device()->width(), painter.device()->height()));
        if (!area.isEmpty()) {
            QImage rows(area.size(), opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
            const double perUnit = 1 / (axisSquared * sampleStep);
            const double perColumn = axis.x() * perUnit, perRow = axis.y() * perUnit;
            const QPointF firstCentre = QPointF(area.x() + 0.5, area.y() + 0.5) - QPointF(world.dx(), world.dy());
            const double first = QPointF::dotProduct(firstCentre - start, axis) * perUnit - low / sampleStep + 0.5;
            const double last = count - 1;
            for (int y = 0; y < area.height(); ++y) {
                auto* line = reinterpret_cast<QRgb*>(rows.scanLine(y));
                double coordinate = first + y * perRow;
                for (int x = 0; x < area.width(); ++x, coordinate += perColumn)
                    line[x] = samples[static_cast<int>(std::clamp(coordinate, 0.0, last))];
            }
            painter.setWorldTransform(QTransform());
            painter.drawImage(area.topLeft(), rows);
        }
    } else {
        // Under a rotating or scaling transform a texture brush lays the lookup along the axis, constant across it.
        const QPointF along = axis * sampleStep;
        const QPointF across = QPointF(-axis.y(), axis.x()) / std::sqrt(axisSquared);
        const QPointF origin = start + axis * (low - 0.5 * sampleStep);
        QBrush brush(lookup);
        brush.setTransform(QTransform(along.x(), along.y(), across.x(), across.y(), origin.x(), origin.y()));
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.fillRect(bounds, brush);
    }
    painter.restore();
}

ZRDictionary ZRGradient::state() const
{
    ZRArray stops;
    for (const ZRGradientStop& stop : _stops) {
        const QColor& color = stop.color();
        stops.emplace_back(ZRDictionary {
            { "color", ZRArray { color.redF(), color.greenF(), color.blueF(), color.alphaF() } },
            { "position", stop.position() },
            { "midpoint", stop.midpoint() },
            { "blend", stop.blend() },
        });
    }
    return { { "stops", std::move(stops) } };
}

void ZRGradient::setState(const ZRDictionary& state)
{
    const auto* stops = ZRDictionaryObject(state, "stops");
    if (!stops || !stops->array())
        return;
    _stops.clear();
    for (const auto& entry : *stops->array()) {
        const ZRDictionary* fields = entry.dictionary();
        if (!fields)
            continue;
        ZRGradientStop stop;
        if (const auto* color = ZRDictionaryObject(*fields, "color"); color && color->array()) {
            std::array<double, 4> components { 0, 0, 0, 1 };
            for (size_t i = 0; i < std::min<size_t>(4, color->array()->size()); ++i)
                components[i] = std::clamp((*color->array())[i].doubleValue(), 0.0, 1.0);
            stop.setColor(QColor::fromRgbF(components[0], components[1], components[2], components[3]));
        }
        if (const auto* position = ZRDictionaryObject(*fields, "position"))
            stop.setPosition(position->floatValue());
        if (const auto* midpoint = ZRDictionaryObject(*fields, "midpoint"))
            stop.setMidpoint(midpoint->floatValue());
        if (const auto* blend = ZRDictionaryObject(*fields, "blend"))
            stop.setBlend(blend->boolValue());
        addStop(stop);
    }
}
