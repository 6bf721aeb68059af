#include "shell/FirstRunHint.h"

namespace dorix {

namespace {
constexpr const char* countKey = "hintShownCount";
constexpr double timesShown = 3;
constexpr double secondsShown = 6.0;
}  // namespace

void FirstRunHint::show(Forced forced) {
    const double count = defaults_.number(countKey).value_or(0);
    if (forced == Forced::no && count >= timesShown) return;
    defaults_.set(countKey, static_cast<std::int64_t>(count) + 1);
    state_.showFirstRunHint.set(true);
    hideTimer_.once(secondsShown, [this] { state_.showFirstRunHint.set(false); });
}

}  // namespace dorix
