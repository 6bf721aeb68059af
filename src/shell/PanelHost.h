#pragma once

#include "base/async/TaskScope.h"
#include "overlay/AppWindow.h"
#include "panel/HistoryPanel.h"
#include "panel/PanelPresenter.h"
#include "platform/InputEvents.h"
#include "platform/Platform.h"

namespace dorix {

class DictationController;
class Speaker;

/// When the panel opens and closes, and what it asks of the rest of the program. Main executor; what it is
/// given outlives it.
class PanelHost {
 public:
    PanelHost(const Platform& platform, AppState& state, const AppWindows& windows, HistoryPanel& panel,
              DictationController& dictation, Speaker& speaker, const Observable<std::string>& language);
    PanelHost(const PanelHost&) = delete;
    PanelHost& operator=(const PanelHost&) = delete;

    void toggle() { presenter_.toggle(); }
    /// A click on the status icon, which also counts as one outside of the panel.
    void statusItemClicked();

 private:
    PanelPresenter::Steps steps();
    void wirePanel();
    Task<void> returnToPanel();
    void watchOutsideClicks(bool on);
    void clickedOutside();

    const Platform platform_;
    AppState& state_;
    const AppWindows& windows_;
    HistoryPanel& panel_;
    DictationController& dictation_;
    Speaker& speaker_;
    const Observable<std::string>& language_;  // that of dictation
    PanelPresenter presenter_;
    Subscription outsideClickMonitor_;  // while the panel is up
    double closedByClickAt_ = -1;       // by the executor's clock
    TaskScope tasks_;
};

}  // namespace dorix
