#include "ProgressBar.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace zr {

bool ProgressBar::standardErrorIsTerminal() noexcept { return isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(bool enabled, uint64_t total, double sampleRate)
    : _total(total)
    , _sampleRate(sampleRate > 0 ? sampleRate : 1.0)
{
    if (enabled)
        _thread = std::thread([this] { _run(); });
}

ProgressBar::~ProgressBar() { finish(); }

void ProgressBar::finish()
{
    {
        std::lock_guard lock(_mutex);
        _stopping = true;
    }
    _wake.notify_all();
    if (_thread.joinable())
        _thread.join();
}

void ProgressBar::_run()
{
    using namespace std::chrono_literals;
    std::unique_lock lock(_mutex);
    if (_wake.wait_for(lock, 500ms, [this] { return _stopping; }))
        return;
    while (!_wake.wait_for(lock, 200ms, [this] { return _stopping; }))
        _draw(false);
    _draw(true);
}

void ProgressBar::_draw(bool wipe)
{
    if (wipe) {
        if (_drawn)
            std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        return;
    }
    const uint64_t done = _done.load(std::memory_order_relaxed), total = _total.load(std::memory_order_relaxed);
    std::string line = "\r";
    if (total > 0) {
        const double fraction = std::min(1.0, double(done) / double(total));
        constexpr int width = 40;
        const int filled = int(fraction * width);
        line += '[' + std::string(size_t(filled), '#') + std::string(size_t(width - filled), ' ') + ']';
        char percent[16];
        std::snprintf(percent, sizeof percent, " %3d%%", int(fraction * 100.0));
        line += percent;
    } else {
        char seconds[48];
        std::snprintf(seconds, sizeof seconds, "%.0f s of audio read", double(done) / _sampleRate);
        line += seconds;
    }
    line += "\033[K";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    _drawn = true;
}

}
