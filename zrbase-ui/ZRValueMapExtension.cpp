#include <zrbase-ui/ZRValueMapExtension.h>

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

QImage ZRExtension::imageWithSize(const ZRValueMap& map, ZRSize size)
{
    const int width = static_cast<int>(std::ceil(std::max(size.width, 0.0f)));
    const int height = static_cast<int>(std::ceil(std::max(size.height, 0.0f)));
    QImage image(std::max(width, 1), std::max(height, 1), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    if (!(size.width > 0 && size.height > 0))
        return image;

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double w = size.width, h = size.height;
    const auto top = [h](double output) { return h - h * output; };
    QPainterPath curve;
    const auto columns = static_cast<uint32_t>(size.width);
    for (uint32_t x = 0; x <= columns; ++x) {
        const QPointF point(x, top(map.outputValueForInputValue(static_cast<float>(x / w))));
        if (x == 0)
            curve.moveTo(point);
        else
            curve.lineTo(point);
    }
    painter.strokePath(curve, QPen(QColor::fromRgbF(1 / 3.0, 1 / 3.0, 1 / 3.0), 1));
    curve.lineTo(w, h);
    if (map.controlPointAtIndex(0).y > 0)
        curve.lineTo(0, h);
    curve.closeSubpath();
    painter.fillPath(curve, QColor::fromRgbF(0, 1, 0, 0.3));
    painter.setPen(QPen(QColor::fromRgbF(0.5, 0.5, 0.5), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(0.5, 0.5, w - 1, h - 1));
    return image;
}
