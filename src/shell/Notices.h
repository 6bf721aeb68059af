#pragma once

#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "platform/UserDefaults.h"

#include <string>

namespace dorix {

class DictationController;
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

}  // namespace dorix
