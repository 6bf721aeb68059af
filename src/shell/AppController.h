#pragma once

#include "assistant/AssistantController.h"
#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "card/AnswerCardPresenter.h"
#include "cloud/AccountForm.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "cloud/OwnService.h"
#include "context/TextInsertion.h"
#include "context/TextSelection.h"
#include "context/UserClipboard.h"
#include "context/WindowCapture.h"
#include "dictation/AppState.h"
#include "dictation/Composer.h"
#include "dictation/DictationController.h"
#include "dictation/UtteranceRoads.h"
#include "dictation/WrittenText.h"
#include "localdata/HistoryStore.h"
#include "localdata/SettingsStore.h"
#include "memory/MemoryController.h"
#include "memory/activity/ActivityTracker.h"
#include "memory/embedding/EmbeddingModel.h"
#include "memory/embedding/PreferredEmbedder.h"
#include "memory/embedding/ServerEmbedder.h"
#include "memory/embedding/StaticEmbedder.h"
#include "memory/reading/JailedDocumentReader.h"
#include "memory/store/MemoryStore.h"
#include "modelserver/ModelServer.h"
#include "onboarding/Onboarding.h"
#include "overlay/AppWindow.h"
#include "panel/HistoryPanel.h"
#include "panel/OlderItems.h"
#include "permissions/Permissions.h"
#include "platform/Platform.h"
#include "settings/SettingsForm.h"
#include "shell/CardHost.h"
#include "shell/EventTrace.h"
#include "shell/FirstScreen.h"
#include "shell/IconMenu.h"
#include "shell/Keys.h"
#include "shell/MicrophoneChoice.h"
#include "shell/Notices.h"
#include "shell/PanelHost.h"
#include "shell/SpeechOffer.h"
#include "shell/SpeechPreparation.h"
#include "speech/Speaker.h"
#include "speech/SpeechEngine.h"
#include "speech/models/HelperUnpacker.h"
#include "speech/models/ModelInstalls.h"
#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/SpeechServer.h"
#include "writing/LocalPolisher.h"
#include "writing/WritingRouter.h"

#include <filesystem>
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

    /// Nothing begins any more. Returns when nothing of the user's is under way, or at least all that was
    /// said is in the history: the program may end. Takes some seconds at most, with an export some more.
    Task<void> settled();

    void iconClicked();
    /// The user has started the program once more.
    void reopen();

    /// The menu of the icon, as things stand.
    Menu iconMenu();
    /// The icon's tooltip, in the app language.
    std::string iconTooltip() const;

    /// What views render and change.
    AppState& state() { return state_; }
    SettingsStore& settings() { return settings_; }
    SpeechInput& speech() { return speech_; }
    /// Reads answers aloud.
    Speaker& speaker() { return speaker_; }
    HistoryPanel& panel() { return panel_; }
    AnswerCardPresenter& answerCard() { return answerCard_; }
    AccountStore& account() { return account_; }
    AccountForm& accountForm() { return accountForm_; }
    Onboarding& onboarding() { return onboarding_; }
    SettingsForm& settingsForm() { return settingsForm_; }
    Toasts& toasts() { return toasts_; }
    /// Writes where the system has no language model of its own.
    ModelServer& modelServer() { return modelServer_; }
    SpeechModels& speechModels() { return speechModels_; }
    ModelInstaller& modelInstaller() { return modelInstaller_; }
    ModelInstalls& modelInstalls() { return modelInstalls_; }
    MemoryController& memory() { return memory_; }
    AssistantController& assistant() { return assistant_; }

 private:
    IconVerbs iconVerbs();
    void showStatusItem();
    Menu setupMenu();
    void showSettings();
    SystemLanguageModel& languageModel();
    SettingsForm::Parts settingsParts();
    void watchSettings();
    void watchDictation();
    void watchMemory();
    void wireCard();

    const Platform platform_;
    const std::filesystem::path database_ = platform_.userData / "DORIX" / "dorix.sqlite";
    const std::filesystem::path engines_ = platform_.userData / "DORIX" / "engines";
    AppState state_;
    SettingsStore settings_;
    HistoryStore history_;
    Permissions permissions_;
    SpeechModels speechModels_;
    SpeechServer speechServer_;
    LocalRecognition recognition_;
    SpeechEngine speech_;
    Speaker speaker_;
    HelperUnpacker unpacker_;
    ModelInstaller modelInstaller_;
    ModelInstalls modelInstalls_;
    DorixAPI api_;
    AccountStore account_;
    OwnService ownService_;
    AccountForm accountForm_;
    ModelServer modelServer_;
    LocalPolisher localPolisher_;
    WritingRouter router_;
    UserClipboard clipboard_;
    TextInserter inserter_;
    TextSelection selection_;
    SerialExecutor pictures_;
    WindowCapture screenCapture_;

    EmbeddingModel embeddingModel_;
    StaticEmbedder staticEmbedder_;
    ServerEmbedder serverEmbedder_;
    PreferredEmbedder embedder_;
    MemoryStore memoryStore_;
    JailedDocumentReader indexedDocuments_;
    JailedDocumentReader askedDocuments_;
    MemoryController memory_;
    ActivityTracker activity_;
    AssistantController assistant_;
    const Destinations destinations_;

    HUDFlash hud_;
    Recorder recorder_;
    WrittenText written_;
    UtteranceRoads roads_;
    Composer composer_;
    DictationController dictation_;
    SettingsForm settingsForm_;

    SerialExecutor exports_;
    PanelExport exporter_;
    HistoryPanel panel_;
    OlderItems olderItems_;
    PanelHost panelHost_;
    AnswerCardPresenter answerCard_;
    CardHost cardHost_;
    FirstRunHint firstRunHint_;
    Toasts toasts_;
    SpeechOffer speechOffer_;
    MicrophoneChoice microphoneChoice_;
    LimitedSessionNotice sessionNotice_;
    AccountNotice accountNotice_;
    ModelServerNotice modelServerNotice_;
    Keys keys_;
    Onboarding onboarding_;
    SpeechPreparation speechPreparation_;
    FirstScreen firstScreen_;
    const IconVerbs iconVerbs_ = iconVerbs();
    std::optional<EventTrace> trace_;
    std::vector<Subscription> subscriptions_;
    TaskScope tasks_;
};

}  // namespace dorix
