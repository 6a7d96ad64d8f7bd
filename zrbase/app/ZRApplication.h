#pragma once

#include <zrbase/app/ZRResponder.h>
#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRModalResponse.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A modal session, begun and ended by the application that runs it.
class ZRModalSession;

// The application object: its name and code from the main bundle, its folders, its version, modal sessions that
// can be stopped with an error, and command URLs. An application makes one instance (or one of a subclass) at
// start; the library reaches it through shared().
//
// Command URLs have the form "<scheme>://cmd/?<query>", the query being the base64 text (percent escapes allowed)
// of a keyed archive of a dictionary with the entries "selector" and, optionally, "class". They run only what the
// application registered: with a class that has class actions, that class's action of the selector; otherwise
// (no class, or a class nobody registered) the action of the first responder along the chain that starts at
// firstResponder() and ends with the application. Anything else is ignored without a word.
class ZR_EXPORT ZRApplication : public ZRResponder {
public:
    // The first application constructed (or the one set with setShared) becomes the shared one.
    ZRApplication();
    ~ZRApplication() override;

    // The application the program installed, or a default instance made on first use.
    static ZRApplication& shared();
    // Installs an application as the shared one; null goes back to the default instance.
    static void setShared(ZRApplication* application);

    // The main bundle's "CFBundleName".
    virtual std::string name() const;
    // The main bundle's "CFBundleSignature" without its first two characters.
    virtual std::string code() const;
    // "~/Library/Application Support/Velmora/<name>/" with the tilde expanded; not created here.
    std::string supportDirectory() const;
    // supportDirectory() followed by "Temp"; not created here.
    std::string tempDirectory() const;
    // 0x7FFFFFFF (no version stated) and false until an application overrides them.
    virtual uint32_t majorVersion() const;
    virtual uint32_t minorVersion() const;
    virtual bool isBetaVersion() const;

    // Modal sessions for a console program: the session's step runs once per runModalSession until a stop call
    // (from the step or any code it calls) ends the loop. Sessions nest; a stop ends the innermost one. Main thread.
    ZRModalSession* beginModalSession(std::function<void()> step = {});
    // Runs the step once unless the session was stopped; answers ZRModalResponseContinue or the stop code.
    int runModalSession(ZRModalSession* session);
    // Runs the step until the session is stopped and answers the stop code; a session without a step that is not
    // stopped yet answers ZRModalResponseAbort at once, since nothing could stop it.
    int runModal(ZRModalSession* session);
    void stopModal();
    void abortModal();
    void stopModalWithCode(int code);
    // Keeps the error for modalError() and stops with ZRModalResponseError.
    void stopModalWithError(ZRErrorPtr error);
    const ZRErrorPtr& modalError() const noexcept { return _modalError; }
    // Ends the session and drops the error it was stopped with.
    virtual void endModalSession(ZRModalSession* session);

    // Registers the application as the handler of command URLs; until then openURL ignores them.
    virtual void finishLaunching();
    bool isLaunched() const noexcept { return _launched; }
    // Delivers a URL to the application, e.g. one from the command line or a desktop-file launch.
    void openURL(std::string_view url);
    // Runs the command of a "cmd" URL, if it names a registered operation.
    virtual void handleURL(std::string_view url);

    // A class operation that command URLs may run with {"class": className, "selector": selector}.
    void registerClassAction(std::string className, std::string selector, Action action);
    // The start of the responder chain searched for actions; the application when none is set.
    ZRResponder* firstResponder() const noexcept { return _firstResponder; }
    void setFirstResponder(ZRResponder* responder) noexcept { _firstResponder = responder; }
    // The first responder along the chain that performs the selector, the application last; null when none does.
    ZRResponder* targetForAction(std::string_view selector);

private:
    struct DefaultTag { };
    explicit ZRApplication(DefaultTag);
    void _runCommand(const ZRDictionary& command);

    ZRErrorPtr _modalError;
    std::vector<std::unique_ptr<ZRModalSession>> _sessions;
    std::map<std::pair<std::string, std::string>, Action, std::less<>> _classActions;
    ZRResponder* _firstResponder = nullptr;
    bool _launched = false;
};
