#include "views/account/AccountOnDemand.h"

namespace dorix {

void AccountOnDemand::show() {
    if (!window_) {
        window_ = std::make_unique<AccountWindow>(context_, settings_, form_);
        window_->onClosed = [this] { hide(); };
    }
    window_->open();
    state_.accountOpen.set(true);
}

void AccountOnDemand::hide() {
    if (!window_) return;
    state_.accountOpen.set(false);
    window_->orderOut();
    // It may be what asked for this.
    window_.release()->deleteLater();
}

void AccountOnDemand::takeKeyboard() {
    if (window_) context_.windowSystem.bringToFront(window_->winId());
}

void AccountOnDemand::reshape() {
    if (window_) window_->fit();
}

}  // namespace dorix
