#pragma once

#include <zrbase/host/foundation/ZRAlertPresenter.h>
#include <zrbase/host/foundation/ZRExport.h>

// Shows alerts as Qt message boxes: the alert's title as the box's text, its text as the informative text, and its
// buttons in order, the first one the default. Install it once the application object exists, so that
// error->alert() shows a real dialog.
class ZR_EXPORT ZRMessageBoxAlertPresenter : public ZRAlertPresenter {
public:
    int runModal(const ZRAlert& alert) override;

    // Makes a message-box presenter the current one.
    static void install();
};
