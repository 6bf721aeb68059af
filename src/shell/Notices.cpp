#include "shell/Notices.h"

#include "dictation/DictationController.h"
#include "localdata/SettingsStore.h"

namespace dorix {

namespace {
constexpr const char* countKey = "hintShownCount";
constexpr double timesShown = 3;
constexpr double secondsShown = 6.0;
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

}  // namespace dorix
