#include <zrbase-ui/ZRValueMapEditor.h>
#include <zrbase-ui/ZRValueMapPanel.h>
#include <zrbase-ui/ZRValueMapPanelOutputText.h>

#include <gtest/gtest.h>

#include <QComboBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>

namespace {

class RecordingDelegate : public ZRValueMapEditorDelegate {
public:
    void editorValueMapDidChange(ZRValueMapEditor&) override { ++changes; }
    void editorSelectionDidChange(ZRValueMapEditor&) override { ++selections; }
    int changes = 0;
    int selections = 0;
};

QPoint centreOf(const ZRValueMapEditor& editor, uint32_t index)
{
    return editor.handleRects()[index].center().toPoint();
}

// The panel is shared by the whole program: every test starts it over with a map of its own.
ZRValueMapPanel& panelWith(const ZRValueMap& map, int* notifications)
{
    ZRValueMapPanel& panel = ZRValueMapPanel::sharedPanel();
    panel.setValueMap(map);
    panel.setTarget([notifications](ZRValueMapPanel&) { ++*notifications; });
    panel.editor().setSelectedHandleIndex(ZRNotFound);
    panel.open();
    return panel;
}

}

TEST(ZRValueMapEditor, draggingMovesTheGrabbedHandleAndPinsItToTheSquare)
{
    ZRValueMap map(ZRValueMapSegmented);
    ZRValueMapEditor editor(QSize(210, 110));
    RecordingDelegate delegate;
    editor.setDelegate(&delegate);
    editor.setMap(&map);
    editor.show();
    EXPECT_EQ(editor.graphRect(), QRectF(5, 5, 200, 100));
    ASSERT_EQ(editor.handleRects().size(), 3u);
    EXPECT_EQ(editor.handleRects()[1], QRectF(100, 50, 10, 10));

    // Grabbed 2 pixels off its centre, the handle keeps that distance while it moves.
    const QPoint grab = centreOf(editor, 1) + QPoint(2, -2);
    QTest::mousePress(&editor, Qt::LeftButton, {}, grab);
    EXPECT_EQ(editor.selectedHandleIndex(), 1u);
    EXPECT_EQ(delegate.selections, 1);
    QTest::mouseMove(&editor, grab + QPoint(40, -20));
    EXPECT_FLOAT_EQ(map.controlPointAtIndex(1).x, 0.7f);
    EXPECT_FLOAT_EQ(map.controlPointAtIndex(1).y, 0.7f);
    EXPECT_EQ(delegate.changes, 0);
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, grab + QPoint(60, 10));
    EXPECT_FLOAT_EQ(map.controlPointAtIndex(1).x, 0.8f);
    EXPECT_FLOAT_EQ(map.controlPointAtIndex(1).y, 0.4f);
    EXPECT_EQ(delegate.changes, 1);

    // Far outside the graph the point stops at the edge; the last point keeps to the right or top edge.
    QTest::mousePress(&editor, Qt::LeftButton, {}, centreOf(editor, 2));
    QTest::mouseMove(&editor, QPoint(400, 300));
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, QPoint(400, 300));
    EXPECT_EQ(map.controlPointAtIndex(2), (ZRPoint { 1, 0 })); // below the diagonal: onto the right edge
    QTest::mousePress(&editor, Qt::LeftButton, {}, centreOf(editor, 0));
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, QPoint(-300, -300));
    EXPECT_EQ(map.controlPointAtIndex(0), (ZRPoint { 0, 1 }));
    EXPECT_EQ(editor.handleRects()[0].center(), QPointF(5, 5));

    // A click beside every handle clears the selection.
    QTest::mouseClick(&editor, Qt::LeftButton, {}, QPoint(60, 80));
    EXPECT_EQ(editor.selectedHandleIndex(), ZRNotFound);
}

