#pragma once

#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "platform/UserDefaults.h"

namespace dorix {

/// Shows the hint on how to begin, for a while, the first times that the program starts. Main executor.
class FirstRunHint {
 public:
    enum class Forced { no, yes };

    /// All must outlive it.
    FirstRunHint(Executor& executor, UserDefaults& defaults, AppState& state)
        : defaults_(defaults), state_(state), hideTimer_(executor) {}

    /// Does nothing when it has been shown often enough, unless forced.
    void show(Forced forced);

 private:
    UserDefaults& defaults_;
    AppState& state_;
    Timer hideTimer_;
};

}  // namespace dorix
