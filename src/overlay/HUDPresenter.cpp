#include "overlay/HUDPresenter.h"

namespace dorix {

namespace {
constexpr double orderOutDelay = 0.25;  // seconds, in which the view fades
}

HUDPresenter::HUDPresenter(Executor& executor, AppState& state, Observable<std::string>& partial)
    : state_(state), partial_(partial), turn_(executor), orderOut_(executor) {
    subscriptions_.push_back(state.hud.subscribe([this](const HUDPhase&) { schedule(); }));
    subscriptions_.push_back(state.showFirstRunHint.subscribe([this](bool) { schedule(); }));
    const auto refresh = [this](const auto&) { refreshContent(); };
    subscriptions_.push_back(state.asking.subscribe(refresh));
    subscriptions_.push_back(state.handsFree.subscribe(refresh));
    subscriptions_.push_back(partial.subscribe(refresh));
    subscriptions_.push_back(state.keys.subscribe(refresh));
    schedule();
}

/// On the loop's next turn, when whoever changes the state has changed all of it.
void HUDPresenter::schedule() {
    turn_.once(0, [this] { apply(); });
}

void HUDPresenter::apply() {
    if (state_.hud.get().kind == HUDPhase::Kind::hidden && !state_.showFirstRunHint.get()) {
        isShown.set(false);
        orderOut_.once(orderOutDelay, [this] { isOrderedIn.set(false); });
        return;
    }
    orderOut_.stop();
    refreshContent();
    onPlace();
    isOrderedIn.set(true);
    isShown.set(true);
}

void HUDPresenter::refreshContent() {
    auto now = hudContent(state_, partial_.get());
    if (now.look != HUDContent::Look::hidden) content.set(std::move(now));
}

}  // namespace dorix