TEST(ZRValueMapPanel, buttonsFollowTheKindAndTheSelection)
{
    EXPECT_EQ(&ZRValueMapPanel::sharedPanel(), &ZRValueMapPanel::sharedPanel());
    int notifications = 0;
    ZRValueMapPanel& panel = panelWith(ZRValueMap(ZRValueMapSegmented), &notifications);
    EXPECT_TRUE(panel.addHandleButton().isEnabled());
    EXPECT_FALSE(panel.removeHandleButton().isEnabled());
    EXPECT_EQ(panel.typePopup().currentData().toUInt(), ZRValueMapSegmented);

    // The widest gap is split; on a tie the first pair wins.
    QTest::mouseClick(&panel.addHandleButton(), Qt::LeftButton);
    EXPECT_EQ(panel.valueMap()->controlPointAtIndex(1), (ZRPoint { 0.25f, 0.25f }));
    EXPECT_EQ(notifications, 1);
    EXPECT_EQ(panel.editor().handleRects().size(), 4u);

    for (uint32_t index : { 0u, 3u }) {
        panel.editor().setSelectedHandleIndex(index);
        EXPECT_FALSE(panel.removeHandleButton().isEnabled()) << index;
    }
    panel.editor().setSelectedHandleIndex(2);
    EXPECT_TRUE(panel.removeHandleButton().isEnabled());
    QTest::mouseClick(&panel.removeHandleButton(), Qt::LeftButton);
    EXPECT_EQ(panel.valueMap()->controlPoints(), (std::vector<ZRPoint> { { 0, 0 }, { 0.25f, 0.25f }, { 1, 1 } }));
    EXPECT_EQ(notifications, 2);
    panel.editor().setSelectedHandleIndex(1);
    EXPECT_TRUE(panel.removeHandleButton().isEnabled());
    panel.removeHandle();
    panel.editor().setSelectedHandleIndex(1);
    EXPECT_FALSE(panel.removeHandleButton().isEnabled()); // two points are the fewest

    // Choosing a kind from the menu reshapes the curve; only segmented curves take points.
    emit panel.typePopup().activated(panel.typePopup().findData(ZRValueMapCubic));
    EXPECT_EQ(panel.valueMap()->type(), ZRValueMapCubic);
    EXPECT_EQ(panel.valueMap()->numberOfControlPoints(), 4u);
    EXPECT_EQ(notifications, 4);
    EXPECT_FALSE(panel.addHandleButton().isEnabled());
    panel.editor().setSelectedHandleIndex(1);
    EXPECT_FALSE(panel.removeHandleButton().isEnabled());

    panel.valueMap()->setControlPoint({ 0.9f, 0.1f }, 1);
    QTest::mouseClick(&panel.resetButton(), Qt::LeftButton);
    EXPECT_TRUE(panel.valueMap()->isEqualToDefaultMap());
    EXPECT_EQ(notifications, 5);
}

TEST(ZRValueMapPanel, aPresetLoadsOnceAndTheFrameIsKept)
{
    int notifications = 0;
    ZRValueMapPanel& panel = panelWith(ZRValueMap(ZRValueMapSegmented), &notifications);
    QComboBox& presets = panel.presetsPopup();
    ASSERT_GT(presets.count(), 12);
    EXPECT_EQ(presets.itemText(0), "Presets");
    const int item = presets.findText("Cubic S-Curve");
    ASSERT_GT(item, 0);
    emit presets.activated(item);
    EXPECT_EQ(notifications, 1);
    EXPECT_EQ(presets.currentIndex(), 0);
    EXPECT_EQ(panel.valueMap()->presetName(), "Cubic S-Curve");
    EXPECT_EQ(panel.valueMap()->type(), ZRValueMapCubic);
    EXPECT_FALSE(panel.valueMap()->presetIsModified());
    EXPECT_EQ(panel.typePopup().currentData().toUInt(), ZRValueMapCubic);
    EXPECT_EQ(panel.editor().handleRects().size(), 4u);

    panel.move(140, 90);
    EXPECT_TRUE(QSettings().contains("valueMapPanel"));
    panel.close();
    EXPECT_EQ(panel.valueMap(), nullptr);
    EXPECT_EQ(panel.editor().map(), nullptr);
    EXPECT_FALSE(panel.addHandleButton().isEnabled());
}

TEST(ZRValueMapPanelOutputText, drawsItsWordUpTheRightEdge)
{
    ZRValueMapPanelOutputText text;
    text.resize(20, 120);
    EXPECT_EQ(text.font().pointSize(), 9);
    const QImage image = text.grab().toImage();
    int inked = 0, top = image.height(), bottom = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < qGray(text.palette().window().color().rgb()) - 20) {
                ++inked;
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    EXPECT_GT(inked, 20);
    // Taller than wide, centred on the middle of the view.
    EXPECT_GT(bottom - top, 20);
    EXPECT_NEAR((top + bottom) / 2.0, 60, 4);
}
