#include "panel/PanelPresenter.h"

#include <utility>

namespace dorix {

namespace {
constexpr double fade = 0.2;  // seconds
}

PanelPresenter::PanelPresenter(Executor& executor, AppState& state, const AppWindows& windows,
                               AppContext& panelTarget, Steps steps)
    : state_(state),
      windows_(windows),
      panelTarget_(panelTarget),
      steps_(std::move(steps)),
      hide_(executor) {}

void PanelPresenter::open() {
    if (state_.panelOpen.get()) return;
    state_.showFirstRunHint.set(false);
    captureTarget();
    hide_.stop();
    state_.panelAnchorRight.set(windows_.panel->place());
    state_.panelOpen.set(true);
    windows_.panel->show();
    steps_.watchOutsideClicks(true);
}

/// While the window still fades from the last time the panel itself may be in front, and what was in front
/// before still stands behind it.
void PanelPresenter::captureTarget() {
    auto context = steps_.capture();
    if (hide_.isActive() && !context.app) return;
    panelTarget_ = std::move(context);
    state_.panelOver.set(panelTarget_.app ? panelTarget_.displayName : "");
    // No window goes with a question unseen.
    if (!panelTarget_.app) state_.composerScreen.set(false);
}

void PanelPresenter::close() {
    if (!state_.panelOpen.get()) return;
    steps_.dropRecording();
    state_.panelOpen.set(false);
    steps_.watchOutsideClicks(false);
    hide_.once(fade, [this] { windows_.panel->hide(); });
}

void PanelPresenter::toggle() {
    if (state_.panelOpen.get()) {
        close();
    } else {
        open();
    }
}

}  // namespace dorix
