#include "views/onboarding/OnboardingOnDemand.h"

namespace dorix {

void OnboardingOnDemand::show() {
    if (!window_) {
        window_ = std::make_unique<OnboardingWindow>(context_, settings_, onboarding_);
        window_->onClosed = [this] { hide(); };
    }
    window_->open();
    state_.onboardingOpen.set(true);
}

void OnboardingOnDemand::hide() {
    if (!window_) return;
    state_.onboardingOpen.set(false);
    window_->orderOut();
    // It may be what asked for this.
    window_.release()->deleteLater();
}

void OnboardingOnDemand::takeKeyboard() {
    if (window_) context_.windowSystem.bringToFront(window_->winId());
}

void OnboardingOnDemand::reshape() {
    if (window_) window_->fit();
}

}  // namespace dorix
