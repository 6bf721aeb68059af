#include "shell/AppController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Timeout.h"
#include "localdata/Language.h"
#include "overlay/Icon.h"
#include "platform/Keychain.h"
#include "platform/Processes.h"
#include "platform/SessionState.h"
#include "platform/StatusItem.h"
#include "platform/Workspace.h"
#include "speech/recogniser/ModelChoice.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {
constexpr const char* formerSecret = "claude-api-key";  // of earlier versions; nobody uses it any more
constexpr double exportPatience = 10;  // seconds; an export that takes longer leaves the file as it was

/// Those in which the user may be reading, the likeliest first.
std::vector<std::string> languagesOfScreen(SettingsStore& settings, const SystemLanguages& system) {
    std::vector<std::string> languages{settings.language.get(), settings.languageObserver().code.get()};
    languages.insert(languages.end(), system.preferred.begin(), system.preferred.end());
    return languages;
}

}  // namespace

AppController::AppController(const Platform& platform)
    : platform_(platform),
      settings_(platform.defaults, platform.loginItem, platform.languages),
      history_(database_),
      permissions_(platform.executor, platform.grants),
      speechModels_(platform.userData / "DORIX" / "models", platform.packagedSpeechModels,
                    settings_.speechModels),
      speechServer_(platform.executor, settings_, platform.keychain),
      recognition_(platform.executor, platform.helpers,
                   serverOr(speechServer_, modelChoice(speechModels_, engines_)),
                   modelChoice(speechModels_, engines_)),
      speech_(platform.executor, platform.audio,
              platform.recognition != nullptr ? *platform.recognition : recognition_),
      speaker_(platform.executor, platform.synthesizer, platform.languageRecognizer),
      unpacker_(platform.executor, platform.helpers),
      modelInstaller_({platform.executor, platform.http, unpacker_, platform.folders},
                      ModelCatalogue::packaged(), platform.userData / "DORIX", settings_.speechMirrors,
                      platform.memory),
      modelInstalls_(platform.executor, speechModels_, modelInstaller_),
      api_(platform.executor, platform.http, platform.keychain,
           configuredServer(platform.defaults, platform.packagedServer)),
      account_(platform.executor, api_, platform.keychain, platform.defaults, platform.computerName),
      ownService_(platform.executor, platform.http, platform.companion, api_, account_),
      accountForm_(platform.executor, api_, account_, ownService_, platform.defaults),
      modelServer_(platform.executor, settings_, platform.http, platform.keychain,
                   [&companion = platform.companion](int port) { return companion.isTrusted(port); }),
      localPolisher_(languageModel()),
      router_(settings_, account_, api_, localPolisher_),
      clipboard_(platform.executor, platform.pasteboard),
      inserter_({platform.executor, clipboard_, platform.pasteboard, platform.events, platform.workspace}),
      selection_(platform.executor, platform.accessibility, clipboard_, platform.pasteboard, platform.events,
                 platform.workspace),
      screenCapture_({.executor = platform.executor,
                      .worker = pictures_,
                      .grants = platform.grants,
                      .screen = platform.screen,
                      .helpers = platform.helpers,
                      .ownProcess = platform.processes.ownProcessIdentifier(),
                      .languages = [this] { return languagesOfScreen(settings_, platform_.languages); }}),
      embeddingModel_({platform.executor, platform.http, platform.folders}, catalogueEmbedding(),
                      platform.userData / "DORIX", settings_.speechMirrors),
      staticEmbedder_(platform.executor, platform.mapper, platform.background, embeddingModel_.folder()),
      serverEmbedder_(platform.executor, modelServer_),
      embedder_(staticEmbedder_, serverEmbedder_),
      memoryStore_(platform.executor, platform.userData / "DORIX" / "memory.sqlite"),
      indexedDocuments_(platform.executor, platform.helpers, JailedDocumentReader::Pace::idle),
      askedDocuments_(platform.executor, platform.helpers, JailedDocumentReader::Pace::awaited),
      memory_({.executor = platform.executor,
               .store = memoryStore_,
               .embedder = embedder_,
               .indexed = indexedDocuments_,
               .asked = askedDocuments_,
               .history = history_,
               .defaults = platform.defaults,
               .files = platform.fileTree,
               .background = platform.background,
               .messages = nullptr,
               .home = platform.home,
               .documentFolders = platform.documentFolders}),
      activity_({.executor = platform.executor,
                 .workspace = platform.workspace,
                 .accessibility = platform.accessibility,
                 .session = platform.session,
                 .paused = settings_.paused,
                 .trackActivity = memory_.trackActivity,
                 .store = memoryStore_}),
      assistant_(
          {.executor = platform.executor,
           .engines = {.writer = router_, .api = api_, .model = languageModel(), .screen = &screenCapture_},
           .history = history_,
           .memory = memory_,
           .screen = &screenCapture_,
           .selection = selection_,
           .inserter = inserter_,
           .workspace = platform.workspace}),
      destinations_{.assistant = &assistant_, .documents = &askedDocuments_, .hasMemory = true},
      hud_(platform.executor, state_),
      recorder_(platform.executor, settings_, permissions_, speech_, platform.workspace,
                platform.accessibility, &screenCapture_),
      written_(platform.executor, settings_, history_, clipboard_, inserter_, platform.workspace,
               platform.accessibility, hud_),
      roads_(router_, selection_, platform.accessibility, written_, hud_, destinations_),
      composer_(platform.executor, state_, settings_, permissions_, speech_, hud_, destinations_.assistant),
      dictation_(platform.executor, state_, settings_, permissions_, speech_, platform.sounds, recorder_,
                 roads_, written_, composer_, hud_, platform.session),
      settingsForm_(settingsParts()),
      exporter_(platform.executor, exports_, platform.savePanel, platform.files, database_),
      panel_(platform.executor, state_, speech_, history_, platform.pasteboard, platform.urls, exporter_),
      olderItems_(platform.executor, state_, history_, database_),
      panelHost_(platform, state_, windows, panel_, dictation_, speaker_, settings_.language),
      answerCard_({.executor = platform.executor,
                   .card = assistant_.card,
                   .pasteboard = platform.pasteboard,
                   .urls = platform.urls}),
      cardHost_(platform.executor, platform.mouseEvents, state_, windows, answerCard_),
      firstRunHint_(platform.executor, platform.defaults, state_),
      toasts_(state_, settings_, dictation_),
      speechOffer_(platform.executor, state_, settings_, speechModels_, modelInstaller_, modelInstalls_,
                   dictation_, speech_.downloadProgress),
      microphoneChoice_(settings_, platform.audio, dictation_),
      sessionNotice_(platform.session, platform.defaults, platform.notifications, dictation_),
      accountNotice_(windows, dictation_),
      modelServerNotice_(state_, modelServer_, dictation_),
      keys_(platform.executor, platform.keyEvents, platform.hotKeys, state_, settings_, permissions_, speech_,
            dictation_),
      onboarding_({.executor = platform.executor,
                   .state = state_,
                   .settings = settings_,
                   .permissions = permissions_,
                   .audio = platform.audio,
                   .keyboard = platform.keyEvents,
                   .speech = {.settings = settings_,
                              .models = speechModels_,
                              .installer = modelInstaller_,
                              .installs = modelInstalls_,
                              .needsModels = platform.recognition == nullptr}}),
      speechPreparation_(settings_, speechServer_, speech_, dictation_),
      firstScreen_({.executor = platform.executor,
                    .windows = windows,
                    .state = state_,
                    .settings = settings_,
                    .defaults = platform.defaults,
                    .permissions = permissions_,
                    .account = account_,
                    .ownService = ownService_,
                    .onboarding = onboarding_,
                    .hint = firstRunHint_,
                    .speech = speechPreparation_}),
      tasks_(platform.executor) {
    onboarding_.onLook = [this] { keys_.lookAgain(); };
    written_.beforeOwnCursor = [this] {
        return settingsForm_.takesDictation() ? settingsForm_.beforeCursor() : onboarding_.fieldText();
    };
    keys_.mayBegin = [this] { return !settingsForm_.refusesDictation(); };
    assistant_.onReplaced = [this](const auto& target, const auto& receipt) {
        written_.tellUndelivered(receipt, target);
    };
    written_.onWrittenHere = [this] { onboarding_.dictated(); };
    recorder_.isPractising = [this] { return state_.practises.get() || settingsForm_.takesDictation(); };
    state_.abilities.set(abilitiesOf(destinations_));
    panel_.tableIdentifier = [this](const std::string& name) {
        return platform_.workspace.tableIdentifier(name);
    };
    subscriptions_.push_back(state_.panelOpen.subscribe([this](bool open) {
        if (open) keys_.lookAgain();
    }));
    account_.onNeedsAttention = [this](const APIError& error) {
        if (!ownService_.mends(error)) accountNotice_.tell(error);
    };
    modelInstaller_.onLetGo = [this](const std::string& id) {
        recognition_.letGo(speechModels_.folder() / id);
    };
    speechModels_.isUsable = withEngineIn(engines_);
    recognition_.onServerFailed([this](const std::string& why) {
        speechServer_.failed(why);
        tasks_.spawn(speechServer_.readKey());
    });
    recognition_.onRefused([this](const ModelRequest& model) { speechModels_.setAside(model.folder); });
    embeddingModel_.onLetGo = [this] { staticEmbedder_.letGo(); };
    modelInstalls_.onModelsChanged = [this] { tasks_.spawn(speechPreparation_.prepareQuietly()); };
    speechOffer_.showModels = [this] {
        if (windows.settings == &noWindow) return false;
        settingsForm_.showSection("speech");
        showSettings();
        return true;
    };
    // The system's own recogniser has its models from the system.
    if (platform.recognition == nullptr)
        speech_.onUnsupportedLocale = [this] { speechOffer_.languageMissing(); };
    dictation_.accountReady = [this] { return firstScreen_.accountReady(); };
    inserter_.mayType = [this] { return !platform_.session.locked.get(); };
    watchSettings();
    watchDictation();
    watchMemory();
    wireCard();
}

