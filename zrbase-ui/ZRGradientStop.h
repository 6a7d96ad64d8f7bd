#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <QColor>

// One colour stop of a gradient: its colour (kept in RGB), where it lies on 0 … 1, where between it and the next
// stop the half-way colour lies (0.5 by default), and whether it blends to the next stop or holds its colour up to
// that midpoint and then jumps. Changing a stop's position inside a gradient does not re-sort the gradient.
class ZR_EXPORT ZRGradientStop {
public:
    // No colour (transparent black), position 0, midpoint 0.5, blending.
    ZRGradientStop() = default;
    ZRGradientStop(const QColor& color, float position, float midpoint = 0.5f);

    static ZRGradientStop stop() { return {}; }
    static ZRGradientStop stopWithColor(const QColor& color, float position, float midpoint = 0.5f)
    {
        return { color, position, midpoint };
    }

    const QColor& color() const noexcept { return _color; }
    // Converts the colour to RGB.
    void setColor(const QColor& color);
    float position() const noexcept { return _position; }
    void setPosition(float position) noexcept { _position = position; }
    float midpoint() const noexcept { return _midpoint; }
    void setMidpoint(float midpoint) noexcept { _midpoint = midpoint; }
    bool blend() const noexcept { return _blend; }
    void setBlend(bool blend) noexcept { _blend = blend; }

    bool operator==(const ZRGradientStop&) const = default;

private:
    QColor _color = QColor::fromRgbF(0, 0, 0, 0);
    float _position = 0;
    float _midpoint = 0.5f;
    bool _blend = true;
};
