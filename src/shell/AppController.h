#pragma once

#include "base/async/TaskScope.h"
#include "dictation/AppState.h"
#include "dictation/DictationController.h"
#include "dictation/GlobalHotKey.h"
#include "dictation/PushToTalkMonitor.h"
#include "dictation/context/TextInsertion.h"
#include "localdata/HistoryStore.h"
#include "localdata/SettingsStore.h"
#include "platform/Platform.h"
#include "shell/BasicWriter.h"
#include "shell/HistoryRecorder.h"
#include "shell/permissions/Permissions.h"
#include "speech/SpeechEngine.h"

#include <memory>
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

    /// The start-up sequence; once.
    void applicationDidFinishLaunching();

 private:
    void wireKeyMonitor();
    void registerHotKeys();
    void installObservers();
    void shortcutPressed(DictationController::Mode mode);
    void applyPause(bool paused);
    void logHUD(const HUDPhase& phase);
    Task<void> prepareSpeech();

    const Platform platform_;
    AppState state_;
    SettingsStore settings_;
    HistoryStore history_;
    HistoryRecorder recorder_;
    Permissions permissions_;
    SpeechEngine speech_;
    BasicWriter writer_;
    TextInserter inserter_;
    DictationController dictation_;
    PushToTalkMonitor ptt_;
    HotKeyTable hotKeys_;
    std::unique_ptr<GlobalHotKey> dictationHotKey_;
    std::unique_ptr<GlobalHotKey> askHotKey_;
    std::vector<Subscription> bag_;
    TaskScope tasks_;
};

}  // namespace dorix
