// The interface toolkit at a glance: a value map shaped in the editor or in the shared panel, its picture, a swatch
// of every named gradient, and a button that opens a file that is not there, so that the error shows as a dialog.
// Run it with --screenshot FILE to render the window offscreen into a PNG and quit.
#include <zrbase-ui/ZRGradient.h>
#include <zrbase-ui/ZRMessageBoxAlertPresenter.h>
#include <zrbase-ui/ZRValueMapEditor.h>
#include <zrbase-ui/ZRValueMapExtension.h>
#include <zrbase-ui/ZRValueMapPanel.h>
#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/foundation/ZRBundle.h>

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>
#include <functional>

namespace {

class GradientSwatch : public QWidget {
public:
    GradientSwatch(ZRGradient gradient, QWidget* parent)
        : QWidget(parent)
        , _gradient(std::move(gradient))
    {
        setFixedSize(150, 34);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        // A checkerboard behind, so that translucent gradients show.
        for (int y = 0; y < height(); y += 6)
            for (int x = 0; x < width(); x += 6)
                painter.fillRect(x, y, 6, 6, ((x + y) / 6) % 2 ? QColor(200, 200, 200) : Qt::white);
        _gradient.drawInRect(painter, rect(), 90);
        painter.setPen(QColor(150, 150, 150));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }

private:
    ZRGradient _gradient;
};

class DemoWindow : public QWidget {
public:
    DemoWindow()
        : _editor(new ZRValueMapEditor(QSize(260, 180), this))
        , _picture(new QLabel(this))
    {
        setWindowTitle("ZRBase Toolkit");
        _map.setControlPoints({ { 0, 0 }, { 0.2f, 0.55f }, { 0.5f, 0.7f }, { 0.8f, 0.75f }, { 1, 1 } });
        _editor->setMap(&_map);
        _editor->setLowExclusion(0.1f);
        _editor->setHighExclusion(0.9f);
        _editor->setSelectedHandleIndex(2);
        _delegate.changed = [this] { _showPicture(); };
        _editor->setDelegate(&_delegate);

        auto* panelButton = new QPushButton("Edit in Panel…", this);
        connect(panelButton, &QPushButton::clicked, this, [this] {
            ZRValueMapPanel& panel = ZRValueMapPanel::sharedPanel();
            panel.setValueMap(_map);
            panel.setTarget([this](ZRValueMapPanel& changed) {
                _map = *changed.valueMap();
                _editor->updateHandles();
                _showPicture();
            });
            panel.open();
        });
        auto* errorButton = new QPushButton("Open a Missing File", this);
        connect(errorButton, &QPushButton::clicked, this, [] {
            ZRErrorPtr error;
            if (!ZRFile::fileWithPath("/nonexistent/Velmora/Session.vmr", &error) && error)
                error->alert();
        });

        auto* curve = new QVBoxLayout;
        curve->addWidget(new QLabel("<b>Value map</b>", this));
        curve->addWidget(_editor);
        curve->addWidget(_picture);
        curve->addWidget(panelButton);
        curve->addWidget(errorButton);
        curve->addStretch();

        auto* swatches = new QGridLayout;
        swatches->addWidget(new QLabel("<b>Named gradients</b>", this), 0, 0, 1, 2);
        const std::pair<const char*, ZRGradient> gradients[] = {
            { "Clear glossy", ZRGradient::clearGlossyGradient() },
            { "Audio level", ZRGradient::audioLevelGradient() },
            { "Footer", ZRGradient::footerGradient() },
            { "Medium grey background", ZRGradient::mediumGrayBackgroundGradient() },
            { "Light grey background", ZRGradient::lightGrayBackgroundGradient() },
        };
        int row = 1;
        for (const auto& [name, gradient] : gradients) {
            swatches->addWidget(new GradientSwatch(gradient, this), row, 0);
            swatches->addWidget(new QLabel(name, this), row++, 1);
        }
        auto* level = new QLabel("Audio level at 30°", this);
        swatches->addWidget(level, row++, 0, 1, 2);
        auto* meter = new QLabel(this);
        QPixmap meterPicture(300, 22);
        QPainter meterPainter(&meterPicture);
        ZRGradient::audioLevelGradient().drawInRect(meterPainter, QRectF(0, 0, 300, 22), 30);
        meterPainter.end();
        meter->setPixmap(meterPicture);
        swatches->addWidget(meter, row++, 0, 1, 2);
        swatches->setRowStretch(row, 1);

        auto* layout = new QHBoxLayout(this);
        layout->addLayout(curve);
        layout->addSpacing(16);
        layout->addLayout(swatches);
        _showPicture();
    }

private:
    struct Delegate : ZRValueMapEditorDelegate {
        void editorValueMapDidChange(ZRValueMapEditor&) override { changed(); }
        std::function<void()> changed;
    };

    void _showPicture() { _picture->setPixmap(QPixmap::fromImage(ZRExtension::imageWithSize(_map, { 260, 70 }))); }

    ZRValueMap _map { ZRValueMapSegmented };
    Delegate _delegate;
    ZRValueMapEditor* _editor;
    QLabel* _picture;
};

}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName("ZRBase");
    QApplication::setApplicationName("ZRToolkitDemo");
    ZRBundle::main().setInfoDictionary({ { "CFBundleName", "ZRToolkitDemo" } });
    ZRMessageBoxAlertPresenter::install();

    DemoWindow window;
    window.show();
    const QStringList arguments = application.arguments();
    if (const qsizetype at = arguments.indexOf("--screenshot"); at >= 0 && at + 1 < arguments.size()) {
        const QString path = arguments[at + 1];
        // The window with the panel beside it, editing the same curve.
        ZRValueMapPanel& panel = ZRValueMapPanel::sharedPanel();
        panel.setValueMap(ZRValueMap::mapWithPresetName("Cubic S-Curve").value_or(ZRValueMap(ZRValueMapCubic)));
        panel.open();
        QTimer::singleShot(0, [&window, &panel, path] {
            const QPixmap left = window.grab(), right = panel.grab();
            QPixmap picture(left.width() + right.width() + 12, std::max(left.height(), right.height()));
            picture.fill(window.palette().window().color());
            QPainter painter(&picture);
            painter.drawPixmap(0, 0, left);
            painter.drawPixmap(left.width() + 12, 0, right);
            painter.end();
            if (!picture.save(path, "PNG")) {
                std::fprintf(stderr, "ZRToolkitDemo: cannot write %s\n", qPrintable(path));
                QApplication::exit(1);
                return;
            }
            QApplication::quit();
        });
    }
    return application.exec();
}