SettingsForm::Parts AppController::settingsParts() {
    return {.executor = platform_.executor,
            .settings = settings_,
            .keys = platform_.keyEvents,
            .account = account_,
            .own = ownService_,
            .models = platform_.languageModel == nullptr ? &modelServer_ : nullptr,
            .speechInput = speech_,
            .speech = {.executor = platform_.executor,
                       .settings = settings_,
                       .audio = platform_.audio,
                       .models = speechModels_,
                       .installer = modelInstaller_,
                       .installs = modelInstalls_,
                       .server = speechServer_,
                       .hasSystemRecogniser = platform_.recognition != nullptr},
            .memory = {.executor = platform_.executor,
                       .memory = memory_,
                       .model = embeddingModel_,
                       .folderPanel = platform_.folderPanel,
                       .home = platform_.home},
            .privacy = {.executor = platform_.executor,
                        .permissions = permissions_,
                        .history = history_,
                        .memory = memory_,
                        .urls = platform_.urls,
                        .speechServer = settings_.speechServer,
                        .data = database_.parent_path(),
                        .settings = platform_.settingsFile,
                        .service = platform_.userData / "dorix-service",
                        .secrets = platform_.secretsFile},
            .showAccount = [this] { firstScreen_.showAccount(); }};
}

/// The system's own, or else that of a server of the user's.
SystemLanguageModel& AppController::languageModel() {
    if (platform_.languageModel != nullptr) return *platform_.languageModel;
    return modelServer_;
}

