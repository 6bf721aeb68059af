#include "shell/PanelHost.h"

#include "base/async/Sleep.h"
#include "dictation/DictationController.h"
#include "speech/Speaker.h"

namespace dorix {

namespace {
constexpr double dialogGoes = 0.3;  // seconds, from the answer to the desktop's dialog having gone
constexpr double clickLasts = 0.5;  // seconds, from the button going down to what the desktop says of it
}  // namespace

PanelHost::PanelHost(const Platform& platform, AppState& state, const AppWindows& windows,
                     HistoryPanel& panel, DictationController& dictation, Speaker& speaker,
                     const Observable<std::string>& language)
    : platform_(platform),
      state_(state),
      windows_(windows),
      panel_(panel),
      dictation_(dictation),
      speaker_(speaker),
      language_(language),
      presenter_(platform.executor, state, windows, dictation.panelTarget, steps()),
      tasks_(platform.executor) {
    wirePanel();
}

PanelPresenter::Steps PanelHost::steps() {
    return {.capture = [this] { return captureAppContext(platform_.workspace, platform_.accessibility); },
            .dropRecording = [this] { dictation_.dropComposerRecording(); },
            .watchOutsideClicks = [this](bool on) { watchOutsideClicks(on); }};
}

void PanelHost::wirePanel() {
    dictation_.closePanel = [this] { presenter_.close(); };
    panel_.actions.close = [this] { presenter_.close(); };
    panel_.actions.submitComposer = [this] { dictation_.sendComposer(); };
    panel_.actions.toggleMic = [this] { dictation_.toggleComposerMic(); };
    panel_.actions.toggleScreen = [this] { state_.composerScreen.set(!state_.composerScreen.get()); };
    panel_.actions.reinsert = [this](const HistoryItem& item) {
        // The second click of a double click meets a panel that fades.
        if (state_.panelOpen.get()) dictation_.reinsert(item);
    };
    panel_.actions.speak = [this](const HistoryItem& item) {
        speaker_.toggle(item.answer, item.id, language_.get());
    };
    panel_.exporter.onAsked = [this] { tasks_.spawn(returnToPanel()); };
    panel_.exporter.onFinished = [this](const std::string& words, bool failed) {
        dictation_.flash(failed ? HUDPhase::error(words) : HUDPhase::done(words), 4.0);
    };
}

/// Not every window manager gives the keyboard back to a window that is in no taskbar, and none does as long
/// as the dialog still stands above it.
Task<void> PanelHost::returnToPanel() {
    co_await sleep(dialogGoes);
    if (state_.panelOpen.get()) windows_.panel->takeKeyboard();
}

void PanelHost::watchOutsideClicks(bool on) {
    outsideClickMonitor_.reset();
    if (!on) return;
    outsideClickMonitor_ = platform_.mouseEvents.addGlobalMonitor([this] { clickedOutside(); });
}

void PanelHost::clickedOutside() {
    // The dialog that asks where a file is to go is the desktop's, and stands above the panel.
    if (panel_.exporter.isAsking()) return;
    closedByClickAt_ = platform_.executor.now();
    windows_.panel->clickedOutside();
    presenter_.close();
}

/// The desktop draws the status icon, so the panel has just been closed by the same click.
void PanelHost::statusItemClicked() {
    if (platform_.executor.now() - closedByClickAt_ > clickLasts) presenter_.toggle();
}

}  // namespace dorix
