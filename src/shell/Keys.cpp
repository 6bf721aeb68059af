#include "shell/Keys.h"

#include "dictation/WatchedKey.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"

namespace dorix {

using Source = DictationController::Source;

namespace {
constexpr double secondsForPause = 4.0;
}

Keys::Keys(Executor& executor, KeyEventMonitors& events, HotKeyRegistrar& registrar, AppState& state,
           SettingsStore& settings, Permissions& permissions, SpeechInput& speech,
           DictationController& dictation)
    : events_(events),
      state_(state),
      settings_(settings),
      permissions_(permissions),
      dictation_(dictation),
      ptt_(executor, events, settings.pushToTalkKey.get()),
      voice_(speech),
      hotKeyTable_(executor, registrar) {
    wireMonitor();
}

void Keys::wireMonitor() {
    const auto holdsKey = [this] { return dictation_.source() == Source::holdKey; };
    ptt_.onBegin = [this] {
        if (!mayBegin()) return;
        voice_.forget();
        dictation_.begin(Source::holdKey, Mode::write);
    };
    ptt_.hasSpoken = [this] { return voice_.isHeard(); };
    ptt_.onConfirm = [this, holdsKey] {
        state_.showFirstRunHint.set(false);
        if (holdsKey()) dictation_.showListening();
    };
    ptt_.onEnd = [this, holdsKey] {
        if (holdsKey()) dictation_.stopAndProcess();
    };
    ptt_.onCancel = [this, holdsKey] {
        if (holdsKey()) dictation_.cancelRecording();
    };
    ptt_.onHeldInVain = [this] { tellPaused(); };
    ptt_.onEscape = [this] {
        if (dictation_.isRecording()) {
            dictation_.cancelRecording();
            return true;
        }
        if (!dictation_.busy().get()) onFreeEscape();
        return false;
    };
}

void Keys::install() {
    take(dictationShortcut_, GlobalHotKey::Refusal::logged);
    take(askShortcut_, GlobalHotKey::Refusal::logged);
    lookAgain();
    subscriptions_.push_back(events_.onKeyboardChange([this] { lookAgain(); }));
    subscriptions_.push_back(settings_.pushToTalkKey.subscribe([this](PushToTalkKey key) { applyKey(key); }));
    subscriptions_.push_back(permissions_.accessibility.subscribe([this](bool trusted) {
        // Monitors from before the grant receive nothing. One that has just reported a press is no such
        // monitor, and starting anew would lose the press.
        if (trusted && ptt_.phase() == PushToTalkMonitor::Phase::idle) ptt_.start();
    }));
    subscriptions_.push_back(settings_.paused.subscribe([this](bool paused) { applyPause(paused); }));
    subscriptions_.push_back(dictation_.isShown().subscribe(
        [this](bool shown) { escape_ = shown ? events_.withhold(keycode::escape) : Subscription{}; }));
}

void Keys::listen() {
    ptt_.isEnabled = !settings_.paused.get();
    ptt_.start();
}

/// Whether the chord comes to us.
bool Keys::take(Shortcut& shortcut, GlobalHotKey::Refusal refusal) {
    if (shortcut.hotKey) return shortcut.hotKey->isDelivered();
    shortcut.hotKey = GlobalHotKey::make(
        hotKeyTable_, keycode::space, shortcut.modifiers, shortcut.id,
        {.pressed = [this, mode = shortcut.mode](double time) { shortcutPressed(mode, time); },
         .released = [this](double time) { dictation_.shortcutReleased(time); }},
        refusal);
    return shortcut.hotKey != nullptr;
}

void Keys::lookAgain() {
    const auto holdKey = watched(ptt_.key).keyCode;
    state_.keys.set({.shortcut = take(dictationShortcut_, GlobalHotKey::Refusal::silent),
                     .askShortcut = take(askShortcut_, GlobalHotKey::Refusal::silent),
                     .hold = ptt_.key,
                     .holdIsThere = events_.reportsKey(holdKey),
                     .holdTypes = events_.typesCharacters(holdKey)});
}

void Keys::shortcutPressed(Mode mode, double time) {
    state_.showFirstRunHint.set(false);
    if (settings_.paused.get()) return tellPaused();
    dropPress();
    dictation_.shortcutPressed(mode, time);
}

/// The old key's release would not be seen any more.
void Keys::applyKey(PushToTalkKey key) {
    dropPress();
    ptt_.key = key;
    ptt_.start();
    lookAgain();
}

void Keys::tellPaused() {
    dictation_.flash(HUDPhase::info(tr("DORIX está en pausa. Reanúdalo desde el menú del icono.")),
                     secondsForPause);
}

void Keys::applyPause(bool paused) {
    ptt_.isEnabled = !paused;
    paused ? dropPress() : ptt_.reset();
}

/// Whoever takes over from a press of the hold key ends what it began.
void Keys::dropPress() {
    if (ptt_.phase() == PushToTalkMonitor::Phase::idle) return;
    ptt_.reset();
    ptt_.onCancel();
}

}  // namespace dorix
