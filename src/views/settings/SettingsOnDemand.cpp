#include "views/settings/SettingsOnDemand.h"

namespace dorix {

void SettingsOnDemand::show() {
    if (!window_) {
        window_ = std::make_unique<SettingsWindow>(context_, settings_, form_);
        window_->onClosed = [this] { hide(); };
    }
    window_->open();
    state_.settingsOpen.set(true);
}

void SettingsOnDemand::hide() {
    if (!window_) return;
    state_.settingsOpen.set(false);
    form_.close();
    window_->orderOut();
    // It may be what asked for this.
    window_.release()->deleteLater();
}

void SettingsOnDemand::takeKeyboard() {
    if (window_) context_.windowSystem.bringToFront(window_->winId());
}

void SettingsOnDemand::reshape() {
    if (window_) window_->fit();
}

}  // namespace dorix
