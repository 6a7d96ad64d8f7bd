#include "../ZRBenchmarkRatio.h"

#include <zrbase-ui/ZRGradient.h>

#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>
#include <numbers>

// Filling a full-HD rectangle with a five-stop gradient at 30 degrees, against QPainter filling it with a
// QLinearGradient of the same stops along the same axis.
namespace {

void BM_Gradient_drawInRect(benchmark::State& state)
{
    ZRGradient gradient(QColor(20, 40, 200), QColor(250, 250, 10));
    gradient.addStop({ QColor(200, 30, 30), 0.3f });
    gradient.addStop({ QColor(10, 220, 60), 0.5f });
    gradient.addStop({ QColor(255, 255, 255), 0.75f });
    const QRectF rect(0, 0, 1920, 1080);
    const double radians = 30 * std::numbers::pi / 180;
    const QPointF half(rect.width() / 2 * std::cos(radians), -rect.height() / 2 * std::sin(radians));
    QLinearGradient reference(rect.center() - half, rect.center() + half);
    for (const ZRGradientStop& stop : gradient.stops())
        reference.setColorAt(stop.position(), stop.color());

    QImage ours(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    QImage theirs(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    QPainter oursPainter(&ours);
    QPainter theirsPainter(&theirs);
    ZRBenchmarkRatio(
        state, [&] { gradient.drawInRect(oursPainter, rect, 30); }, [&] { theirsPainter.fillRect(rect, reference); },
        int64_t(1920) * 1080 * 4);
}

}

BENCHMARK(BM_Gradient_drawInRect)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
