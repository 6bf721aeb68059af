#include "views/Views.h"

#include "views/account/AccountWindow.h"
#include "views/card/AnswerCardWindow.h"
#include "views/onboarding/OnboardingWindow.h"
#include "views/panel/PanelWindow.h"
#include "views/settings/SettingsWindow.h"

#include <utility>

namespace dorix {

namespace {

/// What makes a window of that kind, which is given the last two; all must outlive it.
template <typename Window, typename Form>
std::function<std::unique_ptr<FormWindow>()> maker(const ViewContext& context, SettingsStore& settings,
                                                   Form& form) {
    return [context, &settings, &form] { return std::make_unique<Window>(context, settings, form); };
}

}  // namespace

Views::Views(Surroundings& surroundings, AppState& state, SettingsStore& settings, SpeechInput& speech,
             HistoryPanel& panel, AnswerCardPresenter& card, AccountForm& account, Onboarding& onboarding,
             SettingsForm& form, IconView::Verbs verbs)
    : icon_(surroundings.context(), state, settings, speech, std::move(verbs)),
      panel_(
          surroundings.context(), state.panelOpen,
          [context = surroundings.context(), &state, &settings, &panel] {
              return std::make_unique<PanelWindow>(context, state, settings, panel);
          },
          [this] { return icon_.frame(); }),
      card_(
          surroundings.context(), card.isShown,
          [context = surroundings.context(), &settings, &card] {
              return std::make_unique<AnswerCardWindow>(context, settings, card);
          },
          [this] { return icon_.frame(); }),
      account_(surroundings.context().windowSystem, state.accountOpen,
               maker<AccountWindow>(surroundings.context(), settings, account)),
      onboarding_(surroundings.context().windowSystem, state.onboardingOpen,
                  maker<OnboardingWindow>(surroundings.context(), settings, onboarding)),
      settings_(surroundings.context().windowSystem, state.settingsOpen,
                maker<SettingsWindow>(surroundings.context(), settings, form)) {
    icon_.onMoved = [this] {
        panel_.iconMoved();
        card_.iconMoved();
    };
    surroundings.onCompositorChanged = [this] {
        icon_.reshape();
        panel_.reshape();
        card_.reshape();
        account_.reshape();
        onboarding_.reshape();
        settings_.reshape();
    };
    surroundings.onRestacked = [this] { icon_.raise(); };
    surroundings.onFullScreenChanged = [this] { icon_.keepOutOfTheWay(); };
    surroundings.onScreensChanged = [this] {
        icon_.screensChanged();
        panel_.screensChanged();
        card_.screensChanged();
    };
}

}  // namespace dorix
