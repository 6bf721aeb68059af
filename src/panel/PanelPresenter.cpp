#include "panel/PanelPresenter.h"

#include <utility>

namespace dorix {

namespace {
constexpr double fade = 0.2;  // seconds
}

PanelPresenter::PanelPresenter(Executor& executor, AppState& state, AppContext& panelTarget, Steps steps)
    : state_(state), panelTarget_(panelTarget), steps_(std::move(steps)), hide_(executor) {}

void PanelPresenter::open() {
    if (state_.panelOpen.get()) return;
    state_.showFirstRunHint.set(false);
    captureTarget();
    hide_.stop();
    state_.panelAnchorRight.set(steps_.place());
    state_.panelOpen.set(true);
    steps_.show();
    if (steps_.watchOutsideClicks) steps_.watchOutsideClicks(true);
}

/// While the window still fades from the last time the panel itself may be in front, and what was in front
/// before still stands behind it.
void PanelPresenter::captureTarget() {
    auto context = steps_.capture();
    if (hide_.isActive() && !context.app) return;
    panelTarget_ = std::move(context);
}

void PanelPresenter::close() {
    if (!state_.panelOpen.get()) return;
    if (state_.composerRecording.get()) {
        state_.composerRecording.set(false);
        steps_.cancelSpeech();
    }
    state_.panelOpen.set(false);
    if (steps_.watchOutsideClicks) steps_.watchOutsideClicks(false);
    hide_.once(fade, [this] { steps_.hide(); });
}

void PanelPresenter::toggle() {
    if (state_.panelOpen.get()) {
        close();
    } else {
        open();
    }
}

}  // namespace dorix
