#include <zrbase/host/foundation/ZRTimer.h>

ZRTimer::ZRTimer(std::function<void()> action)
    : _action(std::move(action))
    , _thread([this] { _run(); })
{
}

ZRTimer::~ZRTimer()
{
    {
        const std::lock_guard lock(_mutex);
        _stopping = true;
        _scheduled = false;
    }
    _condition.notify_all();
    _thread.join();
}

void ZRTimer::schedule(std::chrono::steady_clock::duration interval)
{
    bool sooner;
    {
        const std::lock_guard lock(_mutex);
        const auto deadline = std::chrono::steady_clock::now() + interval;
        // A deadline that only moves later needs no wake-up: the waiting thread looks at it again when the
        // earlier one passes.
        sooner = !_scheduled || deadline < _deadline;
        _deadline = deadline;
        _scheduled = true;
    }
    if (sooner)
        _condition.notify_all();
}

void ZRTimer::invalidate()
{
    {
        const std::lock_guard lock(_mutex);
        _scheduled = false;
    }
    _condition.notify_all();
}

bool ZRTimer::isScheduled() const
{
    const std::lock_guard lock(_mutex);
    return _scheduled;
}

void ZRTimer::_run()
{
    std::unique_lock lock(_mutex);
    while (!_stopping) {
        if (!_scheduled) {
            _condition.wait(lock);
            continue;
        }
        // Every wake-up looks at the deadline afresh: a schedule() meanwhile may have moved it.
        if (std::chrono::steady_clock::now() < _deadline) {
            _condition.wait_until(lock, _deadline);
            continue;
        }
        _scheduled = false;
        // The action runs unlocked so that it may schedule or invalidate the timer itself.
        lock.unlock();
        if (_action)
            _action();
        lock.lock();
    }
}
