#pragma once

#include "dictation/AppState.h"
#include "overlay/AppWindow.h"
#include "views/account/AccountWindow.h"

#include <memory>

namespace dorix {

/// The account's window as the core drives it: made when it is first shown, and gone when it is closed. Main
/// thread.
class AccountOnDemand final : public AppWindow {
 public:
    /// All must outlive it.
    AccountOnDemand(const ViewContext& context, AppState& state, SettingsStore& settings, AccountForm& form)
        : context_(context), state_(state), settings_(settings), form_(form) {}

    /// It stands in the middle of the screen.
    bool place() override { return false; }
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    /// It stays: a code is fetched from another window.
    void clickedOutside() override {}

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

 private:
    const ViewContext context_;
    AppState& state_;  // is told whether the window is open
    SettingsStore& settings_;
    AccountForm& form_;
    std::unique_ptr<AccountWindow> window_;
};

}  // namespace dorix
