#include <zrbase/core/ZRApplicationLog.h>

#include <zrbase/app/ZRApplication.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRUserDefaults.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace {

const char* const ZRDebugLoggingActiveKey = "Debug Logging Active";
const char* const ZRDebugDefaultThresholdKey = "Debug Default Threshold";
const char* const ZRDebugRulesKey = "Debug Rules";
const char* const ZRLogFolder = "~/Library/Logs/Velmora";
// The threshold of a domain whose rule is switched off: no level reaches it.
constexpr uint32_t ZRLogSilentThreshold = 0x7FFFFFFF;

std::atomic<ZRApplicationLog*> sharedInstance { nullptr };
std::mutex sharedInstanceMutex;
// Set while this thread makes the log: errors built on the way must not start making it again.
thread_local bool makingSharedInstance = false;

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

ZRApplicationLog::ZRApplicationLog()
{
    ZRUserDefaults& defaults = ZRUserDefaults::standard();
    _defaultThreshold = static_cast<uint32_t>(defaults.integerForKey(ZRDebugDefaultThresholdKey));
    _active = defaults.boolForKey(ZRDebugLoggingActiveKey);
    for (const ZRPropertyList& state : defaults.arrayForKey(ZRDebugRulesKey)) {
        if (const ZRDictionary* dictionary = state.dictionary())
            _rules.emplace_back(*dictionary);
    }
}

ZRApplicationLog::~ZRApplicationLog() = default;

bool ZRApplicationLog::_open()
{
    ZRErrorPtr error;
    std::string folder = ZRFile::conformPath(ZRLogFolder);
    if (!ZRFile::directoryExistsAtPath(folder) && !ZRFile::createDirectoryAtPath(folder, &error)) {
        if (error)
            error->alert();
        return false;
    }
    std::string path = folder + "/" + ZRStringWithFormat("%@.log", ZRApplication::shared().name());
    if (!setPath(path, &error)) {
        if (error)
            error->alert();
        return false;
    }
    if (_active)
        ZRLog::log(ZRStringWithFormat("%@ ===== %@ %@ %@ launched\n", logDate(), ZRApplication::shared().name(),
            infoString("CFBundleShortVersionString"), infoString("CFBundleVersion")));
    return true;
}

ZRApplicationLog* ZRApplicationLog::sharedLog()
{
    if (ZRApplicationLog* log = sharedInstance.load(std::memory_order_acquire))
        return log;
    if (makingSharedInstance)
        return nullptr;

    std::lock_guard lock(sharedInstanceMutex);
    if (ZRApplicationLog* log = sharedInstance.load(std::memory_order_acquire))
        return log;
    registerDefaults();
    struct Making {
        Making() { makingSharedInstance = true; }
        ~Making() { makingSharedInstance = false; }
    } making;
    std::unique_ptr<ZRApplicationLog> log(new ZRApplicationLog());
    if (!log->_open())
        return nullptr;
    sharedInstance.store(log.get(), std::memory_order_release);
    return log.release();
}

ZRApplicationLog* ZRApplicationLog::existingLog() noexcept { return sharedInstance.load(std::memory_order_acquire); }

void ZRApplicationLog::create() { sharedLog(); }

void ZRApplicationLog::dispose()
{
    std::lock_guard lock(sharedInstanceMutex);
    std::unique_ptr<ZRApplicationLog> log(sharedInstance.exchange(nullptr, std::memory_order_acq_rel));
    if (!log)
        return;
    if (log->_active)
        log->ZRLog::log(ZRStringWithFormat("%@ ===== %@ terminated =====\n", logDate(), infoString("CFBundleName")));
    log->flush();
}

void ZRApplicationLog::setActive(bool active)
{
    if (ZRApplicationLog* log = sharedLog())
        log->_setActive(active);
}

bool ZRApplicationLog::active()
{
    ZRApplicationLog* log = sharedLog();
    return log && log->_active;
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
    if (!_active)
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

const ZRApplicationLogRule* ZRApplicationLog::ruleForDomain(std::optional<std::string_view> domain) const noexcept
{
    if (!domain)
        return nullptr;
    auto rule = findRule(_rules, *domain);
    return rule == _rules.end() ? nullptr : &*rule;
}

void ZRApplicationLog::removeRule(const ZRApplicationLogRule* rule)
{
    auto found = std::find_if(
        _rules.begin(), _rules.end(), [&](const ZRApplicationLogRule& candidate) { return &candidate == rule; });
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
    if (active) {
        _active = true;
        banner("%@ ===== %@ %@ %@ logging activated\n");
    } else {
        banner("%@ ===== %@ %@ %@ logging deactivated\n");
        _active = false;
    }
    _updateDefaults();
}

uint32_t ZRApplicationLog::_thresholdForDomain(std::optional<std::string_view> domain) const noexcept
{
    const ZRApplicationLogRule* rule = ruleForDomain(domain);
    if (!rule)
        return _defaultThreshold;
    return rule->active() ? rule->threshold() : ZRLogSilentThreshold;
}

void ZRApplicationLog::_setThreshold(uint32_t level)
{
    for (ZRApplicationLogRule& rule : _rules)
        rule.setThreshold(level);
    _defaultThreshold = level;
    _updateDefaults();
}

void ZRApplicationLog::_setThreshold(uint32_t level, std::optional<std::string_view> domain)
{
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
    defaults.setObject(ZRDebugLoggingActiveKey, _active);
    defaults.setObject(ZRDebugDefaultThresholdKey, _defaultThreshold);
    defaults.setObject(ZRDebugRulesKey, std::move(rules));
}
