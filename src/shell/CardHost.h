#pragma once

#include "base/async/Timer.h"
#include "card/AnswerCardPresenter.h"
#include "dictation/AppState.h"
#include "overlay/AppWindow.h"
#include "platform/InputEvents.h"

#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// When the answer's card comes up and goes. While it is up a click elsewhere closes it, which goes where it
/// was meant for all the same. Closing it ends neither the answer, which comes into the history, nor its
/// being read aloud. Main executor; what it is given outlives it.
class CardHost {
 public:
    CardHost(Executor& executor, MouseEventMonitors& mouse, AppState& state, const AppWindows& windows,
             AnswerCardPresenter& card);
    CardHost(const CardHost&) = delete;
    CardHost& operator=(const CardHost&) = delete;

    /// Shows the card as it is by now, without the keyboard.
    void show();
    /// Nothing happens when it is not up.
    void hide();
    bool isVisible() const { return card_.isShown.get(); }

    /// Gives it the keyboard, for whoever has no pointer; false when it is not up.
    bool call();

    /// Called when the card has been closed, by whatever.
    std::function<void()> onClosed = [] {};

    /// Types a text where the question was asked. Without it the card offers no such thing.
    void onInsert(std::function<void(std::string text)> insert);

 private:
    void clickedOutside();

    MouseEventMonitors& mouse_;
    const AppWindows& windows_;
    AnswerCardPresenter& card_;
    Subscription cardClickMonitor_;  // while the card is up
    Timer hide_;
    Subscription panel_;
};

}  // namespace dorix
