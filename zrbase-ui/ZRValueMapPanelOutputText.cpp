#include <zrbase-ui/ZRValueMapPanelOutputText.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <QFontMetricsF>
#include <QPainter>

ZRValueMapPanelOutputText::ZRValueMapPanelOutputText(QWidget* parent)
    : QWidget(parent)
    , _color(Qt::lightGray)
{
    _font.setPointSize(9);
    setMinimumWidth(static_cast<int>(QFontMetricsF(_font).height()) + 4);
}

void ZRValueMapPanelOutputText::paintEvent(QPaintEvent*)
{
    const QString text = QString::fromStdString(ZRLocalizedString("Output"));
    const QFontMetricsF metrics(_font);
    QPainter painter(this);
    painter.setFont(_font);
    painter.setPen(_color);
    // Rotated a quarter turn to the left, the text's baseline runs up 2 pixels inside the right edge, centred.
    painter.translate(width() - 2, height() / 2.0 + metrics.horizontalAdvance(text) / 2);
    painter.rotate(-90);
    painter.drawText(QPointF(0, 0), text);
}
