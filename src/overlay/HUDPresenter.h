#pragma once

#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "overlay/HUDContent.h"

#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// When the HUD shows, and what. Main executor.
class HUDPresenter {
 public:
    /// `partial` is what has been understood so far. All must outlive the presenter.
    HUDPresenter(Executor& executor, AppState& state, Observable<std::string>& partial);
    HUDPresenter(const HUDPresenter&) = delete;
    HUDPresenter& operator=(const HUDPresenter&) = delete;

    /// What is shown; what was shown last while it fades.
    Observable<HUDContent> content;
    /// Whether it is to be seen; without it the view fades.
    Observable<bool> isShown;
    /// Whether the window is on the screen; it stays until the view has faded.
    Observable<bool> isOrderedIn;

    /// Called whenever something new is to be shown, before `isShown` and `isOrderedIn` are set: the window
    /// takes its place beside the icon.
    std::function<void()> onPlace = [] {};

    /// Takes the texts anew, in another language.
    void retranslate() { refreshContent(); }

 private:
    void schedule();
    void apply();
    void refreshContent();

    AppState& state_;
    Observable<std::string>& partial_;
    Timer turn_;
    Timer orderOut_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
