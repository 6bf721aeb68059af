#pragma once

#include "base/async/Timer.h"
#include "context/AppContext.h"
#include "dictation/AppState.h"
#include "overlay/AppWindow.h"

#include <functional>

namespace dorix {

/// The order in which the panel opens and closes. Main executor.
class PanelPresenter {
 public:
    struct Steps {
        /// The application in front.
        std::function<AppContext()> capture;
        /// Ends the recording of the composer without a word.
        std::function<void()> dropRecording;
        /// Whether clicks elsewhere are to be reported, which close the panel.
        std::function<void(bool)> watchOutsideClicks;
    };

    /// `panelTarget` gets the application that was in front when the panel opened. The panel's window is
    /// taken from `windows` anew each time. All must outlive this.
    PanelPresenter(Executor& executor, AppState& state, const AppWindows& windows, AppContext& panelTarget,
                   Steps steps);
    PanelPresenter(const PanelPresenter&) = delete;
    PanelPresenter& operator=(const PanelPresenter&) = delete;

    /// Nothing happens when it is open, or closed, already.
    void open();
    void close();
    void toggle();

 private:
    void captureTarget();

    AppState& state_;
    const AppWindows& windows_;
    AppContext& panelTarget_;
    const Steps steps_;
    Timer hide_;
};

}  // namespace dorix
