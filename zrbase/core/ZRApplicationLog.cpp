#include <zrbase/core/ZRApplicationLog.h>

#include <zrbase/core/ZRFileError.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRUserDefaults.h>

#include <algorithm>
#include <filesystem>

namespace {

const char* const ZRDebugLoggingActiveKey = "Debug Logging Active";
const char* const ZRDebugDefaultThresholdKey = "Debug Default Threshold";
const char* const ZRDebugRulesKey = "Debug Rules";
const char* const ZRLogFolder = "~/Library/Logs/Velmora";
// The threshold of a domain whose rule is switched off: no level reaches it.
constexpr uint32_t ZRLogSilentThreshold = 0x7FFFFFFF;

// Serialises opening and closing the log.
std::mutex lifetimeMutex;

void registerDefaults()
{
    static std::once_flag once;
    std::call_once(once, [] {
        ZRUserDefaults::standard().registerDefaults({ { ZRDebugLoggingActiveKey, false },
            { ZRDebugDefaultThresholdKey, static_cast<int>(ZRLogLevelError) }, { ZRDebugRulesKey, ZRArray() } });
    });
}

// The first rule of the domain in a rule list, const or not.
template <typename Rules> auto findRule(Rules& rules, std::string_view domain)
{
    return std::find_if(
        rules.begin(), rules.end(), [&](const ZRApplicationLogRule& rule) { return rule.domain() == domain; });
}

std::string infoString(std::string_view key) { return ZRBundle::main().objectForInfoDictionaryKey(key); }

}

ZRApplicationLog::ZRApplicationLog() = default;

ZRApplicationLog::~ZRApplicationLog() = default;

ZRApplicationLog& ZRApplicationLog::_instance()
{
    // Never destroyed: threads still holding the log when the process ends, or when it is disposed, keep a valid
    // object.
    static ZRApplicationLog* const log = new ZRApplicationLog();
    return *log;
}

void ZRApplicationLog::_writeErrorSentence(std::string_view sentence)
{
    if (ZRApplicationLog* log = existingLog())
        log->log(ZRLogLevelError, nullptr, "%@", sentence);
}

void ZRApplicationLog::_loadSettings()
{
    ZRUserDefaults& defaults = ZRUserDefaults::standard();
    std::vector<ZRApplicationLogRule> rules;
    for (const ZRPropertyList& state : defaults.arrayForKey(ZRDebugRulesKey)) {
        if (const ZRDictionary* dictionary = state.dictionary())
            rules.emplace_back(*dictionary);
    }
    std::lock_guard lock(_settingsMutex);
    _defaultThreshold = static_cast<uint32_t>(defaults.integerForKey(ZRDebugDefaultThresholdKey));
    _active = defaults.boolForKey(ZRDebugLoggingActiveKey);
    _rules = std::move(rules);
}

bool ZRApplicationLog::_open()
{
    ZRErrorPtr error;
    const std::string folder = ZRConformPath(ZRLogFolder);
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) {
        ZRFileError::errorWithCode(code.value(), ZRLocalizedString("Creating a directory"))->alert();
        return false;
    }
    const std::string name = ZRBundle::main().name();
    if (!setPath(folder + "/" + ZRStringWithFormat("%@.log", name), &error)) {
        error->alert();
        return false;
    }
    if (_active)
        ZRLog::log(ZRStringWithFormat("%@ ===== %@ %@ %@ launched\n", logDate(), name,
            infoString("CFBundleShortVersionString"), infoString("CFBundleVersion")));
    return true;
}

ZRApplicationLog* ZRApplicationLog::sharedLog()
{
    ZRApplicationLog& log = _instance();
    if (log._isOpen.load(std::memory_order_acquire))
        return &log;

    std::lock_guard lock(lifetimeMutex);
    if (log._isOpen.load(std::memory_order_acquire))
        return &log;
    registerDefaults();
    log._loadSettings();
    if (!log._open())
        return nullptr;
    log._isOpen.store(true, std::memory_order_release);
    ZRError::setSentenceSink(&_writeErrorSentence);
    return &log;
}

ZRApplicationLog* ZRApplicationLog::existingLog() noexcept
{
    ZRApplicationLog& log = _instance();
    return log._isOpen.load(std::memory_order_acquire) ? &log : nullptr;
}

void ZRApplicationLog::create() { sharedLog(); }

void ZRApplicationLog::dispose()
{
    std::lock_guard lock(lifetimeMutex);
    ZRApplicationLog& log = _instance();
    if (!log._isOpen.exchange(false, std::memory_order_acq_rel))
        return;
    if (log._active)
        log.ZRLog::log(ZRStringWithFormat("%@ ===== %@ terminated =====\n", logDate(), infoString("CFBundleName")));
    log.flush();
}

void ZRApplicationLog::setActive(bool active)
{
    if (ZRApplicationLog* log = sharedLog())
        log->_setActive(active);
}

bool ZRApplicationLog::active()
{
    ZRApplicationLog* log = sharedLog();
    return log && log->_active.load();
}

