#pragma once

#include "base/async/TaskScope.h"
#include "base/async/ThreadPool.h"
#include "context/TextInsertion.h"
#include "context/TextSelection.h"
#include "dictation/AppState.h"
#include "dictation/DictationController.h"
#include "dictation/GlobalHotKey.h"
#include "dictation/PushToTalkMonitor.h"
#include "localdata/HistoryStore.h"
#include "localdata/SettingsStore.h"
#include "overlay/AppWindow.h"
#include "panel/HistoryPanel.h"
#include "panel/PanelPresenter.h"
#include "permissions/Permissions.h"
#include "platform/ClosureMenuItem.h"
#include "platform/MouseEventMonitors.h"
#include "platform/Platform.h"
#include "shell/EventTrace.h"
#include "shell/FirstRunHint.h"
#include "speech/SpeechEngine.h"
#include "writing/BasicWriter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Owns every long-lived object, wires them to one another, and starts them in order. It has no logic of its
/// own. Main executor.
class AppController {
 public:
    /// What `platform` refers to must outlive the controller.
    explicit AppController(const Platform& platform);
    AppController(const AppController&) = delete;
    AppController& operator=(const AppController&) = delete;

    /// The program's windows, where there is a display to draw on. They must outlive the controller's work.
    AppWindows windows;

    /// The start-up sequence; once.
    void applicationDidFinishLaunching();

    /// Writes what happens from now on to `file`, for whoever looks for a fault.
    void traceTo(const std::filesystem::path& file);

    /// Returns when nothing of the user's is under way: the program may end.
    Task<void> settled();

    void iconClicked();
    /// The user has started the program once more.
    void reopen();

    /// The menu of the icon, as things stand.
    Menu iconMenu();
    /// The icon's tooltip, in the app language.
    std::string iconTooltip() const;

    /// Shows `text` as something learned if nothing is going on that it would disturb; otherwise false, and
    /// the caller keeps it for later.
    bool showToast(const std::string& text);

    /// What views render and change.
    AppState& state() { return state_; }
    SettingsStore& settings() { return settings_; }
    SpeechInput& speech() { return speech_; }
    HistoryPanel& panel() { return panel_; }

 private:
    PanelPresenter::Steps panelSteps();
    void wirePanel();
    Task<void> returnToPanel();
    void watchOutsideClicks(bool on);
    void clickedOutside();
    void statusItemClicked();
    void wireKeyMonitor();
    void registerHotKeys();
    void installObservers();
    void shortcutPressed(DictationController::Mode mode);
    void applyPause(bool paused);
    void showStatusItem();
    Task<void> prepareSpeech();

    const Platform platform_;
    AppState state_;
    SettingsStore settings_;
    HistoryStore history_;
    Permissions permissions_;
    SpeechEngine speech_;
    BasicWriter writer_;
    TextInserter inserter_;
    TextSelection selection_;
    DictationController dictation_;
    ThreadPool background_{1};
    HistoryPanel panel_;
    PanelPresenter panelPresenter_;
    MouseEventMonitors::Token outsideClickMonitor_;  // while the panel is up
    double closedByClickAt_ = -1;                    // by the executor's clock
    FirstRunHint firstRunHint_;
    PushToTalkMonitor ptt_;
    HotKeyTable hotKeys_;
    std::unique_ptr<GlobalHotKey> dictationHotKey_;
    std::unique_ptr<GlobalHotKey> askHotKey_;
    std::optional<EventTrace> trace_;
    std::vector<Subscription> bag_;
    TaskScope tasks_;
};

}  // namespace dorix
