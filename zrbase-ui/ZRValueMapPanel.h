#pragma once

#include <zrbase-ui/ZRValueMapEditor.h>
#include <zrbase/automation/ZRValueMap.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class QComboBox;
class QPushButton;
class ZRValueMapPanelOutputText;

// The one floating tool window in which the user edits a value map: a menu of curve kinds, a menu of the library's
// presets, the editor, and buttons to add and remove points (segmented curves only) and to reset the curve. Every
// change is reported to the target, which reads the edited map from the panel. The window's frame is kept in the
// application's settings under "valueMapPanel".
class ZR_EXPORT ZRValueMapPanel : public QWidget, public ZRValueMapEditorDelegate {
public:
    using Target = std::function<void(ZRValueMapPanel&)>;

    // The panel, made on first use.
    static ZRValueMapPanel& sharedPanel();

    // A copy of the map becomes the panel's, until the panel closes.
    void setValueMap(const ZRValueMap& map);
    // Null while the panel has no map.
    ZRValueMap* valueMap() noexcept { return _map ? &*_map : nullptr; }
    void setTarget(Target target) { _target = std::move(target); }
    // Shows the panel in front, with the keyboard focus.
    void open();

    // What the menus and buttons do; public so that applications and tests can drive the panel.
    void loadPreset(size_t index);
    void typeChanged(uint32_t type);
    // Adds, on a segmented curve, the point halfway between the two neighbours farthest apart in x (the first such
    // pair on a tie).
    void addHandle();
    void removeHandle();
    void reset();
    // Selects the map's kind in the menu; enables adding for segmented curves, and removing for segmented curves of
    // more than two points whose selected point is neither the first nor the last.
    void updateButtons();

    void editorValueMapDidChange(ZRValueMapEditor& editor) override;
    void editorSelectionDidChange(ZRValueMapEditor& editor) override;

    ZRValueMapEditor& editor() noexcept { return *_editor; }
    QComboBox& typePopup() noexcept { return *_typePopup; }
    QComboBox& presetsPopup() noexcept { return *_presetsPopup; }
    QPushButton& addHandleButton() noexcept { return *_addHandleButton; }
    QPushButton& removeHandleButton() noexcept { return *_removeHandleButton; }
    QPushButton& resetButton() noexcept { return *_resetButton; }

    ZRValueMapPanel(const ZRValueMapPanel&) = delete;
    ZRValueMapPanel& operator=(const ZRValueMapPanel&) = delete;

protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    ZRValueMapPanel();
    // Moves the handles to the map's points, tells the target and updates the buttons.
    void _mapDidChange();
    void _notifyTarget();
    void _saveFrame();

    std::optional<ZRValueMap> _map;
    Target _target;
    std::vector<ZRDictionary> _presets;
    QComboBox* _presetsPopup;
    QComboBox* _typePopup;
    ZRValueMapEditor* _editor;
    ZRValueMapPanelOutputText* _outputText;
    QPushButton* _addHandleButton;
    QPushButton* _removeHandleButton;
    QPushButton* _resetButton;
    bool _frameRestored = false;
};
