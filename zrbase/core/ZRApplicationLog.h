#pragma once

#include <zrbase/core/ZRApplicationLogContext.h>
#include <zrbase/core/ZRApplicationLogRule.h>
#include <zrbase/core/ZRLog.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The levels of the application log's messages; a message is written when its level reaches the threshold of
// its domain.
inline constexpr uint32_t ZRLogLevelDebug = 1;
inline constexpr uint32_t ZRLogLevelInfo = 2;
inline constexpr uint32_t ZRLogLevelWarning = 3;
inline constexpr uint32_t ZRLogLevelError = 4;

// The application's debug log: "~/Library/Logs/Velmora/<application name>.log", switched on and off by the user
// default "Debug Logging Active", with a threshold per domain ("Debug Rules") and one for all other domains
// ("Debug Default Threshold"). Out of the box it is off, and when switched on only errors pass. While it is open,
// the sentence of every error made reaches it at error level.
//
// The class operations act on the one log of the process, opened on first use (or by create() at start-up) and
// closed by dispose(); when the log folder cannot be made they do nothing. The log object itself lives as long as
// the process, so a pointer to it stays valid across dispose() and a later reopening: a closed log writes nothing.
// Any thread may log, change the settings, dispose or reopen the log.
class ZR_EXPORT ZRApplicationLog : public ZRLog {
public:
    // The log, opened on first use and on the first use after dispose(); null when its folder or file cannot be
    // made (the failure was shown as an alert).
    static ZRApplicationLog* sharedLog();
    // The log while it is open, without opening it.
    static ZRApplicationLog* existingLog() noexcept;
    static void create();
    // Writes the termination banner when active, flushes and closes the log.
    static void dispose();

    // Writes the "logging activated" or "logging deactivated" banner, even when nothing changes.
    static void setActive(bool active);
    static bool active();
    // Sets the threshold of every rule and the default threshold.
    static void setThreshold(uint32_t level);
    // Sets the threshold of the domain's rule, adding an active rule when it has none; no domain sets the
    // default threshold.
    static void setThreshold(uint32_t level, std::optional<std::string_view> domain);
    // The threshold of the domain's rule, 0x7FFFFFFF when that rule is inactive, the default threshold when the
    // domain has no rule.
    static uint32_t thresholdForDomain(std::optional<std::string_view> domain);
    // "[d]", "[i]", "[w]" and "[e]" for the four levels, none for any other.
    static std::optional<std::string_view> codeForLevel(uint32_t level) noexcept;

    // Log a message at one level. The message is a format string of ZRStringWithFormat, also when it comes
    // without arguments, so text of unknown origin goes in as "%@" and an argument. The call takes the context.
    template <typename... Arguments>
    static void debug(
        std::unique_ptr<ZRApplicationLogContext> context, std::string_view format, const Arguments&... arguments)
    {
        _log(ZRLogLevelDebug, std::move(context), format, arguments...);
    }
    template <typename... Arguments>
    static void info(
        std::unique_ptr<ZRApplicationLogContext> context, std::string_view format, const Arguments&... arguments)
    {
        _log(ZRLogLevelInfo, std::move(context), format, arguments...);
    }
    template <typename... Arguments>
    static void warning(
        std::unique_ptr<ZRApplicationLogContext> context, std::string_view format, const Arguments&... arguments)
    {
        _log(ZRLogLevelWarning, std::move(context), format, arguments...);
    }
    template <typename... Arguments>
    static void error(
        std::unique_ptr<ZRApplicationLogContext> context, std::string_view format, const Arguments&... arguments)
    {
        _log(ZRLogLevelError, std::move(context), format, arguments...);
    }

    // The entry of every message: "<date>[ <domain> <sender>] <code> <message>\n", or " (nil)" for an empty
    // message and " [?]" for a level without code. The arguments are formatted only when the message passes.
    void log(uint32_t level, std::unique_ptr<ZRApplicationLogContext> context, std::string_view format,
        std::span<const ZRFormatArgument> arguments);
    template <typename... Arguments>
    void log(uint32_t level, std::unique_ptr<ZRApplicationLogContext> context, std::string_view format,
        const Arguments&... arguments)
    {
        if constexpr (sizeof...(Arguments) == 0) {
            log(level, std::move(context), format, std::span<const ZRFormatArgument>());
        } else {
            const ZRFormatArgument list[] = { ZRFormatArgument(arguments)... };
            log(level, std::move(context), format, std::span<const ZRFormatArgument>(list));
        }
    }
    using ZRLog::log;

    // A copy of the rules in the order they were loaded or added.
    std::vector<ZRApplicationLogRule> rules() const;
    // The first rule of the domain, none for none or no domain.
    std::optional<ZRApplicationLogRule> ruleForDomain(std::optional<std::string_view> domain) const;
    // Removes the first rule equal to the given one and saves the settings; none, or a rule not in the list, is
    // ignored.
    void removeRule(const std::optional<ZRApplicationLogRule>& rule);

private:
    ZRApplicationLog();
    ~ZRApplicationLog() override;
    static ZRApplicationLog& _instance();
    static void _writeErrorSentence(std::string_view sentence);
    void _loadSettings();
    bool _open();
    template <typename... Arguments>
    static void _log(uint32_t level, std::unique_ptr<ZRApplicationLogContext> context, std::string_view format,
        const Arguments&... arguments)
    {
        if (ZRApplicationLog* log = sharedLog())
            log->log(level, std::move(context), format, arguments...);
    }

    void _setActive(bool active);
    uint32_t _thresholdForDomain(std::optional<std::string_view> domain) const;
    void _setThreshold(uint32_t level);
    void _setThreshold(uint32_t level, std::optional<std::string_view> domain);
    // Callers hold _settingsMutex.
    const ZRApplicationLogRule* _ruleForDomain(std::optional<std::string_view> domain) const noexcept;
    void _updateDefaults() const;

    std::atomic<bool> _isOpen { false };
    std::atomic<bool> _active { false };
    // Guards the rules and the default threshold, and keeps the settings and their user defaults in step.
    mutable std::mutex _settingsMutex;
    std::vector<ZRApplicationLogRule> _rules;
    uint32_t _defaultThreshold = ZRLogLevelError;
};
