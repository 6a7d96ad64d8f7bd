#include <zrbase/core/ZRLog.h>

#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRAppendFile.h>
#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRTimer.h>
#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

constexpr auto ZRLogFlushDelay = std::chrono::seconds(3);
// Lines are packed into blocks of this size, so that queueing a line rarely allocates and never moves the lines
// queued before it.
constexpr size_t ZRLogBlockSize = 64 * 1024;

}

// The queue and the file live apart from the log object, so that a flush thread still running when the log is
// destroyed keeps what it writes alive. Two locks: the queue's is held only to append or take the lines, the
// file's for a whole write and synchronisation, so that logging never waits for the disk while batches still
// reach the file one after the other in queue order.
struct ZRLog::State {
    std::mutex queueMutex;
    std::vector<ZRData> messageQueue;
    std::mutex fileMutex;
    std::unique_ptr<ZRAppendFile> file;

    void enqueue(std::string_view bytes)
    {
        std::lock_guard lock(queueMutex);
        if (messageQueue.empty() || messageQueue.back().capacity() - messageQueue.back().size() < bytes.size()) {
            messageQueue.emplace_back();
            messageQueue.back().reserve(std::max(ZRLogBlockSize, bytes.size()));
        }
        ZRData& block = messageQueue.back();
        size_t offset = block.size();
        block.resize(offset + bytes.size());
        std::memcpy(block.data() + offset, bytes.data(), bytes.size());
    }

    void flushQueue()
    {
        std::lock_guard fileLock(fileMutex);
        std::vector<ZRData> batch;
        {
            std::lock_guard lock(queueMutex);
            batch.swap(messageQueue);
        }
        if (!file || batch.empty())
            return;
        // A log has nobody to report its own failures to: lines that do not reach the disk are dropped.
        for (const ZRData& block : batch)
            file->append(block);
        file->synchronize();
    }
};

ZRLog::ZRLog()
    : _state(std::make_shared<State>())
    , _flushQueueTimer(std::make_unique<ZRTimer>([this] { _flushQueueTrigger(); }))
{
}

ZRLog::~ZRLog()
{
    // The timer goes first: once it is destroyed its action can no longer reach this object.
    _flushQueueTimer.reset();
    _state->flushQueue();
}

std::unique_ptr<ZRLog> ZRLog::logWithPath(const std::string& path, ZRErrorPtr* error)
{
    auto log = std::make_unique<ZRLog>();
    if (!log->setPath(path, error))
        return nullptr;
    return log;
}

bool ZRLog::setPath(const std::string& path, ZRErrorPtr* error)
{
    std::lock_guard lock(_state->fileMutex);
    _state->file.reset();
    const std::string conformed = ZRConformPath(path);
    // The file is opened for appending in the system's sense, so that lines of other processes logging to the
    // same file (two copies of one application) never overwrite ours, nor ours theirs.
    const bool existed = access(conformed.c_str(), F_OK) == 0;
    int code = 0;
    _state->file = ZRAppendFile::open(conformed, &code);
    if (!_state->file) {
        if (error)
            *error
                = ZRFileError::errorWithCode(code, ZRLocalizedString(existed ? "Opening a file" : "Creating a file"));
        return false;
    }
    return true;
}

std::optional<std::string> ZRLog::path() const
{
    std::lock_guard lock(_state->fileMutex);
    if (!_state->file)
        return std::nullopt;
    return _state->file->path();
}

void ZRLog::log(std::string_view text)
{
    _state->enqueue(text.substr(0, std::min(text.size(), ZRUnicode::utf16Length(text))));
    // Every message moves the flush to three seconds after it. Re-arming the timer itself for each message would
    // wake its thread every time; instead the message time is noted, and the timer, armed once per burst, looks
    // at it when it fires.
    _lastMessageTime.store(std::chrono::steady_clock::now().time_since_epoch().count());
    if (!_flushQueueArmed.exchange(true))
        _flushQueueTimer->schedule(ZRLogFlushDelay);
}

void ZRLog::flush()
{
    _flushQueueTimer->invalidate();
    _flushQueueArmed.store(false);
    _state->flushQueue();
}

void ZRLog::_flushQueueTrigger()
{
    _flushQueueArmed.store(false);
    std::chrono::steady_clock::time_point lastMessage { std::chrono::steady_clock::duration(_lastMessageTime.load()) };
    std::chrono::steady_clock::time_point due = lastMessage + ZRLogFlushDelay;
    std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now();
    if (now < due) {
        if (!_flushQueueArmed.exchange(true))
            _flushQueueTimer->schedule(due - now);
        return;
    }
    std::shared_ptr<State> state = _state;
    try {
        std::thread([state] { state->flushQueue(); }).detach();
    } catch (const std::system_error&) {
        // No thread to be had: write on the timer's thread rather than lose the lines.
        state->flushQueue();
    }
}

std::string ZRLog::logDate()
{
    using namespace std::chrono;
    system_clock::time_point now = system_clock::now();
    time_point<system_clock, seconds> second = floor<seconds>(now);
    auto milliseconds = duration_cast<std::chrono::milliseconds>(now - second).count();

    // Every line asks for the date; the calendar conversion is done once per second and thread.
    thread_local time_t cachedSecond = -1;
    thread_local char cachedText[32];
    time_t seconds = system_clock::to_time_t(second);
    if (seconds != cachedSecond) {
        struct tm local;
        localtime_r(&seconds, &local);
        strftime(cachedText, sizeof(cachedText), "%Y-%m-%d %H:%M:%S", &local);
        cachedSecond = seconds;
    }
    char text[48];
    int length = snprintf(text, sizeof(text), "%s.%03d", cachedText, static_cast<int>(milliseconds));
    return std::string(text, static_cast<size_t>(length));
}

void ZRLog::openLogFile() const
{
    std::optional<std::string> logPath = path();
    if (!logPath)
        return;
    char program[] = "xdg-open";
    char* arguments[] = { program, logPath->data(), nullptr };
    pid_t child;
    if (posix_spawnp(&child, program, nullptr, nullptr, arguments, environ) != 0)
        return;
    // xdg-open may stay until the viewer quits; a small thread waits for it so that it leaves no zombie.
    try {
        std::thread([child] { waitpid(child, nullptr, 0); }).detach();
    } catch (const std::system_error&) {
        waitpid(child, nullptr, WNOHANG);
    }
}
