#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "platform/SessionState.h"
#include "platform/UserDefaults.h"

#include <string>

namespace dorix {

struct AppWindows;
class APIError;
class DictationController;
class ModelServer;
class Notifications;
class SettingsStore;

/// Short messages about what the program has learned, which nobody waits for. Main executor; what it is given
/// outlives it.
class Toasts {
 public:
    Toasts(const AppState& state, const SettingsStore& settings, DictationController& dictation)
        : state_(state), settings_(settings), dictation_(dictation) {}

    /// Shows `text` if nothing is going on that it would disturb; otherwise false, and the caller keeps it
    /// for later.
    bool show(const std::string& text);

 private:
    const AppState& state_;
    const SettingsStore& settings_;
    DictationController& dictation_;
};

/// Shows the hint on how to begin, for a while, the first times that the program starts. Main executor.
class FirstRunHint {
 public:
    enum class Forced { no, yes };

    /// All must outlive it.
    FirstRunHint(Executor& executor, UserDefaults& defaults, AppState& state)
        : defaults_(defaults), state_(state), hideTimer_(executor) {}

    /// Does nothing when it has been shown often enough, unless forced.
    void show(Forced forced);

 private:
    UserDefaults& defaults_;
    AppState& state_;
    Timer hideTimer_;
};

/// Tells the user, once and for all, that the program does not reach every window where that is so: as a
/// notification or, where there are none, in the HUD. Main executor; what it is given outlives it.
class LimitedSessionNotice {
 public:
    LimitedSessionNotice(const SessionState& session, UserDefaults& defaults, Notifications& notifications,
                         DictationController& dictation)
        : session_(session), defaults_(defaults), notifications_(notifications), dictation_(dictation) {}

    Task<void> tell();

 private:
    const SessionState& session_;
    UserDefaults& defaults_;
    Notifications& notifications_;
    DictationController& dictation_;
};

/// Tells the user that the session needs them, and opens the account window for it: once no words are on
/// their way to the window that has the keyboard. Main executor; what it is given outlives it.
class AccountNotice {
 public:
    AccountNotice(const AppWindows& windows, DictationController& dictation);
    AccountNotice(const AccountNotice&) = delete;
    AccountNotice& operator=(const AccountNotice&) = delete;

    void tell(const APIError& error);

 private:
    void openWhenFree();

    const AppWindows& windows_;
    DictationController& dictation_;
    bool opens_ = false;
    const Subscription busy_;
    const Subscription recording_;
};

/// Tells the user once that what they dictate will leave this computer for a server of language models that
/// the settings name, as soon as nothing else shows. Main executor; what it is given outlives it.
class ModelServerNotice {
 public:
    ModelServerNotice(const AppState& state, ModelServer& server, DictationController& dictation);
    ModelServerNotice(const ModelServerNotice&) = delete;
    ModelServerNotice& operator=(const ModelServerNotice&) = delete;

 private:
    void tell();

    ModelServer& server_;
    DictationController& dictation_;
    const Subscription found_;
    const Subscription hud_;
    const Subscription hint_;
};

}  // namespace dorix
