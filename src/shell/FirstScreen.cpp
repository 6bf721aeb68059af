#include "shell/FirstScreen.h"

#include "base/Log.h"
#include "base/async/Sleep.h"
#include "cloud/AccountStore.h"
#include "cloud/OwnService.h"
#include "dictation/AppState.h"
#include "localdata/SettingsStore.h"
#include "overlay/AppWindow.h"
#include "permissions/Permissions.h"
#include "platform/UserDefaults.h"
#include "shell/Notices.h"
#include "shell/SpeechPreparation.h"

#include <algorithm>

namespace dorix {

namespace {
constexpr const char* continuedWithoutKey = "onboardingWithout";
constexpr int looksForGrants = 20;
constexpr double betweenLooks = 0.5;  // seconds
}  // namespace

FirstScreen::FirstScreen(const Parts& parts)
    : parts_(parts),
      closing_(parts.state.onboardingOpen.subscribe([this](bool open) {
          if (!open) closed();
      })),
      tasks_(parts.executor) {
    parts_.onboarding.onFinished = [this] { finished(); };
}

void FirstScreen::show() { tasks_.spawn(showWhatIsDue()); }

Task<void> FirstScreen::showWhatIsDue() {
    const bool isFirstRun = !parts_.settings.onboardingDone.get();
    if (isFirstRun) showOnboarding(Onboarding::Step::welcome);
    tasks_.spawn(getReady());
    co_await parts_.account.known();
    if (mayUse() && !isFirstRun) parts_.hint.show(FirstRunHint::Forced::no);
    co_await parts_.ownService.settled();
    // Only now is it known that the address is answered by whom the session is with.
    parts_.account.startRefreshing();
    if (isFirstRun) co_return;
    if (!mayUse()) {
        showAccount();
    } else if (co_await lacksGrants()) {
        showOnboarding(Onboarding::Step::permissions);
    }
}

Task<void> FirstScreen::getReady() {
    // The first run tells of a model that is missing, at its place.
    if (parts_.settings.onboardingDone.get()) co_await parts_.speech.prepare();
    logLine("ready");
}

/// Whether something is missing that the user has not chosen to do without: a window that comes up at each
/// login would take what is typed by then.
Task<bool> FirstScreen::lacksGrants() {
    for (int looks = 0; looks < looksForGrants; ++looks) {
        parts_.permissions.refresh();
        if (parts_.permissions.allRequired()) co_return false;
        co_await sleep(betweenLooks);  // services of the desktop start beside the program
    }
    const Json without = parts_.defaults.value(continuedWithoutKey).value_or(Json::array());
    for (const auto& grant : parts_.permissions.missing()) {
        if (std::find(without.begin(), without.end(), grant) == without.end()) co_return true;
    }
    co_return false;
}

bool FirstScreen::mayUse() const {
    return parts_.account.loggedIn.get() || parts_.ownService.isResponsible() ||
           !parts_.account.known().isDone();
}

bool FirstScreen::accountReady() {
    if (!mayUse()) showAccount();
    return mayUse();
}

void FirstScreen::showAccount() {
    parts_.windows.account->place();
    parts_.windows.account->show();
}

void FirstScreen::showOnboarding(Onboarding::Step first) {
    if (!parts_.state.onboardingOpen.get()) parts_.onboarding.begin(first);
    parts_.windows.onboarding->place();
    parts_.windows.onboarding->show();
}

void FirstScreen::finished() {
    parts_.defaults.set(continuedWithoutKey, parts_.permissions.missing());
    parts_.windows.onboarding->hide();
    if (mayUse()) {
        parts_.hint.show(FirstRunHint::Forced::yes);
    } else {
        showAccount();
    }
}

/// What was missing may be there by now; otherwise the user hears what is.
void FirstScreen::closed() {
    parts_.onboarding.end();
    tasks_.spawn(parts_.speech.prepare());
}

}  // namespace dorix
