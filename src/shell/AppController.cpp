#include "shell/AppController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Sleep.h"
#include "localdata/Language.h"
#include "overlay/IconLook.h"
#include "platform/Application.h"
#include "platform/KeyCodes.h"
#include "platform/StatusItem.h"

#include <string>

namespace dorix {

using Mode = DictationController::Mode;
using Source = DictationController::Source;

namespace {
constexpr double dialogGoes = 0.3;  // seconds, from the answer to the desktop's dialog having gone
constexpr double clickLasts = 0.5;  // seconds, from the button going down to what the desktop says of it
}  // namespace

AppController::AppController(const Platform& platform)
    : platform_(platform),
      settings_(platform.defaults, platform.loginItem, platform.languages),
      history_(platform.userData / "DORIX" / "dorix.sqlite"),
      permissions_(platform.executor, platform.grants),
      speech_(platform.executor, platform.audio, platform.recognition),
      inserter_(platform.executor, platform.pasteboard, platform.events),
      selection_(platform.executor, platform.accessibility, platform.pasteboard, inserter_),
      dictation_({.executor = platform.executor,
                  .state = state_,
                  .settings = settings_,
                  .permissions = permissions_,
                  .speech = speech_,
                  .writer = writer_,
                  .inserter = inserter_,
                  .selection = selection_,
                  .workspace = platform.workspace,
                  .accessibility = platform.accessibility,
                  .sounds = platform.sounds,
                  .history = history_}),
      panel_({.executor = platform.executor,
              .background = background_,
              .state = state_,
              .history = history_,
              .database = platform.userData / "DORIX" / "dorix.sqlite",
              .pasteboard = platform.pasteboard,
              .savePanel = platform.savePanel,
              .files = platform.files,
              .urls = platform.urls}),
      panelPresenter_(platform.executor, state_, windows, dictation_.panelTarget, panelSteps()),
      firstRunHint_(platform.executor, platform.defaults, state_),
      ptt_(platform.executor, platform.keyEvents, settings_.pushToTalkKey.get()),
      hotKeys_(platform.executor, platform.hotKeys),
      tasks_(platform.executor) {}

void AppController::applicationDidFinishLaunching() {
    wirePanel();
    wireKeyMonitor();
    registerHotKeys();
    installObservers();
    windows.icon->place();
    windows.icon->show();
    showStatusItem();
    ptt_.isEnabled = !settings_.paused.get();
    ptt_.start();
    tasks_.spawn(prepareSpeech());
    firstRunHint_.show(FirstRunHint::Forced::no);
}

PanelPresenter::Steps AppController::panelSteps() {
    return {.capture = [this] { return captureAppContext(platform_.workspace, platform_.accessibility); },
            .cancelSpeech = [this] { speech_.cancel(); },
            .watchOutsideClicks = [this](bool on) { watchOutsideClicks(on); }};
}

void AppController::wirePanel() {
    dictation_.closePanel = [this] { panelPresenter_.close(); };
    panel_.actions.close = [this] { panelPresenter_.close(); };
    panel_.actions.toggleMic = [this] { dictation_.toggleComposerMic(); };
    panel_.actions.reinsert = [this](const HistoryItem& item) { dictation_.reinsert(item); };
    panel_.onAsked = [this] { tasks_.spawn(returnToPanel()); };
    panel_.onExported = [this](const std::string& words, bool failed) {
        dictation_.flash(failed ? HUDPhase::error(words) : HUDPhase::done(words), 4.0);
    };
}

/// Not every window manager gives the keyboard back to a window that is in no taskbar, and none does as long
/// as the dialog still stands above it.
Task<void> AppController::returnToPanel() {
    co_await sleep(dialogGoes);
    if (state_.panelOpen.get()) windows.panel->takeKeyboard();
}

void AppController::watchOutsideClicks(bool on) {
    outsideClickMonitor_.reset();
    if (!on) return;
    outsideClickMonitor_ = platform_.mouseEvents.addGlobalMonitor([this] { clickedOutside(); });
}

void AppController::clickedOutside() {
    // The dialog that asks where a file is to go is the desktop's, and stands above the panel.
    if (panel_.isAsking()) return;
    closedByClickAt_ = platform_.executor.now();
    windows.panel->clickedOutside();
    panelPresenter_.close();
}

/// The desktop draws the status icon, so a click there is also one outside of the panel: that has closed it.
void AppController::statusItemClicked() {
    if (platform_.executor.now() - closedByClickAt_ > clickLasts) panelPresenter_.toggle();
}

Task<void> AppController::settled() {
    co_await panel_.settled();
    co_await inserter_.settled();
}

void AppController::iconClicked() { panelPresenter_.toggle(); }

void AppController::reopen() { panelPresenter_.toggle(); }

void AppController::traceTo(const std::filesystem::path& file) {
    trace_.emplace(file, platform_.executor, state_, dictation_.busy());
    dictation_.onRoute = [this](Route route) { trace_->route(route); };
}

void AppController::wireKeyMonitor() {
    const auto holdsKey = [this] { return dictation_.source() == Source::holdKey; };
    ptt_.onBegin = [this] { dictation_.begin(Source::holdKey, Mode::write); };
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
    ptt_.onEscape = [this] {
        if (!dictation_.isRecording()) return false;
        dictation_.cancelRecording();
        return true;
    };
}

void AppController::registerHotKeys() {
    const auto released = [this] { dictation_.shortcutReleased(); };
    dictationHotKey_ =
        GlobalHotKey::make(hotKeys_, keycode::space, hotkeymodifier::option, 1,
                           {.pressed = [this] { shortcutPressed(Mode::write); }, .released = released});
    askHotKey_ =
        GlobalHotKey::make(hotKeys_, keycode::space, hotkeymodifier::option | hotkeymodifier::shift, 2,
                           {.pressed = [this] { shortcutPressed(Mode::ask); }, .released = released});
}

void AppController::shortcutPressed(Mode mode) {
    state_.showFirstRunHint.set(false);
    if (ptt_.phase() != PushToTalkMonitor::Phase::idle) {
        ptt_.reset();
        ptt_.onCancel();
    }
    dictation_.shortcutPressed(mode);
}

void AppController::installObservers() {
    bag_.push_back(settings_.pushToTalkKey.subscribe([this](PushToTalkKey key) {
        ptt_.key = key;
        ptt_.start();
    }));
    bag_.push_back(permissions_.accessibility.subscribe([this](bool trusted) {
        // Monitors from before the grant receive nothing. One that has just reported a press is no such
        // monitor, and starting anew would lose the press.
        if (trusted && ptt_.phase() == PushToTalkMonitor::Phase::idle) ptt_.start();
    }));
    bag_.push_back(settings_.paused.subscribe([this](bool paused) { applyPause(paused); }));
    bag_.push_back(settings_.languageObserver().code.subscribe(
        [this](const std::string&) { platform_.statusItem.setToolTip(iconTooltip()); }));
}

void AppController::applyPause(bool paused) {
    ptt_.isEnabled = !paused;
    if (paused && ptt_.phase() != PushToTalkMonitor::Phase::idle) {
        ptt_.reset();
        ptt_.onCancel();
    }
}

void AppController::showStatusItem() {
    platform_.statusItem.show([this] { statusItemClicked(); }, [this] { return iconMenu(); });
    platform_.statusItem.setToolTip(iconTooltip());
}

Menu AppController::iconMenu() {
    const bool paused = settings_.paused.get();
    return {
        {tr(state_.panelOpen.get() ? "Cerrar historial" : "Abrir historial"),
         [this] { panelPresenter_.toggle(); }},
        ClosureMenuItem::separator(),
        {tr(paused ? "Reanudar DORIX" : "Pausar DORIX"), [this, paused] { settings_.paused.set(!paused); }},
        ClosureMenuItem::separator(),
        {tr("Reiniciar DORIX"), [this] { platform_.application.relaunch(); }},
        {tr("Salir de DORIX"), [this] { platform_.application.terminate(); }},
    };
}

std::string AppController::iconTooltip() const { return dorix::iconTooltip({}); }

bool AppController::showToast(const std::string& text) {
    const bool disturbs = !dictation_.isIdle() || state_.panelOpen.get() || state_.meetingActive.get();
    if (disturbs || settings_.paused.get()) return false;
    dictation_.flash(HUDPhase::learned(text), 5.0);
    return true;
}

Task<void> AppController::prepareSpeech() {
    try {
        co_await speech_.prepare(settings_.language.get());
    } catch (const Error& error) {
        logLine("no se pudo preparar el modelo de voz: " + error.localizedDescription());
        dictation_.flash(HUDPhase::error(error.localizedDescription()), 4.0);
    }
    logLine("listo");
}

}  // namespace dorix
