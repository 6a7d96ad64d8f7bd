#include <zrbase-ui/ZRGradient.h>

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <cmath>
#include <numbers>

namespace {

QColor gray(double level) { return QColor::fromRgbF(level, level, level); }

ZRGradient fiveStops()
{
    ZRGradient gradient(QColor(20, 40, 200), QColor(250, 250, 10));
    gradient.addStop({ QColor(200, 30, 30), 0.3f, 0.35f });
    gradient.addStop({ QColor(10, 220, 60), 0.5f });
    ZRGradientStop step(QColor(255, 255, 255), 0.75f, 0.4f);
    step.setBlend(false);
    gradient.addStop(step);
    return gradient;
}

// A view that fills itself with a gradient, for painting through a window's backing store.
class Swatch : public QWidget {
public:
    Swatch(const ZRGradient& gradient, QWidget* parent)
        : QWidget(parent)
        , _gradient(gradient)
    {
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        _gradient.drawInRect(painter, rect(), 0);
    }

private:
    ZRGradient _gradient;
};

QImage render(const ZRGradient& gradient, QSize size, float angle)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    gradient.drawInRect(painter, QRectF(QPointF(0, 0), size), angle);
    return image;
}

// The place of a pixel centre on the axis, worked out from the angle with y pointing up as on paper.
float axisPosition(QSize size, float angle, int column, int row)
{
    const double radians = angle * std::numbers::pi / 180;
    const double halfWidth = size.width() / 2.0, halfHeight = size.height() / 2.0;
    const double ax = halfWidth * std::cos(radians), ay = halfHeight * std::sin(radians);
    const double px = column + 0.5 - halfWidth, py = halfHeight - (row + 0.5);
    return static_cast<float>(((px + ax) * 2 * ax + (py + ay) * 2 * ay) / (4 * (ax * ax + ay * ay)));
}

void expectWithinOneStep(QRgb actual, const QColor& expected, const std::string& where)
{
    EXPECT_LE(std::abs(qRed(actual) - qRound(expected.redF() * 255)), 1) << where;
    EXPECT_LE(std::abs(qGreen(actual) - qRound(expected.greenF() * 255)), 1) << where;
    EXPECT_LE(std::abs(qBlue(actual) - qRound(expected.blueF() * 255)), 1) << where;
}

}

TEST(ZRGradient, colorsFollowTheMidpointsAndSteps)
{
    ZRGradient gradient(Qt::black, Qt::white);
    EXPECT_NEAR(gradient.colorForPosition(0.25f).redF(), 0.25, 1e-4);
    gradient.stopAtIndex(0)->setMidpoint(0.25f);
    EXPECT_NEAR(gradient.colorForPosition(0.25f).redF(), 0.5, 1e-4);
    EXPECT_NEAR(gradient.colorForPosition(0.625f).redF(), 0.75, 1e-4);
    gradient.stopAtIndex(0)->setMidpoint(0.5f);
    gradient.stopAtIndex(0)->setBlend(false);
    EXPECT_EQ(gradient.colorForPosition(0.4999f), QColor(Qt::black));
    EXPECT_EQ(gradient.colorForPosition(0.5f), QColor(Qt::white));
    EXPECT_EQ(gradient.colorForPosition(-3), QColor(Qt::black));
    EXPECT_EQ(gradient.colorForPosition(1), QColor(Qt::white));
    EXPECT_EQ(gradient.colorForPosition(7), QColor(Qt::white));
    EXPECT_EQ(ZRGradient().colorForPosition(0.5f).alpha(), 0);

    // Stops stay sorted (equal positions in the order added); the nearest stop above and below a position.
    ZRGradient stops;
    stops.addStop({ Qt::red, 0.8f });
    stops.addStop({ Qt::green, 0.2f });
    stops.addStop({ Qt::blue, 0.8f });
    EXPECT_EQ(stops.stopAtIndex(0)->color(), QColor(Qt::green));
    EXPECT_EQ(stops.stopAtIndex(2)->color(), QColor(Qt::blue));
    EXPECT_EQ(stops.stopAtIndex(3), nullptr);
    EXPECT_EQ(stops.stopAbovePosition(0.5f), stops.stopAtIndex(1));
    EXPECT_EQ(stops.stopAbovePosition(0.9f), nullptr);
    EXPECT_EQ(stops.stopAbovePosition(1), stops.stopAtIndex(2));
    EXPECT_EQ(stops.stopBelowPosition(0.1f), nullptr);
    EXPECT_EQ(stops.stopBelowPosition(0), stops.stopAtIndex(0));
    EXPECT_EQ(stops.stopBelowPosition(0.9f), stops.stopAtIndex(1));
    // Past the last stop its colour holds.
    EXPECT_EQ(stops.colorForPosition(0.9f), QColor(Qt::red));
}

