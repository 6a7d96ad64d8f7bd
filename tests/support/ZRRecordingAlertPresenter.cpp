#include "support/ZRRecordingAlertPresenter.h"

struct ZRRecordingAlertPresenter::Recorder : ZRAlertPresenter {
    explicit Recorder(int answer)
        : answer(answer)
    {
    }
    int runModal(const ZRAlert& alert) override
    {
        alerts.push_back(alert);
        return answer;
    }
    int answer;
    std::vector<ZRAlert> alerts;
};

ZRRecordingAlertPresenter::ZRRecordingAlertPresenter(int answer)
    : _recorder(std::make_shared<Recorder>(answer))
    , _previous(ZRAlertPresenter::setCurrent(_recorder))
{
}

ZRRecordingAlertPresenter::~ZRRecordingAlertPresenter() { ZRAlertPresenter::setCurrent(_previous); }

const std::vector<ZRAlert>& ZRRecordingAlertPresenter::alerts() const { return _recorder->alerts; }
