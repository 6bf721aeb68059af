#pragma once

#include "base/async/Timer.h"
#include "dictation/AppState.h"

namespace dorix {

/// Messages in the HUD that go by themselves. Main executor; the state outlives it.
class HUDFlash {
 public:
    enum class Sticky { no, yes };

    HUDFlash(Executor& executor, AppState& state) : state_(state), hideWork_(executor) {}

    /// Shows `phase`, and hides it after `seconds` if it still shows by then; a sticky one stays.
    void flash(const HUDPhase& phase, double seconds, Sticky sticky = Sticky::no) {
        hideWork_.stop();
        state_.hud.set(phase);
        if (sticky == Sticky::yes) return;
        hideWork_.once(seconds, [this, phase] {
            if (state_.hud.get() == phase) state_.hud.set(HUDPhase::hidden());
        });
    }

    /// What shows, or shows next, is no message of ours any more.
    void cancel() { hideWork_.stop(); }

 private:
    AppState& state_;
    Timer hideWork_;
};

}  // namespace dorix
