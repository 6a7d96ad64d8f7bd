#include <zrbase-ui/ZRValueMapPanel.h>

#include <zrbase-ui/ZRValueMapPanelOutputText.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

namespace {

constexpr const char* frameKey = "valueMapPanel";

QString localized(std::string_view english) { return QString::fromStdString(ZRLocalizedString(english)); }

}

ZRValueMapPanel& ZRValueMapPanel::sharedPanel()
{
    // Made once and kept for the life of the application, as the one panel every caller shares.
    static ZRValueMapPanel* shared = new ZRValueMapPanel;
    return *shared;
}

ZRValueMapPanel::ZRValueMapPanel()
    : QWidget(nullptr, Qt::Tool)
    , _presets(ZRValueMap::presets())
    , _presetsPopup(new QComboBox(this))
    , _typePopup(new QComboBox(this))
    , _editor(new ZRValueMapEditor(QSize(250, 250), this))
    , _outputText(new ZRValueMapPanelOutputText(this))
    , _addHandleButton(new QPushButton(localized("Add Point"), this))
    , _removeHandleButton(new QPushButton(localized("Remove Point"), this))
    , _resetButton(new QPushButton(localized("Reset"), this))
{
    setWindowTitle(localized("Value Map"));
    _editor->setDelegate(this);

    const char* kinds[] = { "Segmented", "Logarithmic", "Quadratic", "Cubic" };
    for (uint32_t kind = 0; kind < 4; ++kind)
        _typePopup->addItem(localized(kinds[kind]), kind);
    connect(_typePopup, &QComboBox::activated, this,
        [this](int index) { typeChanged(_typePopup->itemData(index).toUInt()); });

    // The first item is the menu's title; choosing a preset loads it and shows the title again.
    _presetsPopup->addItem(localized("Presets"));
    for (size_t i = 0; i < _presets.size(); ++i) {
        const auto* name = ZRDictionaryObject(_presets[i], "name");
        _presetsPopup->addItem(localized(name ? name->stringValue() : std::string()), static_cast<qulonglong>(i));
    }
    connect(_presetsPopup, &QComboBox::activated, this, [this](int index) {
        if (index > 0)
            loadPreset(_presetsPopup->itemData(index).toULongLong());
        _presetsPopup->setCurrentIndex(0);
    });

    connect(_addHandleButton, &QPushButton::clicked, this, [this] { addHandle(); });
    connect(_removeHandleButton, &QPushButton::clicked, this, [this] { removeHandle(); });
    connect(_resetButton, &QPushButton::clicked, this, [this] { reset(); });

    auto* input = new QLabel(localized("Input"), this);
    input->setAlignment(Qt::AlignHCenter);
    input->setStyleSheet("color: #b0b0b0; font-size: 9pt");
    auto* menus = new QHBoxLayout;
    menus->addWidget(_typePopup);
    menus->addWidget(_presetsPopup);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(_addHandleButton);
    buttons->addWidget(_removeHandleButton);
    buttons->addStretch();
    buttons->addWidget(_resetButton);
    auto* layout = new QGridLayout(this);
    layout->addLayout(menus, 0, 0, 1, 2);
    layout->addWidget(_outputText, 1, 0);
    layout->addWidget(_editor, 1, 1);
    layout->addWidget(input, 2, 1);
    layout->addLayout(buttons, 3, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    restoreGeometry(QSettings().value(frameKey).toByteArray());
    _frameRestored = true;
    updateButtons();
}

void ZRValueMapPanel::setValueMap(const ZRValueMap& map)
{
    _map = map;
    _editor->setMap(&*_map);
    updateButtons();
}

void ZRValueMapPanel::open()
{
    show();
    raise();
    activateWindow();
}

void ZRValueMapPanel::loadPreset(size_t index)
{
    if (!_map || index >= _presets.size())
        return;
    _map->setState(_presets[index]);
    _mapDidChange();
}

void ZRValueMapPanel::typeChanged(uint32_t type)
{
    if (!_map)
        return;
    _map->setType(type);
    _mapDidChange();
}

void ZRValueMapPanel::addHandle()
{
    if (!_map || _map->numberOfControlPoints() < 2)
        return;
    const auto& points = _map->controlPoints();
    size_t widest = 0;
    float widestGap = points[1].x - points[0].x;
    for (size_t i = 1; i + 1 < points.size(); ++i) {
        const float gap = points[i + 1].x - points[i].x;
        if (gap > widestGap) {
            widest = i;
            widestGap = gap;
        }
    }
    const ZRPoint left = points[widest], right = points[widest + 1];
    _map->addControlPoint({ (left.x + right.x) / 2, (left.y + right.y) / 2 });
    _mapDidChange();
}

void ZRValueMapPanel::removeHandle()
{
    if (!_map)
        return;
    _map->removeControlPointAtIndex(_editor->selectedHandleIndex());
    _mapDidChange();
}

void ZRValueMapPanel::reset()
{
    if (!_map)
        return;
    _map->reset();
    _mapDidChange();
}

void ZRValueMapPanel::updateButtons()
{
    const uint32_t type = _map ? _map->type() : ZRValueMapSegmented;
    if (const int item = _typePopup->findData(type); item >= 0)
        _typePopup->setCurrentIndex(item);
    const bool segmented = _map && type == ZRValueMapSegmented;
    _addHandleButton->setEnabled(segmented);
    const uint32_t selected = _editor->selectedHandleIndex();
    _removeHandleButton->setEnabled(segmented && _map->numberOfControlPoints() > 2 && selected != ZRNotFound
        && selected > 0 && selected + 1 < _map->numberOfControlPoints());
}

void ZRValueMapPanel::editorValueMapDidChange(ZRValueMapEditor&)
{
    _notifyTarget();
    updateButtons();
}

void ZRValueMapPanel::editorSelectionDidChange(ZRValueMapEditor&) { updateButtons(); }

void ZRValueMapPanel::closeEvent(QCloseEvent* event)
{
    _saveFrame();
    _editor->setMap(nullptr);
    _map.reset();
    updateButtons();
    QWidget::closeEvent(event);
}

void ZRValueMapPanel::moveEvent(QMoveEvent* event)
{
    _saveFrame();
    QWidget::moveEvent(event);
}

void ZRValueMapPanel::resizeEvent(QResizeEvent* event)
{
    _saveFrame();
    QWidget::resizeEvent(event);
}

void ZRValueMapPanel::_mapDidChange()
{
    _editor->updateHandles();
    editorValueMapDidChange(*_editor);
}

void ZRValueMapPanel::_notifyTarget()
{
    if (_target)
        _target(*this);
}

void ZRValueMapPanel::_saveFrame()
{
    if (_frameRestored && isVisible())
        QSettings().setValue(frameKey, saveGeometry());
}