void ZRApplicationLog::setThreshold(uint32_t level)
{
    if (ZRApplicationLog* log = sharedLog())
        log->_setThreshold(level);
}

void ZRApplicationLog::setThreshold(uint32_t level, std::optional<std::string_view> domain)
{
    if (ZRApplicationLog* log = sharedLog())
        log->_setThreshold(level, domain);
}

uint32_t ZRApplicationLog::thresholdForDomain(std::optional<std::string_view> domain)
{
    ZRApplicationLog* log = sharedLog();
    return log ? log->_thresholdForDomain(domain) : 0;
}

std::optional<std::string_view> ZRApplicationLog::codeForLevel(uint32_t level) noexcept
{
    switch (level) {
    case ZRLogLevelDebug:
        return "[d]";
    case ZRLogLevelInfo:
        return "[i]";
    case ZRLogLevelWarning:
        return "[w]";
    case ZRLogLevelError:
        return "[e]";
    default:
        return std::nullopt;
    }
}

void ZRApplicationLog::log(uint32_t level, std::unique_ptr<ZRApplicationLogContext> context, std::string_view format,
    std::span<const ZRFormatArgument> arguments)
{
    if (!_isOpen.load(std::memory_order_acquire) || !_active.load(std::memory_order_relaxed))
        return;
    std::optional<std::string_view> domain;
    if (context && context->domain())
        domain = *context->domain();
    if (_thresholdForDomain(domain) > level)
        return;

    std::string line = logDate();
    if (context)
        line += context->logLine();
    line += ' ';
    line += codeForLevel(level).value_or("[?]");
    std::string message = ZRStringWithFormatArguments(format, arguments);
    if (message.empty()) {
        line += " (nil)\n";
    } else {
        line += ' ';
        line += message;
        line += '\n';
    }
    ZRLog::log(line);
}

std::vector<ZRApplicationLogRule> ZRApplicationLog::rules() const
{
    std::lock_guard lock(_settingsMutex);
    return _rules;
}

std::optional<ZRApplicationLogRule> ZRApplicationLog::ruleForDomain(std::optional<std::string_view> domain) const
{
    std::lock_guard lock(_settingsMutex);
    if (const ZRApplicationLogRule* rule = _ruleForDomain(domain))
        return *rule;
    return std::nullopt;
}

const ZRApplicationLogRule* ZRApplicationLog::_ruleForDomain(std::optional<std::string_view> domain) const noexcept
{
    if (!domain)
        return nullptr;
    auto rule = findRule(_rules, *domain);
    return rule == _rules.end() ? nullptr : &*rule;
}

void ZRApplicationLog::removeRule(const std::optional<ZRApplicationLogRule>& rule)
{
    if (!rule)
        return;
    std::lock_guard lock(_settingsMutex);
    auto found = std::find(_rules.begin(), _rules.end(), *rule);
    if (found == _rules.end())
        return;
    _rules.erase(found);
    _updateDefaults();
}

void ZRApplicationLog::_setActive(bool active)
{
    std::string name = infoString("CFBundleName");
    std::string date = logDate();
    auto banner = [&](std::string_view format) {
        ZRLog::log(ZRStringWithFormat(
            format, date, name, infoString("CFBundleShortVersionString"), infoString("CFBundleVersion")));
    };
    std::lock_guard lock(_settingsMutex);
    if (active) {
        _active = true;
        banner("%@ ===== %@ %@ %@ logging activated\n");
    } else {
        banner("%@ ===== %@ %@ %@ logging deactivated\n");
        _active = false;
    }
    _updateDefaults();
}

uint32_t ZRApplicationLog::_thresholdForDomain(std::optional<std::string_view> domain) const
{
    std::lock_guard lock(_settingsMutex);
    const ZRApplicationLogRule* rule = _ruleForDomain(domain);
    if (!rule)
        return _defaultThreshold;
    return rule->active() ? rule->threshold() : ZRLogSilentThreshold;
}

void ZRApplicationLog::_setThreshold(uint32_t level)
{
    std::lock_guard lock(_settingsMutex);
    for (ZRApplicationLogRule& rule : _rules)
        rule.setThreshold(level);
    _defaultThreshold = level;
    _updateDefaults();
}

void ZRApplicationLog::_setThreshold(uint32_t level, std::optional<std::string_view> domain)
{
    std::lock_guard lock(_settingsMutex);
    if (!domain) {
        _defaultThreshold = level;
    } else if (auto rule = findRule(_rules, *domain); rule != _rules.end()) {
        rule->setThreshold(level);
    } else {
        _rules.emplace_back(std::string(*domain), level);
    }
    _updateDefaults();
}

void ZRApplicationLog::_updateDefaults() const
{
    ZRArray rules;
    for (const ZRApplicationLogRule& rule : _rules)
        rules.push_back(rule.state());
    ZRUserDefaults& defaults = ZRUserDefaults::standard();
    defaults.setObject(ZRDebugLoggingActiveKey, _active.load());
    defaults.setObject(ZRDebugDefaultThresholdKey, _defaultThreshold);
    defaults.setObject(ZRDebugRulesKey, std::move(rules));
}
