#pragma once

#include <zrbase-ui/ZRGradientStop.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <QColor>
#include <QPainterPath>
#include <QRectF>

#include <array>
#include <cstdint>
#include <vector>

class QPainter;

// A multi-stop colour gradient on 0 … 1: a colour for any position, and an axial fill of a rectangle or path at
// any angle. Between a stop and the next the colour blends in two straight halves that meet at the average colour
// at the stop's midpoint, or holds the stop's colour up to the midpoint and then jumps to the next one.
class ZR_EXPORT ZRGradient {
public:
    // No stops.
    ZRGradient() = default;
    // A stop of each colour, at 0 and at 1.
    ZRGradient(const QColor& startingColor, const QColor& endingColor);

    static ZRGradient gradient() { return {}; }
    static ZRGradient gradientWithStartingColor(const QColor& startingColor, const QColor& endingColor)
    {
        return { startingColor, endingColor };
    }

    // The toolkit's named gradients.
    static ZRGradient clearGlossyGradient();
    static ZRGradient audioLevelGradient();
    static ZRGradient footerGradient();
    static ZRGradient mediumGrayBackgroundGradient();
    static ZRGradient lightGrayBackgroundGradient();

    // Appends the stop and sorts the stops by position, stops at equal positions keeping their order.
    void addStop(const ZRGradientStop& stop);
    const std::vector<ZRGradientStop>& stops() const noexcept { return _stops; }
    // Null out of range. Moving a stop through the pointer does not re-sort the gradient.
    ZRGradientStop* stopAtIndex(uint32_t index) noexcept;
    const ZRGradientStop* stopAtIndex(uint32_t index) const noexcept;
    // The last stop at 1 and beyond, else the nearest stop strictly above the position; null if none.
    const ZRGradientStop* stopAbovePosition(float position) const noexcept;
    // The first stop at 0 and below, else the nearest stop at or below the position; null if none.
    const ZRGradientStop* stopBelowPosition(float position) const noexcept;

    // Red, green, blue and alpha at a position, each in 0 … 1.
    std::array<float, 4> componentsForPosition(float position) const noexcept;
    QColor colorForPosition(float position) const;

    // Fills the rectangle or path along the axis through its bounds' centre at the angle (degrees): at 0 from the
    // middle of the left edge to the middle of the right edge, at 90 from the middle of the bottom edge to the
    // middle of the top edge; the end colours extend beyond the axis. Every device pixel takes the colour of its
    // place on the axis, to within one device pixel along it.
    void drawInRect(QPainter& painter, const QRectF& rect, float angle) const;
    void drawInPath(QPainter& painter, const QPainterPath& path, float angle) const;

    // {"stops": [{"color": [red, green, blue, alpha], "position", "midpoint", "blend"}, …]}.
    ZRDictionary state() const;
    // Replaces the stops by those of a "stops" array when present; missing stop keys keep a new stop's defaults.
    void setState(const ZRDictionary& state);

    bool operator==(const ZRGradient&) const = default;

private:
    void _fill(QPainter& painter, const QRectF& bounds, const QPainterPath* path, float angle) const;

    std::vector<ZRGradientStop> _stops;
};
