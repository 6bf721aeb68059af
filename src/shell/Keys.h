#pragma once

#include "base/Observable.h"
#include "dictation/DictationController.h"
#include "dictation/GlobalHotKey.h"
#include "dictation/HeardVoice.h"
#include "dictation/PushToTalkMonitor.h"
#include "platform/KeyCodes.h"

#include <functional>
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

    /// Whether the hold key begins a dictation. It does not where it is only tried out.
    std::function<bool()> mayBegin = [] { return true; };
    /// Called when Esc is pressed anywhere and there is no dictation that it could be meant for. It is only
    /// seen: whoever has the keyboard gets it all the same.
    std::function<void()> onFreeEscape = [] {};

    /// Takes the hot keys, and follows the settings and the grants from now on.
    void install();
    /// Listens to the hold key, unless paused.
    void listen();
    /// Sees which keys work by now, for the texts that name them: whoever had a shortcut may have let go of
    /// it, of which nobody is told.
    void lookAgain();

 private:
    using Mode = DictationController::Mode;

    static constexpr std::uint32_t dictationHotKey = 1;
    static constexpr std::uint32_t askHotKey = 2;

    void wireMonitor();
    struct Shortcut {
        std::uint32_t id;
        std::uint32_t modifiers;
        Mode mode;
        std::unique_ptr<GlobalHotKey> hotKey = nullptr;  // none while another program has the chord
    };

    bool take(Shortcut& shortcut, GlobalHotKey::Refusal refusal);
    void tellPaused();
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
    Shortcut dictationShortcut_{dictationHotKey, hotkeymodifier::option, Mode::write};
    Shortcut askShortcut_{askHotKey, hotkeymodifier::option | hotkeymodifier::shift, Mode::ask};
    Subscription escape_;  // taken from everybody while a recording is shown
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
