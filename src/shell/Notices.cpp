#include "shell/Notices.h"

#include "cloud/APIError.h"
#include "dictation/DictationController.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "modelserver/ModelServer.h"
#include "overlay/AppWindow.h"
#include "platform/Notifications.h"

namespace dorix {

namespace {
constexpr const char* countKey = "hintShownCount";
constexpr double timesShown = 3;
constexpr double secondsShown = 6.0;
constexpr const char* limitsToldKey = "limitedSessionTold";
constexpr double secondsToRead = 12.0;
constexpr double secondsForAccount = 3.0;
constexpr double secondsForServer = 6.0;
}  // namespace

bool Toasts::show(const std::string& text) {
    const bool disturbs = !dictation_.isIdle() || state_.panelOpen.get() || state_.meetingActive.get();
    if (disturbs || settings_.paused.get()) return false;
    dictation_.flash(HUDPhase::learned(text), 5.0);
    return true;
}

void FirstRunHint::show(Forced forced) {
    const double count = defaults_.number(countKey).value_or(0);
    if (forced == Forced::no && count >= timesShown) return;
    defaults_.set(countKey, static_cast<std::int64_t>(count) + 1);
    state_.showFirstRunHint.set(true);
    hideTimer_.once(secondsShown, [this] { state_.showFirstRunHint.set(false); });
}

Task<void> LimitedSessionNotice::tell() {
    if (session_.reachesAllWindows || defaults_.boolean(limitsToldKey).value_or(false)) co_return;
    const auto text = tr(
        "Las teclas de DORIX y lo que escribe solo llegan a las aplicaciones que usan X11. En las demás no "
        "oye sus teclas; lo que dictes queda en tu historial y puedes copiarlo desde ahí.");
    if (co_await notifications_.requestAuthorization()) {
        notifications_.post({.identifier = "dorix-session",
                             .title = tr("DORIX no llega a todas las ventanas"),
                             .body = text,
                             .actions = {},
                             .userInfo = {}});
    } else {
        dictation_.flash(HUDPhase::info(text), secondsToRead);
    }
    defaults_.set(limitsToldKey, true);
}

AccountNotice::AccountNotice(const AppWindows& windows, DictationController& dictation)
    : windows_(windows),
      dictation_(dictation),
      busy_(dictation.busy().subscribe([this](bool) { openWhenFree(); })),
      recording_(dictation.isShown().subscribe([this](bool) { openWhenFree(); })) {}

void AccountNotice::tell(const APIError& error) {
    dictation_.flash(HUDPhase::error(error.localizedDescription()), secondsForAccount);
    opens_ = true;
    openWhenFree();
}

void AccountNotice::openWhenFree() {
    if (!opens_ || dictation_.busy().get() || dictation_.isRecording()) return;
    opens_ = false;
    windows_.account->place();
    windows_.account->show();
}

ModelServerNotice::ModelServerNotice(const AppState& state, ModelServer& server,
                                     DictationController& dictation)
    : server_(server),
      dictation_(dictation),
      found_(server.state().subscribe([this](const auto&) { tell(); })),
      hud_(state.hud.subscribe([this](const auto&) { tell(); })),
      hint_(state.showFirstRunHint.subscribe([this](bool) { tell(); })) {}

void ModelServerNotice::tell() {
    const auto server = server_.notice();
    const bool isFound = server_.state().get().availability == SystemLanguageModel::Availability::available;
    if (!server || !isFound || !dictation_.isIdle()) return;
    server_.noticeShown();
    dictation_.flash(
        HUDPhase::info(formatText(tr("Lo que dictes se enviará a %@ para redactarlo."), {*server})),
        secondsForServer);
}

}  // namespace dorix
