#pragma once

#include "base/Observable.h"
#include "dictation/DictationController.h"
#include "dictation/GlobalHotKey.h"
#include "dictation/HeardVoice.h"
#include "dictation/PushToTalkMonitor.h"

#include <memory>
#include <vector>

namespace dorix {

/// What the user's keys do: the hold key and the two hot keys drive the flow, as the settings and the grants
/// have it. Main executor; what it is given outlives it.
class Keys {
 public:
    Keys(Executor& executor, KeyEventMonitors& events, HotKeyRegistrar& registrar, AppState& state,
         SettingsStore& settings, Permissions& permissions, SpeechInput& speech,
         DictationController& dictation);
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;

    /// Takes the hot keys, and follows the settings and the grants from now on.
    void install();
    /// Listens to the hold key, unless paused.
    void listen();

 private:
    using Mode = DictationController::Mode;

    void wireMonitor();
    std::unique_ptr<GlobalHotKey> hotKey(std::uint32_t modifiers, std::uint32_t id, Mode mode);
    void shortcutPressed(Mode mode, double time);
    void applyKey(PushToTalkKey key);
    void applyPause(bool paused);
    void dropPress();

    KeyEventMonitors& events_;
    AppState& state_;
    SettingsStore& settings_;
    Permissions& permissions_;
    DictationController& dictation_;
    PushToTalkMonitor ptt_;
    HeardVoice voice_;
    HotKeyTable hotKeyTable_;
    std::vector<std::unique_ptr<GlobalHotKey>> hotKeys_;
    Subscription escape_;  // taken from everybody while a recording is shown
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
