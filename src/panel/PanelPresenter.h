#pragma once

#include "base/async/Timer.h"
#include "context/AppContext.h"
#include "dictation/AppState.h"

#include <functional>

namespace dorix {

/// The order in which the panel opens and closes. Main executor.
class PanelPresenter {
 public:
    /// All but `watchOutsideClicks` are required.
    struct Steps {
        /// The application in front.
        std::function<AppContext()> capture;
        /// Puts the window in its place; whether that is on the right of the icon.
        std::function<bool()> place;
        /// Brings the window up, with the keyboard.
        std::function<void()> show;
        /// Takes the window off the screen, after it has faded.
        std::function<void()> hide;
        /// Ends the recording of the composer without a word.
        std::function<void()> cancelSpeech;
        /// Whether clicks elsewhere are to be reported, which close the panel.
        std::function<void(bool)> watchOutsideClicks;
    };

    /// `panelTarget` gets the application that was in front when the panel opened. All must outlive this.
    PanelPresenter(Executor& executor, AppState& state, AppContext& panelTarget, Steps steps);
    PanelPresenter(const PanelPresenter&) = delete;
    PanelPresenter& operator=(const PanelPresenter&) = delete;

    /// Nothing happens when it is open, or closed, already.
    void open();
    void close();
    void toggle();

 private:
    void captureTarget();

    AppState& state_;
    AppContext& panelTarget_;
    const Steps steps_;
    Timer hide_;
};

}  // namespace dorix
