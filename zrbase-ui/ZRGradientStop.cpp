#include <zrbase-ui/ZRGradientStop.h>

ZRGradientStop::ZRGradientStop(const QColor& color, float position, float midpoint)
    : _color(color.toRgb())
    , _position(position)
    , _midpoint(midpoint)
{
}

void ZRGradientStop::setColor(const QColor& color) { _color = color.toRgb(); }
