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
#include "speech/recogniser/ModelChoice.h"

namespace dorix {

namespace {
constexpr const char* formerSecret = "claude-api-key";  // of earlier versions; nobody uses it any more
constexpr double exportPatience = 10;  // seconds; an export that takes longer leaves the file as it was
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
      unpacker_(platform.executor, platform.helpers),
      modelInstaller_({platform.executor, platform.http, unpacker_, platform.folders},
                      ModelCatalogue::packaged(), platform.userData / "DORIX", settings_.speechMirrors,
                      platform.memory),
      api_(platform.executor, platform.http, platform.keychain,
           configuredServer(platform.defaults, platform.packagedServer)),
      account_(platform.executor, api_, platform.keychain, platform.defaults, platform.computerName),
      ownService_(platform.executor, platform.http, platform.companion, api_, account_),
      accountForm_(platform.executor, api_, account_, ownService_, platform.defaults),
      modelServer_(platform.executor, settings_, platform.http, platform.keychain,
                   [&companion = platform.companion](int port) { return companion.isTrusted(port); }),
      localPolisher_(platform.languageModel != nullptr ? *platform.languageModel : modelServer_),
      router_(settings_, account_, api_, localPolisher_),
      clipboard_(platform.executor, platform.pasteboard),
      inserter_({platform.executor, clipboard_, platform.pasteboard, platform.events, platform.workspace}),
      selection_(platform.executor, platform.accessibility, clipboard_, platform.pasteboard, platform.events,
                 platform.workspace),
      hud_(platform.executor, state_),
      recorder_(platform.executor, settings_, permissions_, speech_, platform.workspace,
                platform.accessibility, nullptr),
      written_(platform.executor, settings_, history_, clipboard_, inserter_, platform.workspace, hud_),
      roads_(router_, selection_, platform.accessibility, written_, hud_, {}),
      composer_(platform.executor, state_, settings_, permissions_, speech_, hud_, nullptr),
      dictation_(platform.executor, state_, settings_, permissions_, speech_, platform.sounds, recorder_,
                 roads_, written_, composer_, hud_, platform.session),
      exporter_(platform.executor, exports_, platform.savePanel, platform.files, database_),
      panel_(platform.executor, state_, speech_, history_, platform.pasteboard, platform.urls, exporter_),
      panelHost_(platform, state_, windows, panel_, dictation_),
      firstRunHint_(platform.executor, platform.defaults, state_),
      toasts_(state_, settings_, dictation_),
      speechOffer_(platform.executor, state_, settings_, speechModels_, modelInstaller_, dictation_,
                   speech_.downloadProgress),
      sessionNotice_(platform.session, platform.defaults, platform.notifications, dictation_),
      accountNotice_(windows, dictation_),
      modelServerNotice_(state_, modelServer_, dictation_),
      keys_(platform.executor, platform.keyEvents, platform.hotKeys, state_, settings_, permissions_, speech_,
            dictation_),
      tasks_(platform.executor) {
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
    speechOffer_.onInstalled = [this] { tasks_.spawn(prepareSpeech()); };
    // The system's own recogniser has its models from the system.
    if (platform.recognition == nullptr)
        speech_.onUnsupportedLocale = [this] { speechOffer_.languageMissing(); };
    dictation_.accountReady = [this] { return accountReady(); };
    inserter_.mayType = [this] { return !platform_.session.locked.get(); };
}

void AppController::applicationDidFinishLaunching() {
    tasks_.spawn(platform_.keychain.remove(formerSecret));
    keys_.install();
    windows.icon->place();
    windows.icon->show();
    showStatusItem();
    keys_.listen();
    ownService_.start();
    tasks_.spawn(showFirstScreen());
    tasks_.spawn(sessionNotice_.tell());
    if (platform_.languageModel == nullptr) modelServer_.look();
}

/// Nobody is stopped before it is known whether there is a session.
bool AppController::mayUse() const {
    return account_.loggedIn.get() || ownService_.isResponsible() || !account_.known().isDone();
}

/// Without a session there is first of all one to be begun.
bool AppController::accountReady() {
    if (!mayUse()) showAccount();
    return mayUse();
}

void AppController::showAccount() {
    windows.account->place();
    windows.account->show();
}

void AppController::iconClicked() {
    if (mayUse() || state_.panelOpen.get()) {
        panelHost_.toggle();
    } else {
        showAccount();
    }
}

Task<void> AppController::showFirstScreen() {
    tasks_.spawn(prepareSpeech());
    co_await account_.known();
    if (mayUse()) firstRunHint_.show(FirstRunHint::Forced::no);
    co_await ownService_.settled();
    // Only now is it known that the address is answered by whom the session is with.
    account_.startRefreshing();
    if (!mayUse()) showAccount();
}

Task<void> AppController::settled() {
    co_await dictation_.settled();
    co_await withTimeout(exporter_.settled(), exportPatience);
}

void AppController::traceTo(const std::filesystem::path& file) {
    trace_.emplace(file, platform_.executor, state_, dictation_.busy());
    roads_.onRoute = [this](Route route) { trace_->route(route); };
}

IconVerbs AppController::iconVerbs() {
    return {.togglePanel = [this] { panelHost_.toggle(); },
            .showAccount = [this] { showAccount(); },
            .setPaused = [this](bool paused) { settings_.paused.set(paused); },
            .relaunch = [this] { platform_.application.relaunch(); },
            .terminate = [this] { platform_.application.terminate(); }};
}

Menu AppController::iconMenu() {
    const bool needsModels = platform_.recognition == nullptr && settings_.speechServer.get().empty();
    auto menu = needsModels ? speechOffer_.menu() : Menu();
    const auto always = dorix::iconMenu(state_.panelOpen.get(), settings_.paused.get(), iconVerbs_);
    menu.insert(menu.end(), always.begin(), always.end());
    return menu;
}

std::string AppController::iconTooltip() const {
    return dorix::iconTooltip({.account = state_.accountOpen.get()});
}

void AppController::showStatusItem() {
    platform_.statusItem.show([this] { panelHost_.statusItemClicked(); }, [this] { return iconMenu(); });
    platform_.statusItem.setToolTip(iconTooltip());
    const auto tell = [this](const auto&) { platform_.statusItem.setToolTip(iconTooltip()); };
    subscriptions_.push_back(settings_.languageObserver().code.subscribe(tell));
    subscriptions_.push_back(state_.accountOpen.subscribe(tell));
}

Task<void> AppController::prepareSpeech() {
    if (const auto server = speechServer_.notice()) {
        const auto notice = formatText(tr("Lo que dictes se enviará a %@ para transcribirlo."), {*server});
        dictation_.flash(HUDPhase::info(notice), 6.0);
        speechServer_.noticeShown();
    }
    co_await speechServer_.readKey();
    try {
        co_await speech_.prepare(settings_.language.get());
    } catch (const Error& error) {
        logLine("no se pudo preparar el modelo de voz: " + error.localizedDescription());
        dictation_.flash(HUDPhase::error(error.localizedDescription()), 4.0);
    }
    logLine("listo");
}

}  // namespace dorix
