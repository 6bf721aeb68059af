#include "views/Views.h"

#include <utility>

namespace dorix {

Views::Views(Surroundings& surroundings, AppState& state, SettingsStore& settings, SpeechInput& speech,
             HistoryPanel& panel, AccountForm& account, Onboarding& onboarding, SettingsForm& form,
             IconView::Verbs verbs)
    : icon_(surroundings.context(), state, settings, speech, std::move(verbs)),
      panel_(surroundings.context(), state, settings, panel, [this] { return icon_.frame(); }),
      account_(surroundings.context(), state, settings, account),
      onboarding_(surroundings.context(), state, settings, onboarding),
      settings_(surroundings.context(), state, settings, form) {
    icon_.onMoved = [this] { panel_.iconMoved(); };
    surroundings.onCompositorChanged = [this] {
        icon_.reshape();
        panel_.reshape();
        account_.reshape();
        onboarding_.reshape();
        settings_.reshape();
    };
    surroundings.onRestacked = [this] { icon_.raise(); };
    surroundings.onFullScreenChanged = [this] { icon_.keepOutOfTheWay(); };
    surroundings.onScreensChanged = [this] {
        icon_.screensChanged();
        panel_.screensChanged();
    };
}

}  // namespace dorix
