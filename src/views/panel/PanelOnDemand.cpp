#include "views/panel/PanelOnDemand.h"

#include "views/ScreenMap.h"

#include <utility>

namespace dorix {

namespace {
constexpr double keepHidden = 600;  // seconds
}

PanelOnDemand::PanelOnDemand(const ViewContext& context, AppState& state, SettingsStore& settings,
                             HistoryPanel& panel, std::function<Rect()> iconFrame)
    : context_(context),
      state_(state),
      settings_(settings),
      panel_(panel),
      iconFrame_(std::move(iconFrame)),
      drop_(context.executor),
      closing_(state.panelOpen.subscribe([this](bool open) {
          if (!open && window_) window_->fade();
      })) {}

PanelWindow& PanelOnDemand::window() {
    drop_.stop();
    if (!window_) window_ = std::make_unique<PanelWindow>(context_, state_, settings_, panel_);
    return *window_;
}

bool PanelOnDemand::place() {
    return window().place(iconFrame_(), screenmap::clearOfBars(context_.windowSystem));
}

void PanelOnDemand::show() { window().open(); }

void PanelOnDemand::hide() {
    if (!window_) return;
    window_->dismiss();
    drop_.once(keepHidden, [this] { window_.reset(); });
}

void PanelOnDemand::takeKeyboard() {
    if (window_) window_->takeKeyboard();
}

void PanelOnDemand::clickedOutside() {
    if (window_) window_->clickedOutside();
}

void PanelOnDemand::screensChanged() {
    if (window_ && !window_->isVisible()) window_.reset();
    if (window_) window_->placeAnew(iconFrame_(), screenmap::clearOfBars(context_.windowSystem));
}

void PanelOnDemand::iconMoved() {
    if (state_.panelOpen.get()) state_.panelAnchorRight.set(place());
}

void PanelOnDemand::reshape() {
    if (window_) window_->reshape();
}

}  // namespace dorix
