#pragma once

#include "localdata/SettingsStore.h"
#include "overlay/AppWindow.h"
#include "overlay/HUDPresenter.h"
#include "overlay/LevelFeed.h"
#include "speech/SpeechInput.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// The icon and the HUD beside it, as the state has them. The icon leaves the screen only while a window of
/// another program fills that, and never has the keyboard. Main thread.
class IconView final : public AppWindow {
 public:
    /// What the user can ask for.
    struct Verbs {
        std::function<void()> clicked;
        /// In the app language; asked anew when that changes, and when a window opens or closes.
        std::function<std::string()> tooltip;
        MenuBuilder menu;
    };

    /// All must outlive it.
    IconView(const ViewContext& context, AppState& state, SettingsStore& settings, SpeechInput& speech,
             Verbs verbs);

    bool place() override;
    void show() override;
    void hide() override;
    void takeKeyboard() override {}
    void clickedOutside() override {}

    /// Called when the user has moved the icon.
    std::function<void()> onMoved = [] {};

    /// Of the icon's window.
    Rect frame() const { return icon_.frame(); }

    /// Goes from above a window that fills the screen, and comes back after it. The HUD shows all the same.
    void keepOutOfTheWay();
    void screensChanged();
    void raise();
    void reshape();

 private:
    void wireIcon(MenuBuilder menu, std::function<void()> clicked);
    void wireHUD();
    void watchState();
    void showState();
    void showTooltip();
    void placeHUD();
    HUDWindow& hud();

    const ViewContext context_;
    AppState& state_;
    SettingsStore& settings_;
    const std::function<std::string()> tooltip_;
    HUDPresenter presenter_;
    LevelFeed level_;
    FloatingIconWindow icon_;
    bool isOut_ = false;              // shown, unless it is in the way
    std::unique_ptr<HUDWindow> hud_;  // made when first shown
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
