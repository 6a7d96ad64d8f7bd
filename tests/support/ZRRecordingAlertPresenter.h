#pragma once

#include <zrbase/host/foundation/ZRAlertPresenter.h>

#include <memory>
#include <vector>

// An alert presenter for tests: keeps every alert it is shown and answers a chosen button. Installed for the
// lifetime of the object; the presenter it replaced comes back afterwards.
class ZRRecordingAlertPresenter {
public:
    explicit ZRRecordingAlertPresenter(int answer = ZRAlertFirstButtonReturn);
    ~ZRRecordingAlertPresenter();

    const std::vector<ZRAlert>& alerts() const;

    ZRRecordingAlertPresenter(const ZRRecordingAlertPresenter&) = delete;
    ZRRecordingAlertPresenter& operator=(const ZRRecordingAlertPresenter&) = delete;

private:
    struct Recorder;
    std::shared_ptr<Recorder> _recorder;
    std::shared_ptr<ZRAlertPresenter> _previous;
};
