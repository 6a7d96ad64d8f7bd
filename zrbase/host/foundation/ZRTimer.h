#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

// A one-shot timer that can be re-armed: every schedule() replaces the pending firing, so that a burst of
// schedules fires once, the interval after the last of them. The action runs on the timer's own thread, which
// lives as long as the timer; invalidate() cancels a pending firing. The action may schedule or invalidate its
// own timer. The destructor cancels what is pending, waits for an action that is running, and must not be called
// from the action.
class ZR_EXPORT ZRTimer {
public:
    explicit ZRTimer(std::function<void()> action);
    ~ZRTimer();

    void schedule(std::chrono::steady_clock::duration interval);
    void invalidate();
    bool isScheduled() const;

    ZRTimer(const ZRTimer&) = delete;
    ZRTimer& operator=(const ZRTimer&) = delete;

private:
    void _run();
    std::function<void()> _action;
    mutable std::mutex _mutex;
    std::condition_variable _condition;
    std::chrono::steady_clock::time_point _deadline;
    bool _scheduled = false;
    bool _stopping = false;
    std::thread _thread;
};
