#pragma once

#include "base/Observable.h"

namespace dorix {

/// How the user wants programs to look; it may change at any time. Main executor.
class DesktopAppearance {
 public:
    virtual ~DesktopAppearance() = default;

    Observable<bool> prefersDark;
    Observable<bool> reducesMotion;
};

/// Where nobody says: light, with motion.
class UnavailableDesktopAppearance final : public DesktopAppearance {};

}  // namespace dorix
