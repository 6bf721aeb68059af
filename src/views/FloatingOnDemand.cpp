#include "views/FloatingOnDemand.h"

#include "views/ScreenMap.h"

#include <utility>

namespace dorix {

namespace {
constexpr double keepHidden = 600;  // seconds
}

FloatingOnDemand::FloatingOnDemand(const ViewContext& context, Observable<bool>& isOpen,
                                   std::function<std::unique_ptr<FloatingWindow>()> make,
                                   std::function<Rect()> iconFrame)
    : context_(context),
      isOpen_(isOpen),
      make_(std::move(make)),
      iconFrame_(std::move(iconFrame)),
      drop_(context.executor),
      closing_(isOpen.subscribe([this](bool open) {
          if (!open && window_) window_->fade();
      })) {}

FloatingWindow& FloatingOnDemand::window() {
    drop_.stop();
    if (!window_) window_ = make_();
    return *window_;
}

Screens FloatingOnDemand::screens() const { return screenmap::clearOfBars(context_.windowSystem); }

bool FloatingOnDemand::place() { return window().place(iconFrame_(), screens()); }

void FloatingOnDemand::show() { window().open(); }

void FloatingOnDemand::hide() {
    if (!window_) return;
    window_->dismiss();
    drop_.once(keepHidden, [this] { window_.reset(); });
}

void FloatingOnDemand::takeKeyboard() {
    if (window_) window_->takeKeyboard();
}

void FloatingOnDemand::clickedOutside() {
    if (window_) window_->clickedOutside();
}

void FloatingOnDemand::iconMoved() {
    if (window_ && isOpen_.get()) window_->iconMoved(iconFrame_(), screens());
}

void FloatingOnDemand::screensChanged() {
    if (window_ && !window_->isVisible()) window_.reset();
    if (window_) window_->screensChanged(iconFrame_(), screens());
}

void FloatingOnDemand::reshape() {
    if (window_) window_->reshape();
}

}  // namespace dorix
