#pragma once

#include "base/Observable.h"

namespace dorix {

/// What becomes of the user's session while the program runs. Main executor.
struct SessionState {
    /// Whether the screen is locked or covered by a screen saver: nobody can see what the program shows, and
    /// whoever speaks may not be the user. Never, where the system does not say.
    Observable<bool> locked;

    /// Whether keys and typing reach the windows of all programs; otherwise only of some, because the desktop
    /// keeps programs apart. It does not change.
    bool reachesAllWindows = true;
};

}  // namespace dorix