/// What the settings change and nobody else follows.
void AppController::watchSettings() {
    subscriptions_.push_back(settings_.language.subscribe(
        [this](const auto&) { tasks_.spawn(speechPreparation_.prepareQuietly()); }));
    settingsForm_.microphoneTest().mayListen = [this] { return dictation_.isMicrophoneFree(); };
    dictation_.onMicrophoneWanted = [this] { settingsForm_.microphoneTest().end(); };
    subscriptions_.push_back(settings_.paused.subscribe([this](bool paused) {
        if (paused) settingsForm_.microphoneTest().end();
    }));
}

/// What works in the background makes room while the user dictates.
void AppController::watchDictation() {
    // The microphone is to hear the user, and not an answer that is being read to them.
    const auto listens = [this](const HUDPhase& phase) {
        if (phase.kind == HUDPhase::Kind::listening) speaker_.stop();
    };
    subscriptions_.push_back(state_.hud.subscribe(listens));
    subscriptions_.push_back(state_.composerRecording.subscribe([this](bool records) {
        if (records) speaker_.stop();
    }));
    const auto tell = [this](const auto&) {
        const auto phase = state_.hud.get().kind;
        memory_.pauseWhile(dictation_.busy().get() || state_.composerRecording.get() ||
                           phase == HUDPhase::Kind::listening || phase == HUDPhase::Kind::processing);
    };
    subscriptions_.push_back(state_.hud.subscribe(tell));
    subscriptions_.push_back(state_.composerRecording.subscribe(tell));
    subscriptions_.push_back(dictation_.busy().subscribe(tell));
}

void AppController::watchMemory() {
    memory_.onStart = [this] { activity_.startActivity(); };
    // A model that has come is to know what has been read already.
    subscriptions_.push_back(embeddingModel_.state().subscribe(
        [this, wasThere = embeddingModel_.state().get().isInstalled](const auto& state) mutable {
            const bool hasCome = !std::exchange(wasThere, state.isInstalled) && state.isInstalled;
            if (hasCome) memory_.scheduleIndex();
        }));
}

