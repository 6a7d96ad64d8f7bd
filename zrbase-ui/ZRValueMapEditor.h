#pragma once

#include <zrbase/automation/ZRValueMap.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QWidget>

#include <cstdint>
#include <vector>

class ZRValueMapEditor;

// Told about the editor's changes; both calls do nothing unless overridden.
class ZR_EXPORT ZRValueMapEditorDelegate {
public:
    virtual ~ZRValueMapEditorDelegate() = default;
    // A drag of a handle ended.
    virtual void editorValueMapDidChange(ZRValueMapEditor&) { }
    virtual void editorSelectionDidChange(ZRValueMapEditor&) { }
};

// A view in which the user drags the control points of a value map. The unit square fills the view less half a
// handle on each side, with the output rising upwards; each point has a handle, and a drag moves the point under
// the mouse within the square and the map's own constraints.
class ZR_EXPORT ZRValueMapEditor : public QWidget {
public:
    // The editor keeps the size it is made with, so that its graph stays where the handles were placed.
    explicit ZRValueMapEditor(const QSize& size, QWidget* parent = nullptr);

    // The map being edited, not owned; null for none.
    ZRValueMap* map() const noexcept { return _map; }
    void setMap(ZRValueMap* map);
    void setDelegate(ZRValueMapEditorDelegate* delegate) noexcept { _delegate = delegate; }
    // The usable input range; the rest of the graph is shaded.
    float lowExclusion() const noexcept { return _lowExclusion; }
    void setLowExclusion(float value);
    float highExclusion() const noexcept { return _highExclusion; }
    void setHighExclusion(float value);
    // The unit square in view coordinates.
    QRectF graphRect() const noexcept { return _graphRect; }
    const std::vector<QRectF>& handleRects() const noexcept { return _handleRects; }
    // ZRNotFound for none.
    uint32_t selectedHandleIndex() const noexcept { return _selectedHandleIndex; }
    void setSelectedHandleIndex(uint32_t index);
    const QImage& handleImage() const noexcept { return _handleImage; }

    // Places the handles where the map's points are and redraws.
    void updateHandles();
    // Where a point of the unit square lies in the view, and back.
    QPointF viewPointForPoint(ZRPoint point) const noexcept;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void _dragTo(QPointF position);

    ZRValueMap* _map = nullptr;
    ZRValueMapEditorDelegate* _delegate = nullptr;
    QImage _handleImage;
    float _lowExclusion = 0;
    float _highExclusion = 1;
    QRectF _graphRect;
    std::vector<QRectF> _handleRects;
    uint32_t _selectedHandleIndex = ZRNotFound;
    // The handle being dragged, and the distance from the mouse to its centre when the drag began.
    uint32_t _draggedHandleIndex = ZRNotFound;
    QPointF _grabOffset;
};
