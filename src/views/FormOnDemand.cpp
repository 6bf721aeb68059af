#include "views/FormOnDemand.h"

#include <utility>

namespace dorix {

FormOnDemand::FormOnDemand(WindowSystem& windowSystem, Observable<bool>& isOpen,
                           std::function<std::unique_ptr<FormWindow>()> make)
    : windowSystem_(windowSystem), isOpen_(isOpen), make_(std::move(make)) {}

void FormOnDemand::show() {
    if (!window_) {
        window_ = make_();
        window_->onClosed = [this] { hide(); };
    }
    window_->open();
    isOpen_.set(true);
}

void FormOnDemand::hide() {
    if (!window_) return;
    isOpen_.set(false);
    window_->dismiss();
    // It may be what asked for this.
    window_.release()->deleteLater();
}

void FormOnDemand::takeKeyboard() {
    if (window_) windowSystem_.bringToFront(window_->winId());
}

void FormOnDemand::reshape() {
    if (window_) window_->fit();
}

}  // namespace dorix
