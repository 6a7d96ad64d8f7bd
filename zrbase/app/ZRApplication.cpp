#include <zrbase/app/ZRApplication.h>

#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/foundation/ZRBundle.h>
#include <zrbase/host/foundation/ZRCoder.h>
#include <zrbase/host/foundation/ZRPath.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <atomic>
#include <unordered_set>

class ZRModalSession {
public:
    std::function<void()> step;
    bool stopped = false;
    int code = ZRModalResponseContinue;
};

namespace {

std::atomic<ZRApplication*> installedApplication { nullptr };

int hexValue(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

// "%XX" escapes decoded; a "%" not followed by two hexadecimal digits stays, and "+" stays "+".
std::string percentDecoded(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%' && index + 2 < text.size() && hexValue(text[index + 1]) >= 0
            && hexValue(text[index + 2]) >= 0) {
            decoded.push_back(static_cast<char>(hexValue(text[index + 1]) << 4 | hexValue(text[index + 2])));
            index += 2;
        } else {
            decoded.push_back(text[index]);
        }
    }
    return decoded;
}

struct ZRURLParts {
    std::string_view host;
    std::string_view query;
};

// Splits "scheme://[user@]host[:port][/path][?query][#fragment]"; nullopt for anything without a scheme and an
// authority.
std::optional<ZRURLParts> parseURL(std::string_view url)
{
    const size_t colon = url.find(':');
    if (colon == 0 || colon == std::string_view::npos)
        return std::nullopt;
    const std::string_view scheme = url.substr(0, colon);
    const auto isLetter = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    };
    const bool schemeIsValid = std::ranges::all_of(scheme, [&isLetter](char character) {
        return isLetter(character) || (character >= '0' && character <= '9') || character == '+' || character == '-'
            || character == '.';
    });
    if (!schemeIsValid || !isLetter(scheme[0]))
        return std::nullopt;
    std::string_view rest = url.substr(colon + 1);
    if (!rest.starts_with("//"))
        return std::nullopt;
    rest.remove_prefix(2);
    if (const size_t fragment = rest.find('#'); fragment != std::string_view::npos)
        rest = rest.substr(0, fragment);

    ZRURLParts parts;
    const size_t queryStart = rest.find('?');
    if (queryStart != std::string_view::npos) {
        parts.query = rest.substr(queryStart + 1);
        rest = rest.substr(0, queryStart);
    }
    std::string_view authority = rest.substr(0, rest.find('/'));
    if (const size_t at = authority.rfind('@'); at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    parts.host = authority.substr(0, authority.find(':'));
    return parts;
}

}

ZRApplication::ZRApplication()
{
    ZRApplication* none = nullptr;
    installedApplication.compare_exchange_strong(none, this);
}

ZRApplication::ZRApplication(DefaultTag) { }

ZRApplication::~ZRApplication()
{
    ZRApplication* self = this;
    installedApplication.compare_exchange_strong(self, nullptr);
}

ZRApplication& ZRApplication::shared()
{
    if (ZRApplication* application = installedApplication.load())
        return *application;
    static ZRApplication defaultApplication { DefaultTag() };
    return defaultApplication;
}

void ZRApplication::setShared(ZRApplication* application) { installedApplication.store(application); }

std::string ZRApplication::name() const { return ZRBundle::main().name(); }

std::string ZRApplication::code() const
{
    const std::string signature = ZRBundle::main().objectForInfoDictionaryKey("CFBundleSignature");
    return signature.substr(std::min<size_t>(2, signature.size()));
}

std::string ZRApplication::supportDirectory() const { return ZRSupportDirectory(); }

std::string ZRApplication::tempDirectory() const { return supportDirectory() + "Temp"; }

uint32_t ZRApplication::majorVersion() const { return 0x7FFFFFFF; }

uint32_t ZRApplication::minorVersion() const { return 0x7FFFFFFF; }

bool ZRApplication::isBetaVersion() const { return false; }

ZRModalSession* ZRApplication::beginModalSession(std::function<void()> step)
{
    auto session = std::make_unique<ZRModalSession>();
    session->step = std::move(step);
    _sessions.push_back(std::move(session));
    return _sessions.back().get();
}

int ZRApplication::runModalSession(ZRModalSession* session)
{
    if (!session->stopped && session->step)
        session->step();
    return session->stopped ? session->code : ZRModalResponseContinue;
}

int ZRApplication::runModal(ZRModalSession* session)
{
    if (!session->step && !session->stopped)
        return ZRModalResponseAbort;
    int response;
    while ((response = runModalSession(session)) == ZRModalResponseContinue) { }
    return response;
}

void ZRApplication::stopModal() { stopModalWithCode(ZRModalResponseStop); }

void ZRApplication::abortModal() { stopModalWithCode(ZRModalResponseAbort); }

void ZRApplication::stopModalWithCode(int code)
{
    if (_sessions.empty())
        return;
    _sessions.back()->stopped = true;
    _sessions.back()->code = code;
}

void ZRApplication::stopModalWithError(ZRErrorPtr error)
{
    _modalError = std::move(error);
    stopModalWithCode(ZRModalResponseError);
}

void ZRApplication::endModalSession(ZRModalSession* session)
{
    std::erase_if(_sessions, [session](const auto& candidate) { return candidate.get() == session; });
    _modalError.reset();
}

void ZRApplication::finishLaunching() { _launched = true; }

void ZRApplication::openURL(std::string_view url)
{
    if (_launched)
        handleURL(url);
}

void ZRApplication::handleURL(std::string_view url)
{
    const std::optional<ZRURLParts> parts = parseURL(url);
    if (!parts || parts->host != "cmd")
        return;
    const std::optional<ZRData> archive = ZRExtension::decodeBase64(percentDecoded(parts->query));
    if (!archive)
        return;
    const std::optional<ZRPropertyList> command = ZRKeyedUnarchiver::unarchiveObjectWithData(*archive);
    if (command && command->dictionary())
        _runCommand(*command->dictionary());
}

void ZRApplication::_runCommand(const ZRDictionary& command)
{
    const ZRPropertyList* selectorEntry = ZRDictionaryObject(command, "selector");
    if (!selectorEntry || !selectorEntry->string())
        return;
    const std::string& selector = *selectorEntry->string();

    const ZRPropertyList* classEntry = ZRDictionaryObject(command, "class");
    if (classEntry && classEntry->string()) {
        const std::string& className = *classEntry->string();
        const bool classIsKnown = std::ranges::any_of(
            _classActions, [&className](const auto& entry) { return entry.first.first == className; });
        if (classIsKnown) {
            const auto found = _classActions.find(std::pair(className, selector));
            if (found != _classActions.end())
                found->second(command);
            return;
        }
    }
    if (ZRResponder* target = targetForAction(selector))
        target->performAction(selector, command);
}

void ZRApplication::registerClassAction(std::string className, std::string selector, Action action)
{
    auto key = std::pair(std::move(className), std::move(selector));
    if (action)
        _classActions.insert_or_assign(std::move(key), std::move(action));
    else
        _classActions.erase(key);
}

ZRResponder* ZRApplication::targetForAction(std::string_view selector)
{
    // A chain that loops back on itself is searched once round.
    std::unordered_set<const ZRResponder*> visited;
    for (ZRResponder* responder = _firstResponder; responder && visited.insert(responder).second;
         responder = responder->nextResponder()) {
        if (responder->respondsToSelector(selector))
            return responder;
    }
    return respondsToSelector(selector) ? this : nullptr;
}