TEST(ZRGradient, namedGradientsAndStateRoundTrip)
{
    const ZRGradient level = ZRGradient::audioLevelGradient();
    ASSERT_EQ(level.stops().size(), 3u);
    EXPECT_EQ(level.stops()[0].color(), QColor(Qt::green));
    EXPECT_EQ(level.stops()[1].color(), QColor(Qt::yellow));
    EXPECT_EQ(level.stops()[2].color(), QColor(Qt::red));
    EXPECT_FLOAT_EQ(level.stops()[1].midpoint(), 0.7f);

    const ZRGradient footer = ZRGradient::footerGradient();
    EXPECT_NEAR(footer.colorForPosition(0.49f).redF(), 0.902, 1e-4);
    EXPECT_NEAR(footer.colorForPosition(0.5f).redF(), 0.953, 1e-4);
    EXPECT_NEAR(footer.colorForPosition(0.75f).redF(), (0.953 + 0.99) / 2, 1e-4);
    const ZRGradient glossy = ZRGradient::clearGlossyGradient();
    EXPECT_NEAR(glossy.colorForPosition(0.475f).redF(), 0.125, 1e-4);
    EXPECT_NEAR(glossy.colorForPosition(0.475f).alphaF(), 0.5, 1e-4);
    EXPECT_NEAR(ZRGradient::mediumGrayBackgroundGradient().colorForPosition(0.5f).redF(), 0.875, 1e-4);
    EXPECT_NEAR(ZRGradient::lightGrayBackgroundGradient().colorForPosition(1).redF(), 0.957, 1e-4);

    ZRGradient restored;
    restored.setState(fiveStops().state());
    EXPECT_EQ(restored, fiveStops());
    restored.setState({});
    EXPECT_EQ(restored, fiveStops());
}

TEST(ZRGradient, fillsMatchTheColourAtEachPixelsPlaceOnTheAxis)
{
    const ZRGradient gradient = fiveStops();
    const QSize size(320, 240);
    for (float angle : { 0.0f, 45.0f, 90.0f, 180.0f, 30.0f }) {
        const QImage image = render(gradient, size, angle);
        for (int row = 0; row < size.height(); row += 7) {
            for (int column = 0; column < size.width(); column += 5) {
                const float position = std::clamp(axisPosition(size, angle, column, row), 0.0f, 1.0f);
                // The lookup is one device pixel long along the axis; the hard step is tested on its own below.
                if (std::abs(position - 0.75f - 0.4f * 0.25f) < 0.01f)
                    continue;
                expectWithinOneStep(image.pixel(column, row), gradient.colorForPosition(position),
                    std::to_string(angle) + " at " + std::to_string(column) + "," + std::to_string(row));
            }
        }
    }
    // The runs: at 0 degrees left to right, at 90 bottom to top, at 180 right to left, at 45 corner to corner.
    const ZRGradient blackToWhite(Qt::black, Qt::white);
    EXPECT_LT(qRed(render(blackToWhite, size, 0).pixel(0, 100)), 2);
    EXPECT_GT(qRed(render(blackToWhite, size, 90).pixel(100, 0)), 253);
    EXPECT_LT(qRed(render(blackToWhite, size, 90).pixel(100, 239)), 2);
    EXPECT_LT(qRed(render(blackToWhite, size, 180).pixel(319, 100)), 2);
    EXPECT_LT(qRed(render(blackToWhite, size, 45).pixel(0, 239)), 2);
    EXPECT_GT(qRed(render(blackToWhite, size, 45).pixel(319, 0)), 253);
}

TEST(ZRGradient, hardStepsLandOnTheirColumnAndPathsAreFilledInside)
{
    ZRGradient step(gray(0.2), gray(0.9));
    step.stopAtIndex(0)->setBlend(false);
    step.stopAtIndex(0)->setMidpoint(0.3f);
    const QImage image = render(step, QSize(200, 10), 0);
    // Column 59's centre lies at 59.5 / 200 < 0.3, column 60's at 60.5 / 200.
    EXPECT_EQ(qRed(image.pixel(59, 5)), 51);
    EXPECT_EQ(qRed(image.pixel(60, 5)), 230);
    const QImage upwards = render(step, QSize(10, 200), 90);
    EXPECT_EQ(qRed(upwards.pixel(5, 200 - 60)), 51);
    EXPECT_EQ(qRed(upwards.pixel(5, 200 - 61)), 230);

    // Under a scaling transform the step still falls between the same device columns.
    QImage scaled(200, 10, QImage::Format_ARGB32_Premultiplied);
    scaled.fill(Qt::black);
    QPainter scaledPainter(&scaled);
    scaledPainter.scale(2, 2);
    step.drawInRect(scaledPainter, QRectF(0, 0, 100, 5), 0);
    scaledPainter.end();
    EXPECT_EQ(qRed(scaled.pixel(59, 5)), 51);
    EXPECT_EQ(qRed(scaled.pixel(60, 5)), 230);
    EXPECT_EQ(qRed(scaled.pixel(199, 9)), 230);

    QImage canvas(100, 100, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    QPainterPath circle;
    circle.addEllipse(QRectF(20, 20, 60, 60));
    ZRGradient(Qt::white, Qt::white).drawInPath(painter, circle, 10);
    ZRGradient(Qt::red, Qt::red).drawInPath(painter, QPainterPath(), 0);
    painter.end();
    EXPECT_EQ(canvas.pixel(50, 50), qRgb(255, 255, 255));
    EXPECT_EQ(canvas.pixel(22, 22), qRgb(0, 0, 0));
    EXPECT_EQ(canvas.pixel(5, 5), qRgb(0, 0, 0));
}

TEST(ZRGradient, aViewInsideAWindowFillsItsOwnRectangle)
{
    QWidget window;
    window.resize(200, 100);
    Swatch swatch(ZRGradient(Qt::black, Qt::white), &window);
    swatch.setGeometry(40, 30, 100, 50);
    window.show();
    const QImage image = window.grab().toImage();
    EXPECT_LT(qRed(image.pixel(40, 50)), 3);
    EXPECT_GT(qRed(image.pixel(139, 50)), 252);
    EXPECT_NEAR(qRed(image.pixel(90, 79)), 128, 2);
    EXPECT_EQ(image.pixel(20, 50), window.palette().window().color().rgb());
}
