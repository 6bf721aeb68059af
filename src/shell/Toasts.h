#pragma once

#include <string>

namespace dorix {

class DictationController;
class SettingsStore;
struct AppState;

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

}  // namespace dorix
