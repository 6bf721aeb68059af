#pragma once

#include "dictation/AppState.h"
#include "overlay/AppWindow.h"
#include "views/onboarding/OnboardingWindow.h"

#include <memory>

namespace dorix {

/// The window of the first run as the core drives it: made when it is first shown, and gone when it is
/// closed. Main thread.
class OnboardingOnDemand final : public AppWindow {
 public:
    /// All must outlive it.
    OnboardingOnDemand(const ViewContext& context, AppState& state, SettingsStore& settings,
                       Onboarding& onboarding)
        : context_(context), state_(state), settings_(settings), onboarding_(onboarding) {}

    /// It stands in the middle of the screen.
    bool place() override { return false; }
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    /// It stays: what it asks for may be had in another window.
    void clickedOutside() override {}

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

 private:
    const ViewContext context_;
    AppState& state_;  // is told whether the window is open
    SettingsStore& settings_;
    Onboarding& onboarding_;
    std::unique_ptr<OnboardingWindow> window_;
};

}  // namespace dorix
