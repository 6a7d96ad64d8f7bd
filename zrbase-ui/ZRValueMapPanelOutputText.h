#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <QColor>
#include <QFont>
#include <QWidget>

// The value-map panel's vertical axis label: the word "Output" running upwards along the view's right edge.
class ZR_EXPORT ZRValueMapPanelOutputText : public QWidget {
public:
    explicit ZRValueMapPanelOutputText(QWidget* parent = nullptr);

    const QColor& color() const noexcept { return _color; }
    const QFont& font() const noexcept { return _font; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor _color;
    QFont _font;
};
