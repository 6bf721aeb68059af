#pragma once

#include "dictation/AppState.h"
#include "overlay/AppWindow.h"
#include "views/settings/SettingsWindow.h"

#include <memory>

namespace dorix {

/// The settings' window as the core drives it: made when it is first shown, and gone when it is closed. Main
/// thread.
class SettingsOnDemand final : public AppWindow {
 public:
    /// All must outlive it.
    SettingsOnDemand(const ViewContext& context, AppState& state, SettingsStore& settings, SettingsForm& form)
        : context_(context), state_(state), settings_(settings), form_(form) {}

    /// It stands in the middle of the screen.
    bool place() override { return false; }
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    /// It stays: what is set is tried elsewhere.
    void clickedOutside() override {}

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

 private:
    const ViewContext context_;
    AppState& state_;  // is told whether the window is open
    SettingsStore& settings_;
    SettingsForm& form_;
    std::unique_ptr<SettingsWindow> window_;
};

}  // namespace dorix