/// The card, and the button that reads an answer aloud, which the panel has as well.
void AppController::wireCard() {
    assistant_.onShowCard = [this] { cardHost_.show(); };
    assistant_.onHideCard = [this] { cardHost_.hide(); };
    cardHost_.onClosed = [this] { assistant_.close(); };
    // The card comes without the keyboard, so its own window seldom hears of the key.
    keys_.onFreeEscape = [this] { cardHost_.hide(); };
    cardHost_.onInsert(
        [this](const std::string& text) { assistant_.replaceSelection(assistant_.askedFrom().app, text); });
    // A card that was clicked has the keyboard, and what is dictated then goes to where it was asked from.
    dictation_.leaveOwnWindow = [this]() -> std::optional<AppContext> {
        if (recorder_.isPractising() || !cardHost_.isVisible()) return std::nullopt;
        cardHost_.hide();
        return assistant_.askedFrom();
    };
    answerCard_.actions.retry = [this] {
        // The card that comes has another answer, and no button to stop this one with.
        if (assistant_.card.get() && speaker_.speakingID.get() == assistant_.card.get()->id) speaker_.stop();
        assistant_.retry();
    };
    answerCard_.actions.speak = [this](const std::string& text, const std::string& id) {
        speaker_.toggle(text, id, settings_.language.get());
    };
    subscriptions_.push_back(speaker_.speakingID.subscribe([this](const auto& id) {
        panel_.speakingID.set(id);
        answerCard_.speakingID.set(id);
    }));
}

void AppController::applicationDidFinishLaunching() {
    tasks_.spawn(platform_.keychain.remove(formerSecret));
    keys_.install();
    windows.icon->place();
    windows.icon->show();
    showStatusItem();
    keys_.listen();
    ownService_.start();
    memory_.start();
    firstScreen_.show();
    tasks_.spawn(sessionNotice_.tell());
    if (platform_.languageModel == nullptr) modelServer_.look();
}

void AppController::showSettings() {
    windows.settings->place();
    windows.settings->show();
}

void AppController::iconClicked() {
    if (firstScreen_.mayUse() || state_.panelOpen.get()) {
        panelHost_.toggle();
    } else {
        firstScreen_.showAccount();
    }
}

void AppController::reopen() {
    if (state_.onboardingOpen.get()) {
        windows.onboarding->show();
    } else if (!cardHost_.call()) {
        panelHost_.toggle();
    }
}

Task<void> AppController::settled() {
    co_await dictation_.settled();
    assistant_.keepUnfinished();
    co_await withTimeout(exporter_.settled(), exportPatience);
}

void AppController::traceTo(const std::filesystem::path& file) {
    trace_.emplace(file, platform_.executor, state_, dictation_.busy(), speaker_.speakingID);
    trace_->follow(assistant_.card);
    roads_.onRoute = [this](Route route) { trace_->route(route); };
}

IconVerbs AppController::iconVerbs() {
    return {.togglePanel = [this] { panelHost_.toggle(); },
            .showAccount = [this] { firstScreen_.showAccount(); },
            .showSettings = [this] { showSettings(); },
            .setPaused = [this](bool paused) { settings_.paused.set(paused); },
            .relaunch = [this] { platform_.application.relaunch(); },
            .terminate = [this] { platform_.application.terminate(); }};
}

Menu AppController::iconMenu() {
    const bool needsModels = platform_.recognition == nullptr && settings_.speechServer.get().empty();
    keys_.lookAgain();
    auto menu = needsModels ? speechOffer_.menu() : Menu();
    const auto always = dorix::iconMenu(state_.panelOpen.get(), settings_.paused.get(), iconVerbs_);
    const auto setup = setupMenu();
    menu.insert(menu.end(), setup.begin(), setup.end());
    menu.insert(menu.end(), always.begin(), always.end());
    return menu;
}

/// What the user has not been through yet, or has to choose.
Menu AppController::setupMenu() {
    keys_.lookAgain();
    if (!settings_.onboardingDone.get()) {
        return {{tr("Primeros pasos…"), [this] { firstScreen_.showOnboarding(Onboarding::Step::welcome); }},
                ClosureMenuItem::separator()};
    }
    if (!needsKey(state_.keys.get())) return {};
    return {{tr("Elegir la tecla para dictar…"),
             [this] { firstScreen_.showOnboarding(Onboarding::Step::practice); }},
            ClosureMenuItem::separator()};
}

std::string AppController::iconTooltip() const {
    return dorix::iconTooltip({.settings = state_.settingsOpen.get(),
                               .onboarding = state_.onboardingOpen.get(),
                               .account = state_.accountOpen.get()},
                              state_.keys.get(), settings_.paused.get());
}

void AppController::showStatusItem() {
    platform_.statusItem.show([this] { panelHost_.statusItemClicked(); }, [this] { return iconMenu(); });
    platform_.statusItem.setToolTip(iconTooltip());
    const auto tell = [this](const auto&) { platform_.statusItem.setToolTip(iconTooltip()); };
    subscriptions_.push_back(settings_.languageObserver().code.subscribe(tell));
    subscriptions_.push_back(state_.accountOpen.subscribe(tell));
    subscriptions_.push_back(state_.settingsOpen.subscribe(tell));
    subscriptions_.push_back(state_.onboardingOpen.subscribe(tell));
    subscriptions_.push_back(state_.keys.subscribe(tell));
    subscriptions_.push_back(settings_.paused.subscribe(tell));
}

}  // namespace dorix
