#pragma once

#include "base/Observable.h"

namespace dorix {

/// How the user wants programs to look; it may change at any time. Light, with motion, where nobody says.
/// Main executor.
struct DesktopAppearance {
    Observable<bool> prefersDark;
    Observable<bool> reducesMotion;
};

}  // namespace dorix
