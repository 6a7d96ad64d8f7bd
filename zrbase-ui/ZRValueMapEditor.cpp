#include <zrbase-ui/ZRValueMapEditor.h>

#include <zrbase/host/foundation/ZRBundle.h>

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr double handleOffset = 5;

// Inside the square, 1 at and above it, 0 below it and for NaN.
float clampUnit(double value) noexcept
{
    if (value > 0 && value < 1)
        return static_cast<float>(value);
    return value >= 1 ? 1.0f : 0.0f;
}

QImage loadHandleImage()
{
    QImage image;
    if (const auto path = ZRBundle::library().pathForResource("value_map_editor_handle", "png"))
        image.load(QString::fromStdString(*path));
    if (image.isNull()) {
        image = QImage(10, 10, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(52, 88, 140));
    }
    return image;
}

}

ZRValueMapEditor::ZRValueMapEditor(const QSize& size, QWidget* parent)
    : QWidget(parent)
    , _handleImage(loadHandleImage())
{
    setFixedSize(size);
    const QSizeF handle = _handleImage.size();
    _graphRect = QRectF(
        handle.width() / 2, handle.height() / 2, size.width() - handle.width(), size.height() - handle.height());
}

void ZRValueMapEditor::setMap(ZRValueMap* map)
{
    _map = map;
    updateHandles();
}

void ZRValueMapEditor::setLowExclusion(float value)
{
    _lowExclusion = value;
    update();
}

void ZRValueMapEditor::setHighExclusion(float value)
{
    _highExclusion = value;
    update();
}

void ZRValueMapEditor::setSelectedHandleIndex(uint32_t index)
{
    if (index == _selectedHandleIndex)
        return;
    if (_selectedHandleIndex < _handleRects.size())
        update(_handleRects[_selectedHandleIndex].toAlignedRect());
    if (index < _handleRects.size())
        update(_handleRects[index].toAlignedRect());
    _selectedHandleIndex = index;
    if (_delegate)
        _delegate->editorSelectionDidChange(*this);
}

QPointF ZRValueMapEditor::viewPointForPoint(ZRPoint point) const noexcept
{
    return { _graphRect.x() + point.x * _graphRect.width(), _graphRect.bottom() - point.y * _graphRect.height() };
}

void ZRValueMapEditor::updateHandles()
{
    const size_t count = _map ? _map->numberOfControlPoints() : 0;
    if (_handleRects.size() != count) {
        _selectedHandleIndex = ZRNotFound;
        _handleRects.assign(count, QRectF());
    }
    for (size_t i = 0; i < count; ++i) {
        const QPointF centre = viewPointForPoint(_map->controlPointAtIndex(static_cast<uint32_t>(i)));
        _handleRects[i] = QRectF(centre - QPointF(handleOffset, handleOffset), QSizeF(_handleImage.size()));
    }
    update();
}

void ZRValueMapEditor::mousePressEvent(QMouseEvent* event)
{
    const QPointF position = event->position();
    for (size_t i = 0; i < _handleRects.size(); ++i) {
        if (_handleRects[i].contains(position)) {
            _draggedHandleIndex = static_cast<uint32_t>(i);
            setSelectedHandleIndex(_draggedHandleIndex);
            _grabOffset = _handleRects[i].center() - position;
            return;
        }
    }
    setSelectedHandleIndex(ZRNotFound);
}

void ZRValueMapEditor::mouseMoveEvent(QMouseEvent* event)
{
    if (_draggedHandleIndex != ZRNotFound)
        _dragTo(event->position());
}

void ZRValueMapEditor::mouseReleaseEvent(QMouseEvent* event)
{
    if (_draggedHandleIndex == ZRNotFound)
        return;
    _dragTo(event->position());
    _draggedHandleIndex = ZRNotFound;
    if (_delegate)
        _delegate->editorValueMapDidChange(*this);
}

void ZRValueMapEditor::_dragTo(QPointF position)
{
    if (!_map)
        return;
    // The handle's centre follows the mouse at the distance it was grabbed from, pinned to the square.
    const QPointF centre = position + _grabOffset;
    const float x = clampUnit((centre.x() - _graphRect.x()) / _graphRect.width());
    const float y = clampUnit((_graphRect.bottom() - centre.y()) / _graphRect.height());
    _map->setControlPoint({ x, y }, _draggedHandleIndex);
    updateHandles();
}

void ZRValueMapEditor::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    const QRectF graph = _graphRect;
    painter.fillRect(graph, Qt::white);

    // The inputs outside the usable range, shaded.
    const QColor shade(0, 0, 0, 24);
    if (_lowExclusion > 0)
        painter.fillRect(QRectF(graph.x(), graph.y(), graph.width() * _lowExclusion, graph.height()), shade);
    if (_highExclusion < 1) {
        const double left = graph.x() + graph.width() * _highExclusion;
        painter.fillRect(QRectF(left, graph.y(), graph.right() - left, graph.height()), shade);
    }

    painter.setPen(QPen(QColor(225, 225, 225), 0));
    for (int i = 1; i < 4; ++i) {
        const double x = graph.x() + graph.width() * i / 4, y = graph.y() + graph.height() * i / 4;
        painter.drawLine(QPointF(x, graph.top()), QPointF(x, graph.bottom()));
        painter.drawLine(QPointF(graph.left(), y), QPointF(graph.right(), y));
    }
    painter.setPen(QPen(QColor(160, 160, 160), 0));
    painter.drawRect(graph);

    if (!_map)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath curve;
    const int columns = std::max(1, static_cast<int>(graph.width()));
    for (int i = 0; i <= columns; ++i) {
        const float input = static_cast<float>(i) / columns;
        const QPointF point = viewPointForPoint({ input, clampUnit(_map->outputValueForInputValue(input)) });
        if (i == 0)
            curve.moveTo(point);
        else
            curve.lineTo(point);
    }
    painter.setPen(QPen(QColor(40, 70, 120), 1.5));
    painter.drawPath(curve);

    for (size_t i = 0; i < _handleRects.size(); ++i) {
        painter.drawImage(_handleRects[i].topLeft(), _handleImage);
        if (i == _selectedHandleIndex) {
            painter.setPen(QPen(QColor(230, 120, 20), 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(_handleRects[i].adjusted(-2, -2, 2, 2));
        }
    }
}
