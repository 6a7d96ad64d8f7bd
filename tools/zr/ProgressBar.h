#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace zr {

// A progress bar on standard error for runs that last: it appears after half a second, redraws five times a
// second from a thread of its own, and is wiped when the run ends. Disabled, it draws nothing at all (standard
// error is not a terminal, or -q was given). Workers only add frames, from any thread.
class ProgressBar {
public:
    // `total` frames of all inputs, 0 when not known (then it counts seconds of audio instead).
    ProgressBar(bool enabled, uint64_t total, double sampleRate);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void add(uint64_t frames) noexcept { _done.fetch_add(frames, std::memory_order_relaxed); }
    void addTotal(uint64_t frames) noexcept { _total.fetch_add(frames, std::memory_order_relaxed); }
    uint64_t done() const noexcept { return _done.load(std::memory_order_relaxed); }
    // Ends the bar (also done by the destructor).
    void finish();

    // Whether standard error is a terminal.
    static bool standardErrorIsTerminal() noexcept;

private:
    void _run();
    void _draw(bool wipe);

    std::atomic<uint64_t> _done { 0 };
    std::atomic<uint64_t> _total;
    double _sampleRate;
    bool _drawn = false;
    bool _stopping = false;
    std::mutex _mutex;
    std::condition_variable _wake;
    std::thread _thread;
};

}
