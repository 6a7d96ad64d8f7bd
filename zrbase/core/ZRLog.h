#pragma once

#include <zrbase/core/ZRError.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class ZRTimer;

// A text file written in the background. log() only queues the text: the queue reaches the file three seconds
// after the last of a burst of messages, on a thread of its own, with one synchronisation per batch. Any thread
// may log; the lines of one thread keep their order.
class ZR_EXPORT ZRLog {
public:
    // A log without a file yet: messages are queued and dropped at the flush until setPath succeeds.
    ZRLog();
    // Writes what is still queued.
    virtual ~ZRLog();

    // A log appending to the file at the path; null when the file cannot be created or opened.
    static std::unique_ptr<ZRLog> logWithPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // Creates the file if it does not exist and opens it for appending in place of the previous one.
    bool setPath(const std::string& path, ZRErrorPtr* error = nullptr);
    // The path of the open file, none before the first successful setPath.
    std::optional<std::string> path() const;

    // Queues the text's UTF-8 bytes, cut to as many bytes as the text has UTF-16 units (so text beyond ASCII
    // loses its tail), and postpones the flush to three seconds from now. Never waits for the disk.
    void log(std::string_view text);
    // Writes the queue now, on the caller's thread, and cancels the pending flush.
    void flush();

    // The current local date and time, "2009-03-14 09:26:53.589".
    static std::string logDate();
    // Shows the log file in the user's preferred viewer (xdg-open).
    void openLogFile() const;

    ZRLog(const ZRLog&) = delete;
    ZRLog& operator=(const ZRLog&) = delete;

private:
    struct State;
    void _flushQueueTrigger();

    std::shared_ptr<State> _state;
    std::unique_ptr<ZRTimer> _flushQueueTimer;
    std::atomic<bool> _flushQueueArmed { false };
    std::atomic<std::chrono::steady_clock::rep> _lastMessageTime { 0 };
};
