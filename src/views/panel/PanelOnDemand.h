#pragma once

#include "overlay/AppWindow.h"
#include "views/panel/PanelWindow.h"

#include <functional>
#include <memory>

namespace dorix {

/// The panel's window, which is made when it is first shown and let go when long unused. Main thread.
class PanelOnDemand final : public AppWindow {
 public:
    /// `iconFrame` gives that of the icon's window. All must outlive it.
    PanelOnDemand(const ViewContext& context, AppState& state, SettingsStore& settings, HistoryPanel& panel,
                  std::function<Rect()> iconFrame);

    bool place() override;
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    void clickedOutside() override;

    /// Moves out of the icon's way, to its side.
    void iconMoved();
    void screensChanged();
    void reshape();

 private:
    PanelWindow& window();

    const ViewContext context_;
    AppState& state_;
    SettingsStore& settings_;
    HistoryPanel& panel_;
    const std::function<Rect()> iconFrame_;
    std::unique_ptr<PanelWindow> window_;
    Timer drop_;
    Subscription closing_;
};

}  // namespace dorix
