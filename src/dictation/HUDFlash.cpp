#include "dictation/HUDFlash.h"

namespace dorix {

void HUDFlash::flash(const HUDPhase& phase, double seconds, Sticky sticky) {
    hideWork_.stop();
    state_.hud.set(phase);
    if (sticky == Sticky::yes) return;
    hideWork_.once(seconds, [this, phase] {
        if (state_.hud.get() == phase) state_.hud.set(HUDPhase::hidden());
    });
}

}  // namespace dorix
